// A display that goes away: its server ended, or the network between. Xlib then ends the process by exit(), and what an application had
// set in its user defaults was lost.
//
// Here the user defaults are written, and then the process ends, however long its tidying hangs. What else the application registered
// for its exit is done as ever; where that fails, see ExitFailures.mm.
#import <Foundation/Foundation.h>

#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include "platform/AppKit/private/Launch.h"

#include <X11/Xlib.h>

#include <csignal>
#include <unistd.h>

namespace {

constexpr unsigned kPatience = 10;  // seconds until a process that hangs in its tidying is ended

XIOErrorHandler before;

/// Xlib calls it once, and ends the process when it returns.
int displayIsGone(Display *display)
{
    std::signal(SIGALRM, SIG_DFL);
    alarm(kPatience);
    {
        tarvik::Pool pool;
        tarvik::attempt([] { [[NSUserDefaults standardUserDefaults] synchronize]; });
    }
    return before ? before(display) : 0;
}

const tarvik::AtLaunch watched([] {
    if (!before)
        before = XSetIOErrorHandler(displayIsGone);
});

}  // namespace
