// gnustep-back looks up its mouse options while it handles a process's first button press, before it has queued the press. For that it
// asks the notification daemon, and often starts it, and waits for the answer in a run loop that reads the display too. A release that
// came meanwhile was queued before its press: the click went to nobody, and the view that was pressed waited for a release for good.
//
// Here the display's events are left where they are while one of them is being handled and the run loop waits for another process's
// answer. Other loops within (a panel that a resize opens, say) read them as ever.
#import <AppKit/NSApplication.h>
#import <Foundation/NSConnection.h>
#import <Foundation/NSNotification.h>
#import <Foundation/NSRunLoop.h>
#import <GNUstepGUI/GSDisplayServer.h>
#import <Tarvik/support/Pool.h>

#include <bit>
#include <objc/runtime.h>

namespace {

using Received = void (*)(id, SEL, void *data, RunLoopEventType type, void *extra, NSString *mode);
Received original;
int depth = 0;  // the main thread's

void received(id server, SEL command, void *data, RunLoopEventType type, void *extra, NSString *mode)
{
    if (depth > 0 && [mode isEqual:NSConnectionReplyMode])
        return;
    struct Level {
        Level() { ++depth; }
        ~Level() { --depth; }
    } level;
    original(server, command, data, type, extra, mode);
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
    Method method =
        class_getInstanceMethod([GSCurrentServer() class], @selector(receivedEvent:type:extra:forMode:));
    if (method && !original)
        original = std::bit_cast<Received>(method_setImplementation(method, std::bit_cast<IMP>(&received)));
}

@end
