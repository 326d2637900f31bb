// The front process, with applications of several windows under a real window manager.
#import <AppKit/AppKit.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/CFOwned.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/Scripting.h>
#include <tests/support/TemporaryFolder.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <functional>

namespace {

namespace fs = std::filesystem;

/// The titles of all windows, the lowest first, as the window manager has them.
std::string stacking()
{
    xcb_connection_t *const x = xcb_connect(nullptr, nullptr);
    const auto atom = [&](const char *name) {
        xcb_intern_atom_reply_t *const reply =
            xcb_intern_atom_reply(x, xcb_intern_atom(x, false, uint16_t(std::strlen(name)), name), nullptr);
        const xcb_atom_t atom = reply->atom;
        std::free(reply);
        return atom;
    };
    const auto property = [&](xcb_window_t window, const char *name) {
        xcb_get_property_reply_t *const reply = xcb_get_property_reply(
            x, xcb_get_property(x, false, window, atom(name), XCB_ATOM_ANY, 0, 1000), nullptr);
        std::string bytes;
        if (reply)
            bytes.assign(static_cast<char *>(xcb_get_property_value(reply)),
                         size_t(xcb_get_property_value_length(reply)));
        std::free(reply);
        return bytes;
    };
    const std::string windows =
        property(xcb_setup_roots_iterator(xcb_get_setup(x)).data->root, "_NET_CLIENT_LIST_STACKING");
    std::string titles;
    for (size_t i = 0; i + 4 <= windows.size(); i += 4) {
        xcb_window_t window;
        std::memcpy(&window, windows.data() + i, 4);
        if (const std::string title = property(window, "_NET_WM_NAME"); title.starts_with("peer"))
            titles += title.substr(4);
    }
    xcb_disconnect(x);
    return titles;
}

class FrontProcess : public testing::Test {
protected:
    void SetUp() override
    {
        [NSApplication sharedApplication];
        [NSApp finishLaunching];  // before that, it lets nobody give it the focus
    }
    ~FrontProcess() override
    {
        for (const pid_t pid : children_) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
    /// An application folder of that name.
    std::string make(const std::string &name) const
    {
        fs::create_directories(root_ / (name + ".app/Resources"));
        fs::copy_file(TARVIK_TESTS_HELPER "/tarvik-tests-windowpeer", root_ / (name + ".app") / name);
        folder_.write(name + ".app/Resources/Info-gnustep.plist",
                      "{ NSExecutable = " + name + "; CFBundleName = \"" + name +
                          " by Name\"; CFBundleIdentifier = \"org.tarvik." + name +
                          "\"; CFBundleSignature = \"" + name + "\"; ApplicationRelease = \"7.1\"; }");
        return root_ / (name + ".app");
    }
    void start(const std::string &program, const char *titles,
               const char *word = nullptr)  // GNUstep would open the word as a file
    {
        setenv("WINDOW_PEER", titles, 1);
        char *words[] = {const_cast<char *>(program.c_str()), const_cast<char *>(word), nullptr};
        pid_t pid = 0;
        ASSERT_EQ(posix_spawn(&pid, program.c_str(), nullptr, nullptr, words, environ), 0);
        children_.push_back(pid);
    }
    /// Within some time, our own windows alive meanwhile.
    static bool comesTrue(const std::function<bool()> &condition, NSTimeInterval patience = 20)
    {
        NSDate *const end = [NSDate dateWithTimeIntervalSinceNow:patience];
        while ([end timeIntervalSinceNow] > 0) {
            if (condition())
                return true;
            [[NSRunLoop currentRunLoop] runUntilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]];
            while (NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                                       untilDate:[NSDate distantPast]
                                                          inMode:NSDefaultRunLoopMode
                                                         dequeue:YES])
                [NSApp sendEvent:event];
        }
        return false;
    }
    static bool isFront(const std::string &path) { return [tarvik::nsstring(path) isFrontProcess]; }
    /// Brings it to the front until it stays there: another that is just coming up may bring itself there once more.
    static bool staysInFront(const std::string &path, const std::function<bool()> &bring)
    {
        return comesTrue([&] { return bring() && !comesTrue([&] { return !isFront(path); }, 0.8); });
    }
    static bool hasWindows(const char *titles)
    {
        return comesTrue([&] {
            std::string found = stacking(), wanted = titles;
            std::sort(found.begin(), found.end());
            return found == wanted;
        });
    }
    static std::string activeTitle()
    {
        return runProgram({"xdotool", "getactivewindow", "getwindowname"}).out;
    }

    tarvik::Pool pool_;
    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path());
    std::vector<pid_t> children_;
};

TEST_F(FrontProcess, ChangesHandsBetweenApplications)
{
    const std::string ink = make("ink1"), pen = make("pen1");
    start(ink + "/ink1", "peer1,peer2");
    start(pen + "/pen1", "peer3");
    ASSERT_TRUE(hasWindows("123")) << stacking();
    NSString *const inkPath = tarvik::nsstring(ink), *const penPath = tarvik::nsstring(pen);
    NSWorkspace *const workspace = [NSWorkspace sharedWorkspace];

    EXPECT_TRUE(staysInFront(pen, [&] { return [penPath activateProcess]; }));
    EXPECT_EQ(activeTitle(), "peer3\n");
    EXPECT_FALSE(isFront(ink));
    EXPECT_TRUE([[workspace frontProcessPath] isEqualToString:penPath]);
    EXPECT_TRUE([[workspace frontProcessIdentifier] isEqualToString:@"org.tarvik.pen1"]);
    const tarvik::CFOwned<CFStringRef> name(CFStringCopyFrontProcessName());
    EXPECT_TRUE([(NSString *)name.get() isEqualToString:@"pen1 by Name"]);
    ProcessSerialNumber number;
    pid_t pid = 0;
    ASSERT_EQ(GetFrontProcess(&number), noErr);
    EXPECT_EQ(GetProcessPID(&number, &pid), noErr);
    EXPECT_EQ(pid, children_[1]);

    // All windows of an application come, not the topmost alone.
    EXPECT_TRUE(comesTrue([] { return stacking().back() == '3'; })) << stacking();
    FSRef ref;
    ASSERT_TRUE([inkPath getFSRef:&ref]);
    EXPECT_TRUE(staysInFront(ink, [&] { return FSSetFrontProcess(&ref); }));
    EXPECT_EQ(stacking().front(), '3') << stacking();
    EXPECT_TRUE(FSIsFrontProcess(&ref));

    // Launching what runs is to switch to it, unless that is not wanted.
    EXPECT_TRUE([penPath launchWithLaunchFlags:kLSLaunchDefaults | kLSLaunchDontSwitch]);
    usleep(100000);
    EXPECT_TRUE(isFront(ink));
    EXPECT_TRUE(staysInFront(pen, [&] { return [penPath launchWithLaunchFlags:kLSLaunchDefaults]; }));
    EXPECT_EQ(stacking().size(), 3u) << "nothing was started";

    // One that has no window.
    start("/bin/sleep", "", "60");
    ASSERT_EQ(GetProcessForPID(children_[2], &number), noErr);
    EXPECT_EQ(SetFrontProcess(&number), appIsDaemon);
    EXPECT_TRUE(isFront(pen));
}

TEST_F(FrontProcess, IsTheCallerAfterItsActivation)
{
    const std::string pen = make("pen2");
    start(pen + "/pen2", "peer4");
    NSWindow *const window = [[[NSWindow alloc] initWithContentRect:NSMakeRect(300, 300, 200, 100)
                                                          styleMask:NSTitledWindowMask
                                                            backing:NSBackingStoreBuffered
                                                              defer:NO] autorelease];
    [window setReleasedWhenClosed:NO];
    [window setTitle:@"peer5"];
    [window makeKeyAndOrderFront:nil];
    ASSERT_TRUE(hasWindows("45")) << stacking();
    ASSERT_TRUE(staysInFront(pen, [&] { return [tarvik::nsstring(pen) activateProcess]; }));
    FSRef self;
    ASSERT_TRUE(FSGetCurrentProcess(&self));
    EXPECT_FALSE(FSIsFrontProcess(&self));
    EXPECT_TRUE(ProcessActivate());
    EXPECT_TRUE(comesTrue([&] { return FSIsFrontProcess(&self); }));
    EXPECT_EQ(activeTitle(), "peer5\n");
    [window close];
}

// Programs that have no handler for any event.
TEST_F(FrontProcess, IsWhatScriptsTellItToBe)
{
    const std::string ink = make("ink7"), pen = make("pen7");
    start(ink + "/ink7", "peer1");
    start(pen + "/pen7", "peer2");
    ASSERT_TRUE(hasWindows("12")) << stacking();
    Scripting scripting;
    ASSERT_TRUE(staysInFront(pen, [&] { return scripting.run("activate application \"pen7\"").empty(); }));
    EXPECT_EQ(scripting.run("{frontmost of application \"pen7 by Name\", application \"org.tarvik.ink7\" is "
                            "frontmost, application \"pen7.app\" is running}"),
              "{true, false, true}");
    EXPECT_EQ(scripting.run("tell application \"ink7\"\nset frontmost to true\nrepeat until frontmost\ndelay "
                            "0.02\nend\n{name, id, version}\nend"),
              "{\"ink7 by Name\", \"org.tarvik.ink7\", \"7.1\"}");
    EXPECT_TRUE(isFront(ink));
    EXPECT_EQ(scripting.run("set frontmost of application \"pen7\" to false"),
              "error -10006: pen7 got an error: Can’t set frontmost of application \"pen7\" to false.");
    // What only the program itself can do is not done to it.
    EXPECT_EQ(scripting.run("tell application \"pen7\" to quit"),
              "error -1708: pen7 got an error: It doesn’t understand the “quit” message.");
    EXPECT_EQ(scripting.run("tell application \"pen7\" to get colour"),
              "error -1728: pen7 got an error: Can’t get colour of application \"pen7\".");
    EXPECT_EQ(scripting.run("running of application \"pen7\""), "true");
    // One that has no window; one that doesn't run.
    start("/bin/sleep", "", "60");
    EXPECT_EQ(scripting.run("tell application \"sleep\" to activate"),
              "error -606: sleep got an error: It has no windows.");
    kill(children_[1], SIGKILL);
    ASSERT_TRUE(comesTrue([&] { return scripting.run("application \"pen7\" is not running") == "true"; }));
    EXPECT_EQ(scripting.run("frontmost of application \"pen7\""), "error -600: Application isn’t running.");
    setenv("WINDOW_PEER", "peer2", 1);
    EXPECT_EQ(scripting.run("tell application \"" + pen + "\" to launch"), "");
    EXPECT_TRUE(hasWindows("12")) << stacking();
    ProcessSerialNumber number;
    pid_t pid = 0;
    if ([tarvik::nsstring(pen) getProcessSerialNumber:&number] && GetProcessPID(&number, &pid) == noErr)
        kill(pid, SIGKILL);
}

TEST_F(FrontProcess, ApplicationsAreFoundAndLaunchedByName)
{
    NSWorkspace *const workspace = [NSWorkspace sharedWorkspace];
    NSString *const place =
        [NSSearchPathForDirectoriesInDomains(NSApplicationDirectory, NSUserDomainMask, YES) lastObject];
    ASSERT_TRUE([place createDirectories]);
    make("note");
    NSString *const note = [place stringByAppendingPathComponent:@"note.app"];
    fs::rename(root_ / "note.app", fs::path(tarvik::utf8(note).value()));
    EXPECT_TRUE([[workspace applicationForName:@"note.app" creator:nil identifier:nil] isEqualToString:note]);
    EXPECT_TRUE([[workspace applicationForName:nil creator:@"note" identifier:nil] isEqualToString:note]);
    EXPECT_TRUE([[workspace applicationForName:nil creator:nil
                                    identifier:@"org.tarvik.note"] isEqualToString:note]);
    EXPECT_EQ([workspace applicationForName:@"none" creator:@"none" identifier:@"none"], nil);
    EXPECT_EQ([workspace applicationForName:nil creator:nil identifier:nil], nil);

    setenv("WINDOW_PEER", "peer6", 1);
    [workspace findApplications];
    ASSERT_TRUE(comesTrue([&] { return [[workspace fullPathForApplication:@"note"] isEqualToString:note]; }));
    EXPECT_TRUE([workspace launchApplication:@"note" withLaunchFlags:kLSLaunchDefaults]);
    EXPECT_TRUE(comesTrue([&] { return [note isRunningProcess]; }));
    EXPECT_TRUE(hasWindows("6"));
    EXPECT_FALSE([workspace launchApplication:@"no such application" withLaunchFlags:kLSLaunchDefaults]);
    EXPECT_FALSE([workspace launchApplication:nil withLaunchFlags:kLSLaunchDefaults]);
    ProcessSerialNumber number;
    pid_t pid = 0;
    if ([note getProcessSerialNumber:&number] && GetProcessPID(&number, &pid) == noErr)
        kill(pid, SIGKILL);
    EXPECT_TRUE([note remove]);
}

}  // namespace
