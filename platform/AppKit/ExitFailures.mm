// A failure on the way out. When a process exits, gnustep-base tidies up: ports, locks, the files of user defaults. Another that was
// killed at the wrong moment leaves a lock behind, and the tidying fails. AppKit showed that in a panel and waited for an answer to it,
// in a process without an event loop, or the process aborted.
//
// Here the failure is written to the standard error, and the process ends with the status that it was to end with.
#import <AppKit/NSApplication.h>
#import <Foundation/Foundation.h>

#import <Tarvik/support/Pool.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

int exitStatus;

void endAtOnce(NSException *exception)
{
    NSString *reason = [exception reason];
    std::fprintf(stderr, "%s, while the process was ending\n", reason ? [reason UTF8String] : "An exception");
    std::fflush(nullptr);
    _exit(exitStatus);
}

}  // namespace

@interface ExitFailures : NSObject
@end

@implementation ExitFailures

+ (void)load
{
    tarvik::Pool pool;
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationStarts:)
                                                 name:NSApplicationWillFinishLaunchingNotification
                                               object:nil];
}

// What is registered last runs first: by now gnustep-base has registered what tidies up.
+ (void)applicationStarts:(NSNotification *)notification
{
    (void)notification;
    static const int registered = on_exit(
        [](int status, void *) {
            exitStatus = status;
            NSSetUncaughtExceptionHandler(endAtOnce);
        },
        nullptr);
    (void)registered;
}

@end
