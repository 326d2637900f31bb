#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/LoggedMessages.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <sys/time.h>
#include <thread>

namespace {
// What the delegate saw; every test has a process of its own.
std::vector<std::string> gPieces;
std::function<bool()> gOnPiece;
std::function<void()> gOnRun;
int gRuns;
}  // namespace

@interface ToolDelegate : NSObject
@end
@implementation ToolDelegate
- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)piece
{
    gPieces.push_back("out " + *tarvik::bytes(piece));
    EXPECT_GE([[tool standardOutputData] length], [piece length]) << "gathered first";
    return !gOnPiece || gOnPiece();
}
- (BOOL)commandTool:(CommandTool *)tool readStandardErrorData:(NSData *)piece
{
    (void)tool;
    gPieces.push_back("error " + *tarvik::bytes(piece));
    return YES;
}
- (void)didRun:(NSNotification *)notification
{
    EXPECT_EQ([notification userInfo], nil);
    ++gRuns;
    if (gOnRun)
        gOnRun();
}
@end

namespace {

CommandTool *shell(const std::string &script)
{
    CommandTool *tool = [CommandTool commandToolWithPath:@"/bin/sh"];
    [tool setArguments:[NSArray arrayWithObjects:@"-c", tarvik::nsstring(script), nil]];
    return tool;
}

bool turnRunLoop(const std::function<bool()> &until, double seconds = 10)
{
    NSDate *end = [NSDate dateWithTimeIntervalSinceNow:seconds];
    while (!until() && [end timeIntervalSinceNow] > 0) {
        tarvik::Pool pool;
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
    }
    return until();
}

TEST(CommandTool, Settings)
{
    EXPECT_EQ([[CommandTool alloc] initWithPath:nil], nil);
    CommandTool *tool = [[[CommandTool alloc] init] autorelease];
    EXPECT_TRUE([[tool executePath] isEqual:@""]);
    [tool setExecutePath:@"/bin/cat"];
    [tool setArguments:[NSArray arrayWithObject:@"-"]];
    [tool setArguments:nil];  // both are ignored
    [tool setInputData:tarvik::nsdata("kept")];
    [tool setInputData:nil];
    EXPECT_EQ([tool standardOutputData], nil);
    [tool setReadStandardOutput:YES];
    EXPECT_TRUE([tool run:NO]);
    EXPECT_EQ(tarvik::bytes([tool standardOutputData]), "kept");
    NSData *gathered = [tool standardOutputData];
    [tool setReadStandardOutput:YES];
    EXPECT_EQ([tool standardOutputData], gathered) << "kept, with what is in it";
    [tool setReadStandardOutput:NO];
    EXPECT_EQ([tool standardOutputData], nil);
    [tool setExecutePath:nil];
    EXPECT_EQ([tool executePath], nil);
}

TEST(CommandTool, GathersBothStreamsAndIgnoresTheStatus)
{
    CommandTool *tool = shell("cat; echo problem >&2; exit 9");
    [tool setInputData:tarvik::nsdata(std::string("\0\xFF text", 7))];
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    for (int run = 0; run < 2; ++run) {  // the second run forgets the first
        EXPECT_TRUE([tool run:NO]);
        EXPECT_TRUE([tool succeeded]);
        EXPECT_EQ(tarvik::bytes([tool standardOutputData]), std::string("\0\xFF text", 7));
        EXPECT_EQ(tarvik::bytes([tool standardErrorData]), "problem\n");
    }
    EXPECT_TRUE([shell("exit 1") run:NO]) << "nothing read, nothing written";
}

TEST(CommandTool, WhatCannotRunIsLoggedAndTheObjectGoesOn)
{
    LoggedMessages log;
    CommandTool *tool = [CommandTool commandToolWithPath:@"/nonexistent/tool"];
    [tool setReadStandardOutput:YES];
    for (NSString *path : {@"/nonexistent/tool", @"", @"/tmp"}) {
        [tool setExecutePath:path];
        EXPECT_FALSE([tool run:NO]) << [path UTF8String];
    }
    [tool setExecutePath:nil];
    EXPECT_FALSE([tool run:NO]);
    ASSERT_EQ(log.count(), 4u);
    EXPECT_EQ(log[0], "-[CommandTool runCore:]:220: unexpected exception: name[NSInvalidArgumentException] "
                      "reason[NSTask - launch path (/nonexistent/tool) not valid]");
    [tool setExecutePath:@"/bin/echo"];
    EXPECT_TRUE([tool run:NO]);
    EXPECT_EQ(tarvik::bytes([tool standardOutputData]), "\n");
    EXPECT_EQ(log.count(), 4u);
}

TEST(CommandTool, AToolThatDoesNotReadItsInputIsNotTheHostsDeath)
{
    signal(SIGPIPE, SIG_DFL);
    LoggedMessages log;
    CommandTool *tool = shell("exit 0");
    [tool setInputData:[NSMutableData dataWithLength:1 << 20]];
    EXPECT_FALSE([tool run:NO]);
    ASSERT_EQ(log.count(), 1u);
    EXPECT_NE(log[0].find("name[NSFileHandleOperationException]"), std::string::npos) << log[0];
}

TEST(CommandTool, ADelegateSeesThePiecesAndStopsTheReading)
{
    ToolDelegate *delegate = [[[ToolDelegate alloc] init] autorelease];
    CommandTool *tool = shell("echo one; echo bad >&2; sleep 0.1; echo two; exit 3");
    [tool setDelegate:delegate];
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    EXPECT_TRUE([tool run:NO]);
    EXPECT_EQ(gPieces, (std::vector<std::string>{"out one\n", "error bad\n", "out two\n"}));

    gPieces.clear();
    gOnPiece = [] { return false; };
    EXPECT_TRUE([tool run:NO]) << "waited for all the same";
    EXPECT_EQ(gPieces, std::vector<std::string>{"out one\n"});
    EXPECT_EQ([[tool standardErrorData] length], 0u) << "not taken in the pass that was left";

    gOnPiece = [&] {
        [tool setDelegate:nil];
        return true;
    };
    EXPECT_TRUE([tool run:NO]);
    EXPECT_EQ(tarvik::bytes([tool standardOutputData]), "one\ntwo\n") << "goes on without its delegate";
}

// Both streams are read at once, each on a thread of its own: neither goes on into memory that nobody looks at.
TEST(CommandTool, AStoppedReadingIsStoppedOnBothStreams)
{
    const auto resident = [] {
        long all = 0, pages = 0;
        std::ifstream("/proc/self/statm") >> all >> pages;
        return pages * getpagesize();
    };
    ToolDelegate *watcher = [[[ToolDelegate alloc] init] autorelease];
    CommandTool *tool = shell("yes & exec yes >&2");
    [tool setDelegate:watcher];
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    gOnPiece = [] { return false; };
    [[NSNotificationCenter defaultCenter] addObserver:watcher
                                             selector:@selector(didRun:)
                                                 name:CommandToolDidRunNotification
                                               object:tool];
    const long before = resident();
    EXPECT_TRUE([tool run:YES]);
    EXPECT_TRUE(turnRunLoop([] { return !gPieces.empty(); }));
    turnRunLoop([] { return gRuns > 0; }, 0.7);
    EXPECT_LT(resident() - before, 32 << 20);
    [tool kill];
    EXPECT_TRUE(turnRunLoop([] { return gRuns > 0; }));
    [[NSNotificationCenter defaultCenter] removeObserver:watcher];
}

TEST(CommandTool, BackgroundRunNotifiesOnTheCallersRunLoop)
{
    ToolDelegate *watcher = [[[ToolDelegate alloc] init] autorelease];
    CommandTool *tool = shell("sleep 0.2; echo done");
    [[NSNotificationCenter defaultCenter] addObserver:watcher
                                             selector:@selector(didRun:)
                                                 name:CommandToolDidRunNotification
                                               object:tool];
    [tool setReadStandardOutput:YES];
    EXPECT_TRUE([tool run:YES]);
    EXPECT_FALSE([tool run:YES]) << "runs already";
    EXPECT_FALSE([tool run:NO]);
    EXPECT_FALSE([tool succeeded]);
    EXPECT_EQ(gRuns, 0);
    EXPECT_TRUE(turnRunLoop([&] { return gRuns > 0; }));
    EXPECT_TRUE([tool succeeded]);
    EXPECT_EQ(tarvik::bytes([tool standardOutputData]), "done\n");
    EXPECT_FALSE(turnRunLoop([&] { return gRuns > 1; }, 0.5)) << "once";
    EXPECT_TRUE([tool run:NO]) << "and runs again";
    gOnRun = [&] {
        if (gRuns < 3) {
            EXPECT_TRUE([tool run:YES]) << "an observer starts the next run";
        }
    };
    EXPECT_TRUE([tool run:YES]);
    EXPECT_TRUE(turnRunLoop([&] { return gRuns == 3; }));
    EXPECT_FALSE(turnRunLoop([&] { return gRuns > 3; }, 0.5)) << "each run's timer is gone";
    [[NSNotificationCenter defaultCenter] removeObserver:watcher];
}

TEST(CommandTool, AKilledRunEndsAndSucceeds)
{
    ToolDelegate *watcher = [[[ToolDelegate alloc] init] autorelease];
    CommandTool *tool = shell("echo started; sleep 1000 & sleep 1000");
    [tool kill];  // nothing runs
    [tool setDelegate:watcher];
    [tool setReadStandardOutput:YES];
    gOnPiece = [&] {
        [tool kill];
        return true;
    };
    EXPECT_TRUE([tool run:NO]);
    gOnPiece = nullptr;
    EXPECT_TRUE([tool run:YES]);
    while (![tool succeeded]) {
        [tool kill];  // from another thread, at any moment of the run
        turnRunLoop([] { return false; }, 0.01);
    }
}

// Each shape would deadlock a runner that waits for one stream while the tool fills the other.
TEST(CommandTool, AnyOrderOfMuchOutputOnBothStreams)
{
    const char *const scripts[] = {
        "head -c 3000000 /dev/zero; head -c 3000000 /dev/zero >&2",
        "head -c 3000000 /dev/zero >&2; head -c 3000000 /dev/zero",
        "head -c 3000000 /dev/zero & head -c 3000000 /dev/zero >&2; wait",
    };
    for (const char *script : scripts) {
        CommandTool *tool = shell(script);
        [tool setReadStandardOutput:YES];
        [tool setReadStandardError:YES];
        EXPECT_TRUE([tool run:NO]) << script;
        EXPECT_EQ([[tool standardOutputData] length], 3000000u) << script;
        EXPECT_EQ([[tool standardErrorData] length], 3000000u) << script;
    }
}

TEST(CommandTool, OneGibibyteToBothStreamsAtOnce)
{
    CommandTool *tool = shell("head -c 1073741824 /dev/zero & head -c 1073741824 /dev/zero >&2; wait");
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    EXPECT_TRUE([tool run:NO]);
    EXPECT_EQ([[tool standardOutputData] length], 1u << 30);
    EXPECT_EQ([[tool standardErrorData] length], 1u << 30);
}

// A host's interval timer interrupts every system call that can be.
TEST(CommandTool, InterruptedCallsChangeNothing)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};  // and no SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    constexpr itimerval kEveryMillisecond{{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &kEveryMillisecond, nullptr);
    const std::string data(1 << 20, 'x');
    for (int i = 0; i < 20; ++i) {
        tarvik::Pool pool;
        CommandTool *tool = shell("sleep 0.01; wc -c; echo end >&2");
        [tool setInputData:tarvik::nsdata(data)];
        [tool setReadStandardOutput:YES];
        [tool setReadStandardError:i % 2];
        EXPECT_TRUE([tool run:NO]);
        EXPECT_EQ(tarvik::bytes([tool standardOutputData]), "1048576\n");
    }
}

TEST(CommandTool, AThousandRunsLeaveNothing)
{
    LoggedMessages log;
    const auto run = [](int i) {
        tarvik::Pool pool;
        CommandTool *tool =
            i % 10 == 9 ? [CommandTool commandToolWithPath:@"/nonexistent"] : shell("cat; echo x >&2");
        if (i % 2)
            [tool setInputData:tarvik::nsdata("input")];
        else
            [tool setInputData:[NSData data]];
        [tool setReadStandardOutput:YES];
        [tool setReadStandardError:i % 3 == 0];
        EXPECT_EQ(bool([tool run:NO]), i % 10 != 9);
    };
    testing::internal::CaptureStderr();
    run(0);
    const size_t descriptors = openDescriptors();
    for (int i = 0; i < 1000; ++i)
        run(i);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.count(), 100u);
    for (int i = 0; i < 100 && openDescriptors() > descriptors; ++i)  // the last drains' threads
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_LE(openDescriptors(), descriptors);
    EXPECT_EQ(childProcesses(), 0u);
}

CFStringRef cf(NSString *text) { return (CFStringRef)text; }

TEST(ShellCommand, JoinsWithBlanksAndPassesTheStatusOn)
{
    TemporaryFolder folder;
    NSString *to = [NSString stringWithFormat:@"> '%s'", (folder / "out").c_str()];
    const auto said = [&] { return folder.read("out"); };
    EXPECT_EQ(CFString_system(nullptr), -1);
    EXPECT_EQ(CFStringApplySystemCommand(nullptr, cf(@"echo"), nullptr), -1);
    EXPECT_EQ(WEXITSTATUS(CFString_system(cf(@"exit 3"))), 3);
    EXPECT_EQ(CFStringApplySystemCommand(cf(@"  a \"b  c\""), cf(@"echo"), cf(to)), 0);
    EXPECT_EQ(said(), "a b  c\n");
    EXPECT_EQ(CFStringApplySystemCommand(cf(@"echo é"), nullptr, cf(to)), 0);
    EXPECT_EQ(said(), "é\n");
    EXPECT_EQ(WEXITSTATUS(CFStringApplySystemCommand(cf(@"exit 4"), nullptr, nullptr)), 4);
}

// Ideographs take three bytes a unit: too long for the buffer once they outweigh the rest, and an available
// encoding that holds them steps in.
TEST(ShellCommand, ALongUTF8FormFallsBackToAnotherEncoding)
{
    EXPECT_EQ(CFStringAllocCString(cf(@"日本語"), kCFStringEncodingUTF8), nullptr);
    char *text = CFStringAllocConvertableCString(cf(@"日本語"));
    ASSERT_NE(text, nullptr);
    EXPECT_STRNE(text, "日本語");
    EXPECT_LE(strlen(text), 6u);
    free(text);
}

}  // namespace
