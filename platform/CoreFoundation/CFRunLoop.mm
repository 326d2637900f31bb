#include "platform/CoreFoundation/private/Bridging.h"

#include <CoreFoundation/CFRunLoop.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <map>
#include <mutex>

using namespace tarvik;
using namespace tarvik::cf;

/// An event of this thread's loop that comes at once. What a timer calls doesn't end the loop's turn, an event does.
@interface OneEvent : NSObject <RunLoopEvents>
+ (void)raise;
@end

@implementation OneEvent

+ (void)raise
{
    NSString *mode = [[NSRunLoop currentRunLoop] currentMode];
    const int descriptor = mode ? eventfd(1, EFD_CLOEXEC) : -1;  // without a mode the loop isn't running
    if (descriptor < 0)
        return;
    OneEvent *event = [[OneEvent alloc] init];  // until it is received
    [[NSRunLoop currentRunLoop] addEvent:reinterpret_cast<void *>(intptr_t(descriptor))
                                    type:ET_RDESC
                                 watcher:event
                                 forMode:mode];
}

- (void)receivedEvent:(void *)data type:(RunLoopEventType)type extra:(void *)extra forMode:(NSString *)mode
{
    (void)extra;
    [[NSRunLoop currentRunLoop] removeEvent:data type:type forMode:mode all:YES];
    close(int(reinterpret_cast<intptr_t>(data)));
    [self autorelease];
}

@end

namespace {

/// What NSRunLoop doesn't know of itself: its thread, and that it is to stop. Loops are never forgotten: threads with one are few.
struct Loop {
    NSThread *thread = nil;
    bool isStopped = false;
};
std::mutex gMutex;
std::map<CFRunLoopRef, Loop> &loops()
{
    static auto *known = new std::map<CFRunLoopRef, Loop>;
    return *known;
}

CFRunLoopRef refOf(NSRunLoop *loop) { return reinterpret_cast<CFRunLoopRef>(loop); }

CFRunLoopRef known(NSRunLoop *loop, NSThread *thread)
{
    const std::lock_guard lock(gMutex);
    Loop &entry = loops()[refOf(loop)];
    if (entry.thread != thread) {  // a new loop where an old one was
        [entry.thread release];
        entry = {[thread retain], false};
    }
    return refOf(loop);
}

bool takeStop(CFRunLoopRef loop)
{
    const std::lock_guard lock(gMutex);
    return std::exchange(loops()[loop].isStopped, false);
}

SInt32 run(NSString *mode, NSDate *limit, bool returnsAfterSource)
{
    const CFRunLoopRef loop = CFRunLoopGetCurrent();
    for (;;) {
        Pool pool;
        if (takeStop(loop))
            return kCFRunLoopRunStopped;
        const BOOL ran = [[NSRunLoop currentRunLoop] runMode:mode beforeDate:limit];
        if (takeStop(loop))
            return kCFRunLoopRunStopped;
        if (!ran)
            return kCFRunLoopRunFinished;
        if ([limit timeIntervalSinceNow] <= 0)
            return kCFRunLoopRunTimedOut;
        if (returnsAfterSource)
            return kCFRunLoopRunHandledSource;
    }
}

}  // namespace

const CFStringRef kCFRunLoopDefaultMode = CFStringRef(NSDefaultRunLoopMode);

CFRunLoopRef CFRunLoopGetCurrent(void)
{
    Pool pool;
    return known([NSRunLoop currentRunLoop], [NSThread currentThread]);
}

CFRunLoopRef CFRunLoopGetMain(void)
{
    Pool pool;
    return known([NSRunLoop mainRunLoop], [NSThread mainThread]);
}

void CFRunLoopRun(void)
{
    perform([] {
        while (run(NSDefaultRunLoopMode, [NSDate distantFuture], false) == kCFRunLoopRunTimedOut)
            ;
    });
}

SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled)
{
    return answer<SInt32>(kCFRunLoopRunFinished, [&] {
        return run(mode ? ns(mode) : NSDefaultRunLoopMode, [NSDate dateWithTimeIntervalSinceNow:seconds],
                   returnAfterSourceHandled != 0);
    });
}

void CFRunLoopStop(CFRunLoopRef loop)
{
    if (!loop)
        return;
    {
        const std::lock_guard lock(gMutex);
        loops()[loop].isStopped = true;
    }
    CFRunLoopWakeUp(loop);
}

void CFRunLoopWakeUp(CFRunLoopRef loop)
{
    perform([&] {
        NSThread *thread;
        {
            const std::lock_guard lock(gMutex);
            const auto entry = loops().find(loop);
            thread = entry == loops().end() ? nil : [[entry->second.thread retain] autorelease];
        }
        if (thread == [NSThread currentThread])
            [OneEvent raise];
        else if (thread)
            [[[NSObject new] autorelease] performSelector:@selector(self)
                                                 onThread:thread
                                               withObject:nil
                                            waitUntilDone:NO];
    });
}
