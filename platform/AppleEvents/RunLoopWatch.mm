#include "platform/AppleEvents/private/Station.h"

#import <Foundation/Foundation.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include <unistd.h>

/// Stands between the run loop and the station.
@interface TarvikAppleEventWatch : NSObject <RunLoopEvents> {
    int descriptor;
}
- (id)initWithDescriptor:(int)watched;
- (void)start;
@end

@implementation TarvikAppleEventWatch

- (id)initWithDescriptor:(int)watched
{
    if ((self = [super init]))
        descriptor = watched;
    return self;
}

// Not while a menu or a drag is tracked: a handler may well put a window in its way.
- (void)start
{
    NSString *const modes[] = {NSDefaultRunLoopMode, @"NSModalPanelRunLoopMode"};
    for (NSString *mode : modes)
        [[NSRunLoop currentRunLoop] addEvent:(void *)(intptr_t)descriptor
                                        type:ET_RDESC
                                     watcher:self
                                     forMode:mode];
}

- (void)receivedEvent:(void *)data type:(RunLoopEventType)type extra:(void *)extra forMode:(NSString *)mode
{
    (void)data, (void)type, (void)extra, (void)mode;
    tarvik::ae::Station::get().serve();
}

@end

extern "C" BOOL GSRegisterCurrentThread(void);
extern "C" void GSUnregisterCurrentThread(void);

namespace tarvik::ae {

void watchInMainRunLoop(int descriptor)
{
    const bool isMain = gettid() == getpid();
    const bool isNew = !isMain && GSRegisterCurrentThread();
    {
        Pool pool;
        attempt([&] {
            // It stays for good: the station does.
            TarvikAppleEventWatch *watch = [[TarvikAppleEventWatch alloc] initWithDescriptor:descriptor];
            if (isMain)
                [watch start];
            else
                [watch performSelectorOnMainThread:@selector(start) withObject:nil waitUntilDone:NO];
        });
    }
    if (isNew)
        GSUnregisterCurrentThread();
}

}  // namespace tarvik::ae
