// A failure on the way out. When a process exits, gnustep-base tidies up: ports, locks, the files of user defaults. Another that was
// killed at the wrong moment leaves a lock behind, and the tidying fails. AppKit showed that in a panel and waited for an answer to it,
// in a process without an event loop, or the process aborted.
//
// Here the failure is written to the standard error, and the process ends with the status that it was to end with.
#import <Foundation/Foundation.h>

#include "platform/AppKit/private/Launch.h"

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

// What is registered last runs first: by now gnustep-base has registered what tidies up.
const tarvik::AtLaunch prepared([] {
    static const int registered = on_exit(
        [](int status, void *) {
            exitStatus = status;
            NSSetUncaughtExceptionHandler(endAtOnce);
        },
        nullptr);
    (void)registered;
});

}  // namespace
