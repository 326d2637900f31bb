// AppKit forgets a request to end (a SIGTERM too, which it takes from early on) that comes before its event loop runs: the application
// started on and stayed. Here such a request is carried out as soon as the application has been launched.
#import <AppKit/NSApplication.h>
#import <Foundation/Foundation.h>

#include "platform/Foundation/private/HiddenMethod.h"

#import <Tarvik/support/Pool.h>

namespace {
bool isLaunched = false, endsWhenLaunched = false;
}

@implementation NSApplication (Ending)

- (void)terminate:(id)sender
{
    static const auto terminate = tarvik::hiddenMethod<void (*)(id, SEL, id)>([NSApplication class], _cmd);
    if (isLaunched || [self isRunning])
        terminate(self, _cmd, sender);
    else
        endsWhenLaunched = true;
}

@end

@interface LaunchWatcher : NSObject
@end

@implementation LaunchWatcher

+ (void)load
{
    tarvik::Pool pool;
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationIsLaunched:)
                                                 name:NSApplicationDidFinishLaunchingNotification
                                               object:nil];
}

+ (void)applicationIsLaunched:(NSNotification *)notification
{
    (void)notification;
    isLaunched = true;
    if (endsWhenLaunched)
        [NSApp performSelector:@selector(terminate:) withObject:nil afterDelay:0];
}

@end
