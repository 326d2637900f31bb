// gnustep-back queues an event when it has handled it. For some it needs another process first: for the first button press of a process
// the notification daemon, for the first drag that comes in the pasteboard's, each often still to be started. It waits for the answer in
// a run loop that reads the display too, and what came meanwhile was queued before: a release before its press, so that the view that
// was pressed waited for a release for good, or a drag's movement before its entry, so that no view accepted it.
//
// Here the display's events stay where they are while one of them is being handled, but for loops within that ask for events (a panel
// that a resize opens, say).
#import <Foundation/NSRunLoop.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include "platform/AppKit/private/Launch.h"
#include "platform/Foundation/private/ReplacedMethod.h"

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

const tarvik::AtLaunch ordered([] {
    Class server = [GSCurrentServer() class];
    if (receive || ![server instancesRespondToSelector:@selector(receivedEvent:type:extra:forMode:)])
        return;
    const auto method = [server](SEL name) { return class_getInstanceMethod(server, name); };
    receive = tarvik::replacedMethod(method(@selector(receivedEvent:type:extra:forMode:)), &receiveInOrder);
    next = tarvik::replacedMethod(method(@selector(getEventMatchingMask:beforeDate:inMode:dequeue:)),
                                  &nextInOrder);
});

}  // namespace
