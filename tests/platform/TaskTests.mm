// NSTask, NSPipe, NSFileHandle and NSMutableData as the platform repairs them.
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

@interface TaskWatcher : NSObject {
@public
    int mCount;
    id mObject;
}
@end
@implementation TaskWatcher
- (void)ended:(NSNotification *)notification
{
    ++mCount;
    mObject = [notification object];
}
- (void)launchAndLeave:(NSTask *)task
{
    tarvik::Pool pool;
    [task launch];
}
@end

@interface NSTask (Terminal)
- (BOOL)usePseudoTerminal;
@end

namespace {

NSTask *shell(const std::string &script)
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    [task setLaunchPath:@"/bin/sh"];
    [task setArguments:[NSArray arrayWithObjects:@"-c", tarvik::nsstring(script), nil]];
    return task;
}

std::string output(NSTask *task)
{
    NSPipe *pipe = [NSPipe pipe];
    [task setStandardOutput:pipe];
    [task launch];
    const auto text = tarvik::bytes([[pipe fileHandleForReading] readDataToEndOfFile]);
    [task waitUntilExit];
    return *text;
}

template <class Body>
std::string raised(Body &&body)
{
    tarvik::Retained<NSException *> exception;
    tarvik::attempt(body, &exception);
    return exception ? *tarvik::utf8([exception.get() name]) : "";
}
const std::string kInvalid = "NSInvalidArgumentException", kOperation = "NSFileHandleOperationException";

TEST(Task, TellsExitFromSignal)
{
    const struct {
        const char *script;
        int status;
        NSTaskTerminationReason reason;
    } cases[] = {{"exit 0", 0, NSTaskTerminationReasonExit},
                 {"exit 200", 200, NSTaskTerminationReasonExit},
                 {"kill -KILL $$", SIGKILL, NSTaskTerminationReasonUncaughtSignal},
                 {"kill -PIPE $$", SIGPIPE, NSTaskTerminationReasonUncaughtSignal}};
    for (const auto &c : cases) {
        NSTask *task = shell(c.script);
        EXPECT_EQ(raised([&] { [task terminationStatus]; }), kInvalid);
        [task launch];
        [task waitUntilExit];
        EXPECT_EQ([task terminationStatus], c.status) << c.script;
        EXPECT_EQ([task terminationReason], c.reason) << c.script;
        EXPECT_FALSE([task isRunning]);
        EXPECT_EQ(raised([&] { [task launch]; }), kInvalid) << "a second time";
    }
}

TEST(Task, RefusesWhatCannotBeLaunched)
{
    TemporaryFolder folder;
    const std::string plain = folder.write("plain", "#!/bin/sh\n"),
                      broken = folder.write("broken", "\177ELF nonsense");
    chmod(broken.c_str(), 0755);
    for (const std::string &path :
         {std::string(), std::string("/nonexistent/x"), std::string("no-such-tool-anywhere"),
          std::string(folder.path()), plain, broken}) {
        NSTask *task = [[[NSTask alloc] init] autorelease];
        [task setLaunchPath:tarvik::nsstring(path)];
        EXPECT_EQ(raised([&] { [task launch]; }), kInvalid) << path;
        EXPECT_FALSE([task isRunning]);
    }
    EXPECT_EQ(raised([] { [[[[NSTask alloc] init] autorelease] launch]; }), kInvalid) << "no path";
    NSTask *elsewhere = shell("exit 0");
    [elsewhere setCurrentDirectoryPath:@"/nonexistent"];
    EXPECT_EQ(raised([&] { [elsewhere launch]; }), kInvalid);
    EXPECT_EQ(childProcesses(), 0u);
}

TEST(Task, ArgumentsEnvironmentAndFolderArriveAsTheyAre)
{
    TemporaryFolder folder;
    NSTask *task = shell(R"(printf '[%s]' "$@" "$WHO" "$PWD")");
    [task setArguments:[[task arguments]
                           arrayByAddingObjectsFromArray:[NSArray arrayWithObjects:@"sh", @"", @" a  b ",
                                                                                   @"$HOME `x` \"'\\", @"é€😀",
                                                                                   @"line\nfeed", nil]]];
    [task setEnvironment:[NSDictionary dictionaryWithObject:@"me=you" forKey:@"WHO"]];
    [task setCurrentDirectoryPath:tarvik::nsstring(folder.path().native())];
    EXPECT_EQ(output(task),
              "[][ a  b ][$HOME `x` \"'\\][é€😀][line\nfeed][me=you][" + folder.path().native() + "]");
    setenv("TARVIK_SET_LATE", "yes", 1);
    EXPECT_EQ(output(shell("printf %s $TARVIK_SET_LATE")), "yes");
}

TEST(Task, TheChildStartsClean)
{
    const int open = ::open("/dev/null", O_RDONLY);  // not close-on-exec
    signal(SIGINT, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    EXPECT_EQ(output(shell("ls /proc/self/fd")), "0\n1\n2\n3\n") << "3 is ls's own";
    EXPECT_EQ(output(shell("grep -E 'Sig(Blk|Ign)' /proc/self/status | tr -d '0\\n'")),
              "SigBlk:\tSigIgn:\t18")
        << "18: the two that the C library keeps to itself";
    EXPECT_EQ(output(shell("ps -o pid= -o pgid= -o sid= -p $$ | awk '{print ($1==$2 && $2==$3)}'")), "1\n");
    close(open);
}

TEST(Task, TerminateReachesTheWholeGroupAndIsTold)
{
    NSTask *task = shell("sleep 100 & sleep 100; exit 3");
    [task launch];
    EXPECT_TRUE([task isRunning]);
    [task terminate];
    [task waitUntilExit];
    EXPECT_EQ([task terminationStatus], SIGTERM);
    EXPECT_EQ([task terminationReason], NSTaskTerminationReasonUncaughtSignal);
    [task terminate];  // nothing left to end

    NSTask *stubborn = shell("trap '' TERM; echo ready; sleep 0.3; exit 5");
    NSPipe *pipe = [NSPipe pipe];
    [stubborn setStandardOutput:pipe];
    [stubborn launch];
    [[pipe fileHandleForReading] availableData];
    [stubborn terminate];
    EXPECT_TRUE([stubborn isRunning]);
    [stubborn waitUntilExit];
    EXPECT_EQ([stubborn terminationStatus], 5);
    EXPECT_EQ(raised([] { [[[[NSTask alloc] init] autorelease] terminate]; }), kInvalid);
}

TEST(Task, NotifiesOnceFromTheLoopOfItsLauncher)
{
    TaskWatcher *watcher = [[[TaskWatcher alloc] init] autorelease];
    [[NSNotificationCenter defaultCenter] addObserver:watcher
                                             selector:@selector(ended:)
                                                 name:NSTaskDidTerminateNotification
                                               object:nil];
    NSTask *waited = shell("exit 0");
    [waited launch];
    [waited waitUntilExit];
    EXPECT_EQ(watcher->mCount, 1);

    NSTask *left = [[NSTask alloc] init];  // let go of at once: the running task stays
    {
        tarvik::Pool pool;
        [left setLaunchPath:@"/bin/true"];
        [left launch];
        [left release];
    }
    for (int turn = 0; turn < 100 && watcher->mCount < 2; ++turn)
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.1]];
    EXPECT_EQ(watcher->mCount, 2);
    EXPECT_EQ(watcher->mObject, left);
    [[NSNotificationCenter defaultCenter] removeObserver:watcher];
}

TEST(Task, OtherPeoplesChildrenAreLeftAlone)
{
    char *words[] = {const_cast<char *>("/bin/true"), nullptr};
    for (int round = 0; round < 50; ++round) {
        pid_t mine = 0;
        ASSERT_EQ(posix_spawn(&mine, words[0], nullptr, nullptr, words, nullptr), 0);
        NSTask *task = shell("exit 4");
        [task launch];
        [task waitUntilExit];
        EXPECT_EQ([task terminationStatus], 4);
        int status = -1;
        EXPECT_EQ(waitpid(mine, &status, 0), mine);
    }
    // A host that collects everything takes the task's status, not its end.
    NSTask *robbed = shell("exit 4");
    [robbed launch];
    EXPECT_EQ(waitpid(-1, nullptr, 0), [robbed processIdentifier]);
    [robbed waitUntilExit];
    EXPECT_FALSE([robbed isRunning]);
    EXPECT_EQ([robbed terminationStatus], -1);
}

TEST(Task, WaitedForOnAnotherThreadOrNotAtAllLeavesNothing)
{
    {
        tarvik::Pool pool;
        TaskWatcher *launcher = [[[TaskWatcher alloc] init] autorelease];
        NSTask *task = shell("sleep 0.1; exit 6");
        [NSThread detachNewThreadSelector:@selector(launchAndLeave:) toTarget:launcher withObject:task];
        while (![task isRunning])
            std::this_thread::yield();
        [task waitUntilExit];  // its thread, and that thread's run loop, are gone by now
        EXPECT_EQ([task terminationStatus], 6);
    }
    const size_t before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        tarvik::Pool pool;
        [shell("exit 0") launch];
    }
    for (int turn = 0; turn < 200 && (childProcesses() > 0 || openDescriptors() > before); ++turn) {
        tarvik::Pool pool;
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.02]];
    }
    EXPECT_EQ(childProcesses(), 0u);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Task, RunsOnAPseudoTerminal)
{
    NSTask *task = shell("test -t 0 && test -t 1 && stty size </dev/tty >/dev/null && echo terminal");
    ASSERT_TRUE([task usePseudoTerminal]);
    [task launch];
    EXPECT_EQ(*tarvik::bytes([[task standardOutput] availableData]), "terminal\r\n");
    [task waitUntilExit];
    EXPECT_EQ([task terminationStatus], 0);
}

TEST(Pipe, WritingToNobodyRaisesWhateverTheHostsSignals)
{
    signal(SIGPIPE, SIG_DFL);
    NSPipe *pipe = [NSPipe pipe];
    [[pipe fileHandleForReading] closeFile];
    EXPECT_EQ(raised([&] { [[pipe fileHandleForWriting] writeData:tarvik::nsdata("x")]; }), kOperation);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_FALSE(sigismember(&pending, SIGPIPE));
    EXPECT_EQ(raised([&] { [[pipe fileHandleForReading] availableData]; }), kOperation) << "closed";
}

TEST(Pipe, BigDataBothWaysAtOnceThroughAFilter)
{
    std::string data(3 << 20, 'x');
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = char(i * 7 + i / 4096);
    NSPipe *in = [NSPipe pipe], *out = [NSPipe pipe];
    NSTask *task = [[[NSTask alloc] init] autorelease];
    [task setLaunchPath:@"cat"];
    [task setStandardInput:in];
    [task setStandardOutput:out];
    [task launch];
    std::thread writer([&] {
        GSRegisterCurrentThread();
        {
            tarvik::Pool pool;
            [[in fileHandleForWriting] writeData:tarvik::nsdata(data)];
            [[in fileHandleForWriting] closeFile];
        }
        GSUnregisterCurrentThread();
    });
    NSMutableData *all = [NSMutableData dataWithCapacity:0];
    for (NSData *piece;[(piece = [[out fileHandleForReading] availableData]) length] > 0;)
        [all appendData:piece];
    writer.join();
    [task waitUntilExit];
    EXPECT_TRUE(tarvik::bytes(all) == data);
    TemporaryFolder folder;
    const std::string path = folder.write("data", data);
    NSFileHandle *file = [NSFileHandle fileHandleForReadingAtPath:tarvik::nsstring(path)];
    [file seekToFileOffset:1 << 20];
    EXPECT_TRUE(tarvik::bytes([file readDataToEndOfFile]) == data.substr(1 << 20));
    EXPECT_EQ([[file readDataToEndOfFile] length], 0u);
}

TEST(Pipe, EndsAreNotInherited)
{
    NSPipe *pipe = [NSPipe pipe];
    EXPECT_TRUE(fcntl([[pipe fileHandleForReading] fileDescriptor], F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(fcntl([[pipe fileHandleForWriting] fileDescriptor], F_GETFD) & FD_CLOEXEC);
}

}  // namespace
