// NSTask on children of our own.
//
// What is wrong with gnustep-base's (1.28), each found by running it:
// - waitUntilExit polls the child every tenth of a second: 99 ms for /bin/true;
// - the child is forked, so a host with a big heap pays for copying its page tables on every launch;
// - terminate marks the task as ended before the child is: isRunning answers NO, waitUntilExit returns at
// once, the
//   status is 0, and a child that ignores the signal is forgotten as a zombie;
// - a child that somebody else collects makes waitUntilExit wait for ever, and it collects other people's
// itself;
// - an empty launch path names the first folder of PATH, which is "launched", and a missing working folder is
// ignored.
//
// NSTask is a class cluster: +[NSTask allocWithZone:] chooses the concrete class. From the moment this
// library is loaded it chooses the one below, so a host writes [[NSTask alloc] init] as ever, and a subclass
// of NSTask is left alone.

#import <Foundation/Foundation.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <objc/runtime.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ChildProcess.h"
#include "ToolPath.h"
#include "private/HiddenMethod.h"

using tarvik::platform::ChildProcess;
using tarvik::hiddenMethod;
using tarvik::platform::SpawnPlan;

/// A running task is watched by the run loop of the thread that launched it, which posts its notification.
/// Run loops don't own their watchers, so the thread does (kRunning in its dictionary): a running task stays
/// alive though its launcher lets go of it, until its end is seen or its thread is no more.
@interface SpawnedTask : NSTask <RunLoopEvents> {
    ChildProcess *mChild;  // once launched
    NSThread *mThread;     // that launched it; not retained: the thread owns the task
    NSString *mTerminal;   // the child's side of the pseudo-terminal, when one is used
}
@end

// What the abstract class keeps to itself.
@interface NSTask (ConcreteParts)
- (NSString *)validatedLaunchPath;
@end

namespace {

NSString *const kRunning = @"NSTask running";

[[noreturn]] void refuse(NSString *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    NSString *reason = [[[NSString alloc] initWithFormat:format arguments:arguments] autorelease];
    va_end(arguments);
    [[NSException exceptionWithName:NSInvalidArgumentException reason:reason userInfo:nil] raise];
    abort();
}

/// The modes in which a host waits: nothing else runs in a private mode of somebody's own.
NSArray *watchModes()
{
    static NSArray *modes = [[NSArray alloc]
        initWithObjects:NSDefaultRunLoopMode, @"NSModalPanelRunLoopMode", @"NSEventTrackingRunLoopMode", nil];
    return modes;
}

void *eventOf(int descriptor) { return reinterpret_cast<void *>(static_cast<intptr_t>(descriptor)); }

bool isProgram(const char *path)
{
    struct stat status;
    return stat(path, &status) == 0 && S_ISREG(status.st_mode) && access(path, X_OK) == 0;
}

/// Text as a program takes it: UTF-8 that ends at the first zero byte, so it can't hold one.
std::string word(id object)
{
    auto text = tarvik::utf8([object description]);
    if (!text || text->find('\0') != std::string::npos)
        refuse(@"NSTask - (%@) can't be passed to a program", object);
    return *std::move(text);
}

/// The descriptor behind a standard stream as NSTask takes it: a handle, or a pipe, whose end for the child
/// goes into `ends` to be closed here once the child has it.
int streamDescriptor(id stream, SEL end, NSMutableSet *ends)
{
    if (!stream)
        return -1;
    NSFileHandle *handle = stream;
    if ([stream isKindOfClass:[NSPipe class]]) {
        handle = [stream performSelector:end];
        [ends addObject:handle];
    }
    int descriptor = [handle fileDescriptor];
    if (descriptor < 0)
        refuse(@"NSTask - a standard stream is closed");
    return descriptor;
}

}  // namespace

@implementation SpawnedTask

- (void)dealloc
{
    delete mChild;
    [mTerminal release];
    [super dealloc];
}

// ---- The child's end

- (void)watch:(NSArray *)modes
{
    if (mChild->descriptor() < 0)
        return;
    NSRunLoop *loop = [NSRunLoop currentRunLoop];
    for (NSString *mode : tarvik::each<NSString>(modes))
        [loop addEvent:eventOf(mChild->descriptor()) type:ET_RDESC watcher:self forMode:mode];
}

- (void)unwatch:(NSArray *)modes
{
    if (mChild->descriptor() < 0)
        return;
    NSRunLoop *loop = [NSRunLoop currentRunLoop];
    for (NSString *mode : tarvik::each<NSString>(modes))
        [loop removeEvent:eventOf(mChild->descriptor()) type:ET_RDESC forMode:mode all:YES];
}

/// On the launching thread, after the end: the one notification.
- (void)notice
{
    if (_hasNotified)
        return;
    _hasNotified = YES;
    [[self retain] autorelease];
    [self unwatch:watchModes()];
    [[[mThread threadDictionary] objectForKey:kRunning] removeObject:self];
    [[NSNotificationCenter defaultCenter] postNotificationName:NSTaskDidTerminateNotification object:self];
}

/// A host that never runs its loop nor waits lets ended tasks pile up: the next launch notices them.
+ (void)noticeEnded
{
    NSArray *running = [[[[NSThread currentThread] threadDictionary] objectForKey:kRunning] allObjects];
    for (SpawnedTask *task : tarvik::each<SpawnedTask>(running)) {
        if (![task isRunning])
            [task notice];
    }
}

- (void)receivedEvent:(void *)data type:(RunLoopEventType)type extra:(void *)extra forMode:(NSString *)mode
{
    (void)data, (void)type, (void)extra, (void)mode;
    if (mThread == [NSThread currentThread] && ![self isRunning])
        [self notice];
}

- (BOOL)isRunning
{
    return mChild && !mChild->exit();
}

- (void)waitUntilExit
{
    if (!mChild)
        return;
    bool launcher = mThread == [NSThread currentThread];
    if ([self isRunning]) {
        NSArray *mode = [NSArray arrayWithObject:NSDefaultRunLoopMode];
        if (mChild->descriptor() < 0) {
            mChild->wait();
        } else {
            // The caller's run loop turns meanwhile, as hosts that read in the background count on; the
            // child's end is one of its events.
            if (!launcher)
                [self watch:mode];
            NSRunLoop *loop = [NSRunLoop currentRunLoop];
            NSDate *never = [NSDate distantFuture];
            while ([self isRunning]) {
                tarvik::Pool pool;
                [loop runMode:NSDefaultRunLoopMode beforeDate:never];
            }
            if (!launcher)
                [self unwatch:mode];
        }
    }
    if (launcher)
        [self notice];
}

- (ChildProcess::Exit)ended
{
    if (!mChild)
        refuse(@"NSTask - task has not yet launched");
    auto ended = mChild->exit();
    if (!ended)
        refuse(@"NSTask - task has not yet terminated");
    return *ended;
}

- (int)terminationStatus
{
    return [self ended].status;
}

- (NSTaskTerminationReason)terminationReason
{
    return [self ended].bySignal ? NSTaskTerminationReasonUncaughtSignal : NSTaskTerminationReasonExit;
}

- (int)processIdentifier
{
    return mChild ? mChild->pid() : 0;
}

// ---- Launching

- (NSString *)validatedLaunchPath
{
    if (!_launchPath)
        refuse(@"NSTask - no launch path set");
    if ([_launchPath length] == 0)
        return nil;
    if ([_launchPath isAbsolutePath]) {
        if (isProgram([_launchPath fileSystemRepresentation]))
            return _launchPath;
        return tarvik::platform::standInTool(_launchPath);
    }
    NSString *found = [super validatedLaunchPath];  // a bare name is looked up in PATH
    return found && isProgram([found fileSystemRepresentation]) ? found : nil;
}

- (void)launch
{
    if (_hasLaunched)
        refuse(@"NSTask - task has already been launched");
    NSString *path = [self validatedLaunchPath];
    if (!path)
        refuse(@"NSTask - launch path (%@) not valid", _launchPath);

    SpawnPlan plan;
    plan.path = [path fileSystemRepresentation];
    for (NSObject *argument : tarvik::each(_arguments))
        plan.arguments.push_back(word(argument));
    if (_environment) {
        plan.environment.emplace();
        for (NSObject *name : tarvik::each([_environment allKeys]))
            plan.environment->push_back(word(name) + '=' + word([_environment objectForKey:name]));
    }
    if (_currentDirectoryPath) {
        plan.folder = [_currentDirectoryPath fileSystemRepresentation];
        struct stat status;
        if (stat(plan.folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            refuse(@"NSTask - working folder (%@) not valid", _currentDirectoryPath);
    }
    NSMutableSet *ends = [NSMutableSet set];
    if (mTerminal) {
        plan.terminal = [mTerminal fileSystemRepresentation];
    } else {
        plan.streams[0] = streamDescriptor(_standardInput, @selector(fileHandleForReading), ends);
        plan.streams[1] = streamDescriptor(_standardOutput, @selector(fileHandleForWriting), ends);
        plan.streams[2] = streamDescriptor(_standardError, @selector(fileHandleForWriting), ends);
    }

    [SpawnedTask noticeEnded];
    auto child = std::make_unique<ChildProcess>();
    if (int failed = child->spawn(plan))
        refuse(@"NSTask - could not launch (%@): %s", path, strerror(failed));
    mThread = [NSThread currentThread];
    mChild = child.release();
    _hasLaunched = YES;
    for (NSFileHandle *end : tarvik::each<NSFileHandle>([ends allObjects]))
        [end closeFile];  // or the host would never see the stream's end
    [self watch:watchModes()];
    NSMutableDictionary *thread = [mThread threadDictionary];
    NSMutableSet *running = [thread objectForKey:kRunning];
    if (!running) {
        running = [NSMutableSet set];
        [thread setObject:running forKey:kRunning];
    }
    [running addObject:self];
}

- (BOOL)usePseudoTerminal
{
    if (mTerminal)
        return YES;
    int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    char slave[64];
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, slave, sizeof slave) != 0) {
        if (master >= 0)
            close(master);
        return NO;
    }
    NSFileHandle *handle = [[[NSFileHandle alloc] initWithFileDescriptor:master
                                                          closeOnDealloc:YES] autorelease];
    [self setStandardInput:handle];
    [self setStandardOutput:handle];
    [self setStandardError:handle];
    mTerminal = [[NSString alloc] initWithUTF8String:slave];
    return YES;
}

// ---- Signals, to the task and its own children

- (BOOL)signal:(int)number
{
    if (!mChild)
        refuse(@"NSTask - task has not yet launched");
    return mChild->signal(number);
}

- (void)interrupt
{
    [self signal:SIGINT];
}
- (void)terminate
{
    [self signal:SIGTERM];
}
- (BOOL)suspend
{
    return [self signal:SIGSTOP];
}
- (BOOL)resume
{
    return [self signal:SIGCONT];
}

@end

@interface NSTask (ConcreteClass)
@end

@implementation NSTask (ConcreteClass)

// The class's own start-up puts a handler on SIGCHLD, over the host's. It makes every later turn of a run
// loop collect whatever child of the process has ended, with waitpid(-1): ours, and those that a host waits
// for itself.
+ (void)initialize
{
    if (self != [NSTask class])
        return;
    struct sigaction hosts;
    sigaction(SIGCHLD, nullptr, &hosts);
    hiddenMethod<void (*)(Class, SEL)>(object_getClass(self), _cmd)(self, _cmd);
    sigaction(SIGCHLD, &hosts, nullptr);
}

+ (id)allocWithZone:(NSZone *)zone
{
    return NSAllocateObject(self == [NSTask class] ? [SpawnedTask class] : self, 0, zone);
}

@end
