// A display that goes away: its server ended, or the network between. Xlib then ends the process by exit(). On the way out gnustep-base
// tidies up; where that fails, AppKit shows the failure in a panel, on the display that isn't there, and Xlib tries for ever to send it:
// applications stayed behind that took half a processor each. And what an application had set in its user defaults was lost.
//
// Here the user defaults are written, and then the process ends, whatever its tidying meets. What else the application registered for
// its exit is done as ever.
#import <AppKit/NSApplication.h>
#import <Foundation/Foundation.h>

#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <unistd.h>

namespace {

constexpr unsigned kPatience = 10;  // seconds until a process that hangs in its tidying is ended

void endAtOnce(NSException *exception)
{
    std::fprintf(stderr, "%s, at the end without a display\n", [[exception reason] UTF8String]);
    _exit(1);
}

using Handler = int (*)(void *display);
Handler before;

/// Xlib calls it once, and ends the process when it returns.
int displayIsGone(void *display)
{
    std::signal(SIGALRM, SIG_DFL);
    alarm(kPatience);
    NSSetUncaughtExceptionHandler(endAtOnce);
    {
        tarvik::Pool pool;
        tarvik::attempt([] { [[NSUserDefaults standardUserDefaults] synchronize]; });
    }
    return before ? before(display) : 0;
}

}  // namespace

@interface DisplayLoss : NSObject
@end

@implementation DisplayLoss

+ (void)load
{
    tarvik::Pool pool;
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationStarts:)
                                                 name:NSApplicationWillFinishLaunchingNotification
                                               object:nil];
}

// By now AppKit has loaded Xlib, if that is what it draws with.
+ (void)applicationStarts:(NSNotification *)notification
{
    (void)notification;
    void *xlib = dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
    if (auto install =
            reinterpret_cast<Handler (*)(Handler)>(xlib ? dlsym(xlib, "XSetIOErrorHandler") : nullptr))
        before = install(displayIsGone);
}

@end
