// gnustep-back queues an event when it has handled it. For some it needs another process first: for the first button press of a process
// the notification daemon, for the first drag that comes in the pasteboard's, each often still to be started. It waits for the answer in
// a run loop that reads the display too, and what came meanwhile was queued before: a release before its press, so that the view that
// was pressed waited for a release for good, or a drag's movement before its entry, so that no view accepted it.
//
// Here the display's events stay where they are while one of them is being handled, but for loops within that ask for events (a panel
// that a resize opens, say).
#import <AppKit/NSApplication.h>
#import <Foundation/NSNotification.h>
#import <Foundation/NSRunLoop.h>
#import <GNUstepGUI/GSDisplayServer.h>
#import <Tarvik/support/Pool.h>

#include <bit>
#include <objc/runtime.h>
#include <utility>

namespace {

using Receive = void (*)(id, SEL, void *data, RunLoopEventType type, void *extra, NSString *mode);
using Next = NSEvent *(*)(id, SEL, NSUInteger mask, NSDate *limit, NSString *mode, BOOL dequeue);
Receive receive;
Next next;
bool isHandling = false;  // the main thread's

/// Says for a scope whether an event is being handled.
class Handling {
public:
    explicit Handling(bool is) : before_(std::exchange(isHandling, is)) {}
    ~Handling() { isHandling = before_; }
    Handling(const Handling &) = delete;
    Handling &operator=(const Handling &) = delete;

private:
    const bool before_;
};

void receiveInOrder(id server, SEL command, void *data, RunLoopEventType type, void *extra, NSString *mode)
{
    if (isHandling)
        return;
    const Handling handling(true);
    receive(server, command, data, type, extra, mode);
}

NSEvent *nextInOrder(id server, SEL command, NSUInteger mask, NSDate *limit, NSString *mode, BOOL dequeue)
{
    const Handling handling(false);
    return next(server, command, mask, limit, mode, dequeue);
}

template <class Function>
Function replace(Class type, SEL name, Function ours)
{
    return std::bit_cast<Function>(
        method_setImplementation(class_getInstanceMethod(type, name), std::bit_cast<IMP>(ours)));
}

}  // namespace

@interface EventOrder : NSObject
@end

@implementation EventOrder

+ (void)load
{
    tarvik::Pool pool;
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationStarts:)
                                                 name:NSApplicationWillFinishLaunchingNotification
                                               object:nil];
}

// By now AppKit has loaded what it draws with.
+ (void)applicationStarts:(NSNotification *)notification
{
    (void)notification;
    Class server = [GSCurrentServer() class];
    if (receive || ![server instancesRespondToSelector:@selector(receivedEvent:type:extra:forMode:)])
        return;
    receive = replace(server, @selector(receivedEvent:type:extra:forMode:), &receiveInOrder);
    next = replace(server, @selector(getEventMatchingMask:beforeDate:inMode:dequeue:), &nextInOrder);
}

@end
