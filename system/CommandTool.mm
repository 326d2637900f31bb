#include <Tarvik/core/Guard.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/system/CommandTool.h>
#import <system/private/StreamDrain.h>

#include <atomic>
#include <utility>

NSString *const CommandToolDidRunNotification = @"CommandToolDidRunNotification";

namespace {

constexpr NSTimeInterval kCheckInterval = 0.2;
constexpr unsigned long kRunLine = 220;  // the line that the log names, wherever the code has moved

// One byte tells the thread of a run and the thread that watches it of the end, and with it of all that the
// run has left behind.
void publish(BOOL &flag, BOOL value) { std::atomic_ref(flag).store(value, std::memory_order_release); }
BOOL published(BOOL &flag) { return std::atomic_ref(flag).load(std::memory_order_acquire); }

/// Takes a piece from `source`, a handle or a drain, into `all`. Nil when there is none left, or the reading
/// failed.
NSData *read(id source, NSMutableData *all)
{
    NSData *piece = nil;
    tarvik::attempt([&] { piece = [source availableData]; });
    if ([piece length] == 0)
        return nil;
    [all appendData:piece];
    return piece;
}

/// A stream that is drained for a scope, however that is left.
class Drained {
public:
    explicit Drained(NSFileHandle *stream) : drain_([StreamDrain drainWithHandle:stream]) {}
    ~Drained() { [drain_ stop]; }
    Drained(const Drained &) = delete;
    Drained &operator=(const Drained &) = delete;
    StreamDrain *get() const { return drain_; }

private:
    StreamDrain *const drain_;  // the pool's
};

}  // namespace

@interface CommandTool (Run)
- (void)setTask:(NSTask *)task;
- (void)runTool;
- (void)readOutput:(id)output error:(id)error;
@end

@implementation CommandTool

+ (id)commandToolWithPath:(NSString *)path
{
    return [[[self alloc] initWithPath:path] autorelease];
}

- (id)initWithPath:(NSString *)path
{
    if (!(self = [super init]))
        return nil;
    if (!path) {
        [self release];
        return nil;
    }
    mToolPath = [path retain];
    return self;
}

- (id)init
{
    return [self initWithPath:@""];
}

- (void)dealloc
{
    [mTask terminate];
    [mRunCheckTimer invalidate];
    [std::exchange(mRunCheckTimer, nil) release];
    [std::exchange(mOutData, nil) release];
    [std::exchange(mErrData, nil) release];
    [std::exchange(mInData, nil) release];
    [std::exchange(mArgs, nil) release];
    [std::exchange(mToolPath, nil) release];
    [std::exchange(mTask, nil) release];
    [super dealloc];
}

// ---- Settings

- (id)delegate
{
    return mDelegate;
}
- (void)setDelegate:(id)delegate
{
    mDelegate = delegate;
}

- (NSString *)executePath
{
    return mToolPath;
}

- (void)setExecutePath:(NSString *)path
{
    [path retain];
    [std::exchange(mToolPath, path) release];
}

- (void)setArguments:(NSArray *)arguments
{
    if (!arguments)
        return;
    [arguments retain];
    [std::exchange(mArgs, arguments) release];
}

- (void)setInputData:(NSData *)data
{
    if (!data)
        return;
    [data retain];
    [std::exchange(mInData, data) release];
}

- (void)setReadStandardOutput:(BOOL)flag
{
    if (!flag) {
        [std::exchange(mOutData, nil) release];
    } else if (!mOutData) {
        mOutData = [[NSMutableData alloc] initWithCapacity:0];
        if (!mOutData)
            NSLog(@"CommandTool: Sorry, I coldn't make Data for StandardOutput.");
    }
}

- (void)setReadStandardError:(BOOL)flag
{
    if (!flag) {
        [std::exchange(mErrData, nil) release];
    } else if (!mErrData) {
        mErrData = [[NSMutableData alloc] initWithCapacity:0];
        if (!mErrData)
            NSLog(@"CommandTool: Sorry, I coldn't make Data for StandardError.");
    }
}

// ---- Results

- (BOOL)succeeded
{
    return mSucceeded;
}
- (NSMutableData *)standardOutputData
{
    return mOutData;
}
- (NSMutableData *)standardErrorData
{
    return mErrData;
}

// ---- Running

- (BOOL)run:(BOOL)inBackground
{
    if (published(mRunning))
        return NO;
    publish(mRunning, YES);
    [mOutData setLength:0];
    [mErrData setLength:0];
    mSucceeded = NO;
    if (!inBackground) {
        [self runCore:nil];
        return [self succeeded];
    }
    mRunCheckTimer = [[NSTimer scheduledTimerWithTimeInterval:kCheckInterval
                                                       target:self
                                                     selector:@selector(commandToolDidRunCheckTimer:)
                                                     userInfo:nil
                                                      repeats:YES] retain];
    [NSThread detachNewThreadSelector:@selector(runCore:) toTarget:self withObject:nil];
    return YES;
}

- (void)commandToolDidRunCheckTimer:(NSTimer *)timer
{
    if (published(mRunning))
        return;
    [[self retain] autorelease];  // the timer may be the last to hold it
    // Taken out first: an observer may start the next run, which has a timer of its own.
    NSTimer *const watch = std::exchange(mRunCheckTimer, nil);
    [[NSNotificationCenter defaultCenter] postNotificationName:CommandToolDidRunNotification object:self];
    [timer invalidate];
    [watch release];
}

- (void)kill
{
    NSTask *task = nil;
    @synchronized(self) {
        task = [[mTask retain] autorelease];
    }
    // A task that is not launched yet raises: nothing to end then.
    tarvik::attempt([task] { [task terminate]; });
}

- (void)runCore:(id)unused
{
    (void)unused;
    tarvik::guarded("-[CommandTool runCore:]", kRunLine, [self] { [self runTool]; });
    [self setTask:nil];
    publish(mRunning, NO);
}

@end

@implementation CommandTool (Run)

// `kill` takes the task from another thread.
- (void)setTask:(NSTask *)task
{
    @synchronized(self) {
        [std::exchange(mTask, task) release];
    }
}

// An exception leaves from here with its pool still in place: what it carries lives in that pool, and is
// still to be logged. The pool, and the pipes in it, go with the enclosing pool.
- (void)runTool
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    if (!pool)
        return;
    [self setTask:[[NSTask alloc] init]];
    NSPipe *input = mInData ? [NSPipe pipe] : nil;
    NSPipe *output = mOutData ? [NSPipe pipe] : nil;
    NSPipe *error = mErrData ? [NSPipe pipe] : nil;
    if (mTask && !input == !mInData && !output == !mOutData && !error == !mErrData) {
        if (input)
            [mTask setStandardInput:input];
        if (output)
            [mTask setStandardOutput:output];
        if (error)
            [mTask setStandardError:error];
        [mTask setLaunchPath:mToolPath];
        if (mArgs)
            [mTask setArguments:mArgs];
        [mTask launch];
        if (input) {
            [[input fileHandleForWriting] writeData:mInData];
            [[input fileHandleForWriting] closeFile];
        }
        NSFileHandle *fromOutput = [output fileHandleForReading], *fromError = [error fileHandleForReading];
        if (output && error)
            [self readOutput:Drained(fromOutput).get() error:Drained(fromError).get()];
        else
            [self readOutput:fromOutput error:fromError];
        [mTask waitUntilExit];
        mSucceeded = YES;
    }
    [self setTask:nil];
    [pool drain];
}

// Standard output alone decides that the reading may end; what standard error has only keeps it going.
- (void)readOutput:(id)output error:(id)error
{
    for (BOOL more = YES; more;) {
        NSAutoreleasePool *pass = [[NSAutoreleasePool alloc] init];
        more = NO;
        if (output) {
            if (NSData *piece = read(output, mOutData)) {
                // Asked for each piece: a delegate that is taken away meanwhile ends nothing.
                if ([mDelegate respondsToSelector:@selector(commandTool:readStandardOutputData:)] &&
                    ![mDelegate commandTool:self readStandardOutputData:piece])
                    return [pass drain];
                more = YES;
            }
        }
        if (error) {
            if (NSData *piece = read(error, mErrData)) {
                if ([mDelegate respondsToSelector:@selector(commandTool:readStandardErrorData:)] &&
                    ![mDelegate commandTool:self readStandardErrorData:piece])
                    return [pass drain];
                more = YES;
            }
        }
        [pass drain];
    }
}

@end
