// Processes by their bundles: real applications in a folder of the test's own, which sleep until they are ended.
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/CFOwned.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/TemporaryFolder.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <thread>

namespace {

namespace fs = std::filesystem;
using tarvik::CFOwned;

uint64_t serial(const ProcessSerialNumber &number)
{
    return uint64_t(number.highLongOfPSN) << 32 | number.lowLongOfPSN;
}

class BundleProcesses : public testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("DISPLAY");
        fs::create_directories(root_ / "Ink.app/Resources/tools");
        for (const char *name : {"plain", "Ink.app/Ink", "Ink.app/Resources/tools/helper"})
            fs::copy_file("/bin/sleep", root_ / name);
        folder_.write("Ink.app/Resources/Info-gnustep.plist",
                      "{ NSExecutable = Ink; ApplicationName = \"Ink & Paper\"; CFBundleIdentifier = "
                      "\"org.tarvik.Ink\"; "
                      "CFBundleSignature = \"iNk!\"; }");
    }
    ~BundleProcesses() override
    {
        for (const pid_t pid : children_)
            end(pid);
    }
    pid_t start(const std::string &name)
    {
        const std::string program = root_ / name;
        char *words[] = {const_cast<char *>(program.c_str()), const_cast<char *>("60"), nullptr};
        pid_t pid = 0;
        EXPECT_EQ(posix_spawn(&pid, program.c_str(), nullptr, nullptr, words, environ), 0);
        children_.push_back(pid);
        return pid;
    }
    static void end(pid_t pid)
    {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    NSString *path(const std::string &name) const { return tarvik::nsstring((root_ / name).native()); }
    FSRef ref(const std::string &name) const
    {
        FSRef ref = {};
        EXPECT_TRUE([path(name) getFSRef:&ref]) << name;
        return ref;
    }
    /// The id of the process that is found for an item; 0 for none.
    pid_t found(const std::string &name) const
    {
        const FSRef item = ref(name);
        ProcessSerialNumber number = {1, 1};
        pid_t pid = 0;
        if (!FSGetProcessSerialNumber(&item, &number)) {
            EXPECT_EQ(serial(number), 0u);
            return 0;
        }
        EXPECT_EQ(GetProcessPID(&number, &pid), noErr);
        return pid;
    }
    static std::string name(pid_t pid)
    {
        ProcessSerialNumber number;
        CFStringRef name = nullptr;
        if (GetProcessForPID(pid, &number) != noErr || CopyProcessName(&number, &name) != noErr)
            return "";
        return tarvik::utf8((NSString *)CFOwned<CFStringRef>(name).get()).value();
    }
    std::string location(pid_t pid) const
    {
        ProcessSerialNumber number;
        FSRef item;
        if (GetProcessForPID(pid, &number) != noErr)
            return "no process";
        if (const OSStatus error = GetProcessBundleLocation(&number, &item))
            return std::to_string(error);
        return fs::path(tarvik::utf8([NSString stringWithFSRef:&item]).value())
            .lexically_relative(root_)
            .native();
    }

    tarvik::Pool pool_;
    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path());
    std::vector<pid_t> children_;
};

TEST_F(BundleProcesses, AreFoundByTheFolderOrTheExecutable)
{
    EXPECT_EQ(found("Ink.app"), 0);
    EXPECT_FALSE([path("Ink.app") isRunningProcess]);
    const pid_t ink = start("Ink.app/Ink"), helper = start("Ink.app/Resources/tools/helper"),
                plain = start("plain");
    EXPECT_EQ(found("Ink.app"), ink) << "of two, the first";
    EXPECT_EQ(found("Ink.app/Ink"), 0) << "an executable in a folder isn't what stands for its process";
    EXPECT_EQ(found("plain"), plain);
    EXPECT_EQ(name(ink) + ", " + name(plain), "Ink & Paper, plain");
    EXPECT_EQ(location(helper), "Ink.app");

    const FSRef app = ref("Ink.app");
    EXPECT_TRUE(FSIsRunningProcess(&app));
    const CFOwned<CFURLRef> url(CFURLCreateFromFSRef(nullptr, &app));
    ProcessSerialNumber number, same;
    EXPECT_TRUE(CFURLIsRunningProcess(url.get()));
    EXPECT_TRUE(CFURLGetProcessSerialNumber(url.get(), &number));
    EXPECT_TRUE([path("Ink.app") getProcessSerialNumber:&same]);
    EXPECT_EQ(serial(number), serial(same));
    const CFOwned<CFDictionaryRef> about(
        ProcessInformationCopyDictionary(&number, kProcessDictionaryIncludeAllInformationMask));
    NSDictionary *const dictionary = (NSDictionary *)about.get();
    ProcessSerialNumber self;
    GetCurrentProcess(&self);
    EXPECT_EQ([[dictionary objectForKey:@"pid"] intValue], ink);
    EXPECT_EQ([[dictionary objectForKey:@"PSN"] unsignedLongLongValue], serial(number));
    EXPECT_EQ([[dictionary objectForKey:@"ParentPSN"] unsignedLongLongValue], serial(self));
    EXPECT_TRUE([[dictionary objectForKey:@"BundlePath"] isEqualToString:path("Ink.app")]);
    EXPECT_TRUE([[dictionary objectForKey:@"CFBundleExecutable"] isEqualToString:path("Ink.app/Ink")]);
    EXPECT_TRUE([[dictionary objectForKey:@"CFBundleIdentifier"] isEqualToString:@"org.tarvik.Ink"]);
    EXPECT_TRUE([[dictionary objectForKey:@"FileCreator"] isEqualToString:@"iNk!"]);

    // The list has each of them.
    const CFOwned<CFMutableDataRef> list(FSCopyAllProcess());
    const auto *refs = reinterpret_cast<const FSRef *>(CFDataGetBytePtr(list.get()));
    ASSERT_EQ(CFDataGetLength(list.get()) % 80, 0);
    const auto count = [&](const FSRef &item) {
        return std::count_if(refs, refs + CFDataGetLength(list.get()) / 80,
                             [&](const FSRef &one) { return FSCompareFSRefs(&one, &item) == noErr; });
    };
    EXPECT_EQ(count(app), 2);
    EXPECT_EQ(count(ref("plain")), 1);
    EXPECT_EQ(count(ref("Ink.app/Ink")), 0);

    end(children_[0]);
    EXPECT_EQ(found("Ink.app"), helper);
    end(children_[1]);
    EXPECT_EQ(found("Ink.app"), 0);
    children_.erase(children_.begin(), children_.begin() + 2);
}

TEST_F(BundleProcesses, KeepTheirNumberAndFollowTheirFiles)
{
    const pid_t plain = start("plain"), ink = start("Ink.app/Ink");
    EXPECT_EQ(location(plain), "plain");
    fs::rename(root_ / "plain", root_ / "plain (deleted)");
    EXPECT_EQ(location(plain), "plain (deleted)") << "a name that only looks so";
    fs::rename(root_ / "Ink.app", root_ / "Pen.app");
    EXPECT_EQ(location(ink), "Pen.app");
    fs::remove(root_ / "Pen.app/Ink");
    EXPECT_EQ(location(ink), "Pen.app") << "the folder is there still";
    fs::rename(root_ / "plain (deleted)", root_ / "plain");
    fs::remove(root_ / "plain");
    EXPECT_EQ(location(plain), std::to_string(fnfErr));
    EXPECT_EQ(name(plain), "plain");
    fs::copy_file("/bin/sleep", root_ / "plain");
    EXPECT_EQ(location(plain), std::to_string(fnfErr)) << "another file of that name";
    EXPECT_EQ(found("plain"), 0);

    // A process is the same after it has executed another program.
    int wait[2];
    ASSERT_EQ(pipe2(wait, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        char go;
        if (read(wait[0], &go, 1) == 1)
            execl((root_ / "plain").c_str(), "plain", "60", nullptr);
        _exit(1);
    }
    children_.push_back(child);
    ProcessSerialNumber before, after;
    ASSERT_EQ(GetProcessForPID(child, &before), noErr);
    FSRef self;
    ASSERT_TRUE(FSGetCurrentProcess(&self));
    EXPECT_TRUE([[NSString stringWithFSRef:&self]
        hasSuffix:tarvik::nsstring(location(child).substr(location(child).rfind('/') + 1))]);
    ASSERT_EQ(write(wait[1], "x", 1), 1);
    for (int i = 0; i < 300 && location(child) != "plain"; ++i)
        usleep(10000);
    EXPECT_EQ(location(child), "plain");
    ASSERT_EQ(GetProcessForPID(child, &after), noErr);
    EXPECT_EQ(serial(before), serial(after));
    close(wait[0]);
    close(wait[1]);
}

TEST_F(BundleProcesses, TheCallersOwn)
{
    FSRef self;
    ASSERT_TRUE(FSGetCurrentProcess(&self));
    const std::string executable = fs::read_symlink("/proc/self/exe");
    EXPECT_EQ(tarvik::utf8([NSString stringWithFSRef:&self]).value(), executable);
    const CFOwned<CFStringRef> name(CFStringCopyCurrentProcessName());
    EXPECT_EQ(tarvik::utf8((NSString *)name.get()).value(), fs::path(executable).filename());
    const CFOwned<CFURLRef> url(CFURLCopyCurrentProcess());
    EXPECT_EQ(tarvik::utf8([(NSURL *)url.get() path]).value(), executable);
    EXPECT_TRUE(FSIsRunningProcess(&self));
}

TEST_F(BundleProcesses, WalksEndWhenToldSo)
{
    int calls = 0;
    const auto first = [](const ProcessSerialNumber *, void *count) -> Boolean {
        return ++*static_cast<int *>(count) < 2;
    };
    EXPECT_FALSE(EnumerateAllProcess(first, &calls));
    EXPECT_EQ(calls, 2);
    const auto all = [](const ProcessSerialNumber *, void *count) -> Boolean {
        return ++*static_cast<int *>(count);
    };
    EXPECT_TRUE(EnumerateAllProcess(all, &calls));
    EXPECT_GT(calls, 3);
    EXPECT_FALSE(EnumerateAllProcess(nullptr, nullptr));
}

TEST_F(BundleProcesses, FailWithoutADisplayAndForWhatIsNone)
{
    const pid_t plain = start("plain");
    ProcessSerialNumber number;
    ASSERT_EQ(GetProcessForPID(plain, &number), noErr);
    EXPECT_EQ(SetFrontProcess(&number), connectionInvalid);
    EXPECT_EQ(GetFrontProcess(&number), procNotFound);
    EXPECT_EQ(serial(number), 0u);
    EXPECT_EQ(SetFrontProcess(&number), procNotFound);
    FSRef front = ref("plain");
    EXPECT_FALSE(FSGetFrontProcess(&front));
    EXPECT_FALSE(FSIsFrontProcess(&front));
    EXPECT_FALSE(FSSetFrontProcess(&front));
    EXPECT_FALSE(ProcessActivate());
    EXPECT_EQ(CFStringCopyFrontProcessName(), nullptr);
    EXPECT_FALSE([path("plain") isFrontProcess] || [path("plain") activateProcess]);

    EXPECT_FALSE(FSGetProcessSerialNumber(nullptr, &number) || FSIsRunningProcess(nullptr) ||
                 FSIsFrontProcess(nullptr) || FSGetCurrentProcess(nullptr));
    EXPECT_FALSE(CFURLIsRunningProcess((CFURLRef)path("plain")) || CFURLIsRunningProcess(nullptr) ||
                 LSLaunchURLWithLaunchFlags((CFURLRef) @"x", 0));
    number = {1, 1};
    EXPECT_FALSE(
        CFURLGetProcessSerialNumber((CFURLRef)[NSURL URLWithString:@"http://localhost/plain"], &number));
    EXPECT_EQ(serial(number), 0u);
    EXPECT_FALSE([path("nothing") getProcessSerialNumber:&number] || [path("nothing") isRunningProcess] ||
                 [path("plain") getProcessSerialNumber:nullptr]);
    EXPECT_FALSE([path("plain") isMachOBinary]);
    EXPECT_EQ([path("nothing") applicationOfRole:kLSRolesAll], nil);
    EXPECT_FALSE([path("nothing") launchWithLaunchFlags:kLSLaunchDefaults]);
}

}  // namespace
