// Drags from and to a program of another kind.
#import <GNUstepGUI/GSDisplayServer.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

#include <X11/Xlib.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <memory>
#include <utility>

// A view that takes files and text.
@interface DropView : NSView {
@public
    BOOL mIsOver;
    NSArray *mFiles, *mTypes;
    NSString *mText;
}
@end
@implementation DropView
- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)info
{
    (void)info;
    mIsOver = YES;
    return NSDragOperationCopy;
}
- (NSDragOperation)draggingUpdated:(id<NSDraggingInfo>)info
{
    (void)info;
    return NSDragOperationCopy;
}
- (BOOL)performDragOperation:(id<NSDraggingInfo>)info
{
    NSPasteboard *pasteboard = [info draggingPasteboard];
    ASSIGN(mTypes, [pasteboard types]);
    ASSIGN(mFiles, [pasteboard propertyListForType:NSFilenamesPboardType]);
    ASSIGN(mText, [pasteboard stringForType:NSStringPboardType]);
    return YES;
}
- (void)dealloc
{
    DESTROY(mTypes);
    DESTROY(mFiles);
    DESTROY(mText);
    [super dealloc];
}
@end

// A view that text is dragged from.
@interface TextSource : NSView
@end
@implementation TextSource
- (void)mouseDragged:(NSEvent *)event
{
    NSPasteboard *pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:NSStringPboardType] owner:nil];
    [pasteboard setString:@"Grüße" forType:NSStringPboardType];
    [self dragImage:[NSImage imageNamed:@"NSApplicationIcon"]
                 at:NSZeroPoint
             offset:NSZeroSize
              event:event
         pasteboard:pasteboard
             source:self
          slideBack:NO];
}
- (NSDragOperation)draggingSourceOperationMaskForLocal:(BOOL)isLocal
{
    (void)isLocal;
    return NSDragOperationCopy;
}
@end

namespace {

class Drags : public testing::Test {
protected:
    void SetUp() override
    {
        [NSApplication sharedApplication];
        [NSApp finishLaunching];
        window_.emplace();
    }
    ~Drags() override
    {
        if (peer_ > 0)
            endPeer(SIGTERM);
    }

    void startPeer(const char *target, const std::string &offer)
    {
        const std::string in = folder_.write("offer", offer), out = folder_.write("said", "");
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 0, in.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, 1, out.c_str(), O_WRONLY, 0);
        char *words[] = {const_cast<char *>(DRAG_PEER), const_cast<char *>(target), nullptr};
        ASSERT_EQ(posix_spawn(&peer_, DRAG_PEER, &files, nullptr, words, environ), 0);
        posix_spawn_file_actions_destroy(&files);
        ASSERT_TRUE(eventually([&] { return said("shown"); }));
    }
    bool said(std::string_view words) const { return folder_.read("said").find(words) != std::string::npos; }

    void endPeer(int signal)
    {
        kill(peer_, signal);
        waitpid(std::exchange(peer_, 0), nullptr, 0);
    }

    /// A view that takes files and text.
    DropView *taker()
    {
        DropView *view =
            window_->add([[[DropView alloc] initWithFrame:NSMakeRect(20, 20, 200, 100)] autorelease]);
        [view registerForDraggedTypes:[NSArray
                                          arrayWithObjects:NSFilenamesPboardType, NSStringPboardType, nil]];
        window_->show();
        return view;
    }
    /// What the peer offers is dragged over the view.
    void dragOver(DropView *view, const char *target, const std::string &offer)
    {
        startPeer(target, offer);
        const Hand hand("mousemove 50 50 sleep 0.2 mousedown 1 sleep 0.1 mousemove 60 60 sleep 0.1 "
                        "mousemove 90 90 sleep 0.2 mousemove " +
                        onScreen(view, NSMakePoint(30, 30)) + " sleep 0.2 mousemove " + middleOf(view));
        EXPECT_TRUE(eventually([&] { return view->mIsOver; }));
    }
    DropView *dropped(const char *target, const std::string &offer)
    {
        DropView *view = taker();
        dragOver(view, target, offer);
        drop(view);
        return view;
    }
    static void drop(DropView *view)
    {
        NSDate *end = [NSDate dateWithTimeIntervalSinceNow:0.3];  // the last movement's answer is under way
        eventually([=] { return [end timeIntervalSinceNow] < 0; });
        const Hand hand("mouseup 1");
        EXPECT_TRUE(eventually([&] { return view->mTypes != nil; }));
    }
    /// The view, from which a drag begins, is dragged to the peer, which gets the text.
    void goesToPeer(NSView *view, const char *target, const std::string &text)
    {
        window_->show();
        startPeer(target, "");
        std::function<void()> dropWhenOver = [&] {
            if (said("over"))
                Hand("mouseup 1");
            else
                later(0.1, dropWhenOver);
        };
        later(0.1, dropWhenOver);
        const Hand hand("mousemove " + middleOf(view) +
                        " sleep 0.2 mousedown 1 sleep 0.2 mousemove_relative 10 10 sleep 0.1 "
                        "mousemove_relative 10 10 sleep 0.1 mousemove 90 90 sleep 0.2 mousemove 50 50");
        EXPECT_TRUE(eventually([&] { return said(std::string(target) + " b'" + text + "'"); }))
            << folder_.read("said");
    }

    tarvik::Pool pool_;
    TemporaryFolder folder_;
    std::optional<TestWindow> window_;
    pid_t peer_ = 0;
};

}  // namespace

TEST_F(Drags, FilesComeFromOthers)
{
    // One on another machine, and one that is no file, are left out.
    const DropView *view = dropped("text/uri-list", "# files\r\nfile:///tmp/a%20b%C3%B6.img\r\n"
                                                    "file://elsewhere.example/c\r\nhttp://example.org/d\r\n"
                                                    "file://localhost/e\r\n");
    NSArray *expected = [NSArray arrayWithObjects:@"/tmp/a bö.img", @"/e", nil];
    EXPECT_TRUE([view->mFiles isEqual:expected]) << [[view->mFiles description] UTF8String];
    EXPECT_EQ(view->mText, nil);
}

// Too much for one message: it comes in parts.
TEST_F(Drags, ManyFilesComeFromOthers)
{
    std::string list;
    for (int i = 0; i < 30000; ++i)
        list += "file:///srv/images/of/a/long/name/disk%20" + std::to_string(i) + ".img\r\n";
    const DropView *view = dropped("text/uri-list", list);
    ASSERT_EQ([view->mFiles count], 30000u);
    EXPECT_TRUE([[view->mFiles lastObject] isEqual:@"/srv/images/of/a/long/name/disk 29999.img"]);
}

TEST_F(Drags, TextComesFromOthers)
{
    const DropView *view = dropped("UTF8_STRING", "Grüße\nan alle");
    EXPECT_TRUE([view->mText isEqual:@"Grüße\nan alle"]) << [view->mText UTF8String];
    EXPECT_EQ(view->mFiles, nil);
}

TEST_F(Drags, FilesGoToOthers)
{
    const std::string file = folder_.write("Für dich.img", "image");
    FileIconView *icon = window_->add([[[FileIconView alloc] init] autorelease]);
    [icon setFrame:NSMakeRect(20, 20, 48, 48)];
    [icon setFile:tarvik::nsstring(file)];
    goesToPeer(icon, "text/uri-list", "file://" + folder_.path().native() + "/F%C3%BCr%20dich.img\\r\\n");
}

TEST_F(Drags, TextGoesToOthers)
{
    NSView *view = window_->add([[[TextSource alloc] initWithFrame:NSMakeRect(20, 20, 48, 48)] autorelease]);
    goesToPeer(view, "text/plain", "Gr\\xc3\\xbc\\xc3\\x9fe");
}

// The program that is dragged from is killed; the next drag is as good as any.
TEST_F(Drags, OthersMayDieMeanwhile)
{
    DropView *view = taker();
    dragOver(view, "UTF8_STRING", "never dropped");
    endPeer(SIGKILL);
    {
        const Hand hand("mouseup 1");
    }
    view->mIsOver = NO;
    dragOver(view, "UTF8_STRING", "dropped");
    drop(view);
    EXPECT_TRUE([view->mText isEqual:@"dropped"]) << [view->mText UTF8String];
}

// Messages of a drag that name windows which are none: there was such a window when they were sent.
TEST_F(Drags, OthersMayBeGone)
{
    DropView *view = taker();
    const std::unique_ptr<Display, decltype(&XCloseDisplay)> display(XOpenDisplay(nullptr), XCloseDisplay);
    const Window to = Window([GSCurrentServer() windowDevice:int([window_->get() windowNumber])]);
    const Window gone =
        XCreateSimpleWindow(display.get(), DefaultRootWindow(display.get()), 0, 0, 1, 1, 0, 0, 0);
    XDestroyWindow(display.get(), gone);
    const auto atom = [&](const char *name) { return long(XInternAtom(display.get(), name, False)); };
    for (const char *name : {"XdndEnter", "XdndPosition", "XdndDrop", "XdndEnter", "XdndLeave"})
        for (const long version : {3L, 4L}) {
            XEvent event = {};
            event.xclient = {.type = ClientMessage,
                             .serial = 0,
                             .send_event = True,
                             .display = display.get(),
                             .window = to,
                             .message_type = Atom(atom(name)),
                             .format = 32,
                             .data = {}};
            event.xclient.data.l[0] = long(gone);
            event.xclient.data.l[1] = version << 24 | 1;
            event.xclient.data.l[2] = atom("UTF8_STRING");
            XSendEvent(display.get(), to, False, NoEventMask, &event);
        }
    XSync(display.get(), False);
    dragOver(view, "UTF8_STRING", "dropped");
    drop(view);
    EXPECT_TRUE([view->mText isEqual:@"dropped"]) << [view->mText UTF8String];
}
