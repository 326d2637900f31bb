// Drags from and to a program of another kind.
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>

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
        if (peer_ > 0) {
            kill(peer_, SIGTERM);
            waitpid(peer_, nullptr, 0);
        }
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

    /// What the peer offers, dropped on a view that takes files and text.
    DropView *dropped(const char *target, const std::string &offer)
    {
        DropView *view =
            window_->add([[[DropView alloc] initWithFrame:NSMakeRect(20, 20, 200, 100)] autorelease]);
        [view registerForDraggedTypes:[NSArray
                                          arrayWithObjects:NSFilenamesPboardType, NSStringPboardType, nil]];
        window_->show();
        startPeer(target, offer);
        {
            const Hand hand("mousemove 50 50 sleep 0.2 mousedown 1 sleep 0.1 mousemove 60 60 sleep 0.1 "
                            "mousemove 90 90 sleep 0.2 mousemove " +
                            onScreen(view, NSMakePoint(30, 30)) + " sleep 0.2 mousemove " + middleOf(view));
            EXPECT_TRUE(eventually([&] { return view->mIsOver; }));
        }
        NSDate *end = [NSDate dateWithTimeIntervalSinceNow:0.3];  // the last movement's answer is under way
        eventually([=] { return [end timeIntervalSinceNow] < 0; });
        const Hand drop("mouseup 1");
        EXPECT_TRUE(eventually([&] { return view->mTypes != nil; }));
        return view;
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
    window_->show();
    startPeer("text/uri-list", "");
    std::function<void()> dropWhenOver = [&] {
        if (said("over"))
            Hand("mouseup 1");
        else
            later(0.1, dropWhenOver);
    };
    later(0.1, dropWhenOver);
    const Hand hand("mousemove " + middleOf(icon) +
                    " sleep 0.2 mousedown 1 sleep 0.2 mousemove_relative 10 10 sleep 0.1 "
                    "mousemove_relative 10 10 sleep 0.1 mousemove 90 90 sleep 0.2 mousemove 50 50");
    const std::string list = "file://" + folder_.path().native() + "/F%C3%BCr%20dich.img";
    EXPECT_TRUE(eventually([&] { return said("text/uri-list b'" + list + "\\r\\n'"); }))
        << folder_.read("said");
}
