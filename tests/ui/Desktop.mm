#include "Desktop.h"

#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <utility>

TestWindow::TestWindow(NSRect content)
{
    [NSApplication sharedApplication];
    window_ = [[NSWindow alloc] initWithContentRect:content
                                          styleMask:NSTitledWindowMask
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [window_ setReleasedWhenClosed:NO];
}

TestWindow::~TestWindow()
{
    [window_ close];
    [window_ release];
}

void TestWindow::show() const
{
    [window_ makeKeyAndOrderFront:nil];
    [window_ display];
    eventually([&] { return [window_ isKeyWindow]; });
}

std::string onScreen(NSView *view, NSPoint point)
{
    const NSPoint place = [[view window] convertBaseToScreen:[view convertPoint:point toView:nil]];
    const CGFloat down = NSMaxY([[NSScreen mainScreen] frame]) - place.y;
    return std::to_string(std::lround(place.x)) + " " + std::to_string(std::lround(down));
}

std::string middleOf(NSView *view)
{
    const NSRect bounds = [view bounds];
    return onScreen(view, NSMakePoint(NSMidX(bounds), NSMidY(bounds)));
}

Hand::Hand(const std::string &words)
{
    std::string command = "exec xdotool " + words;
    const char *argv[] = {"sh", "-c", command.c_str(), nullptr};
    if (posix_spawn(&child_, "/bin/sh", nullptr, nullptr, const_cast<char **>(argv), environ))
        child_ = -1;
}

Hand::~Hand()
{
    if (child_ > 0)
        waitpid(child_, nullptr, 0);
}

void putOnClipboard(const std::string &text)
{
    ASSERT_EQ(runProgram({"xclip", "-selection", "clipboard"}, text).status, 0);
    // The clipboard is its background process's, which may only be starting.
    for (int tries = 0; runProgram({"timeout", "20", "xclip", "-selection", "clipboard", "-o"}).out != text;
         ++tries) {
        ASSERT_LT(tries, 200);
        usleep(20000);
    }
}

bool eventually(const std::function<bool()> &condition)
{
    NSDate *end = [NSDate dateWithTimeIntervalSinceNow:40];
    while (!condition()) {
        tarvik::Pool pool;
        NSDate *soon = [NSDate dateWithTimeIntervalSinceNow:0.02];
        if (NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                                untilDate:soon
                                                   inMode:NSDefaultRunLoopMode
                                                  dequeue:YES])
            [NSApp sendEvent:event];
        if ([end timeIntervalSinceNow] < 0)
            return condition();
    }
    return true;
}

@interface LaterCall : NSObject {
@public
    void *mFunction;  // the compiler has no encoding for a std::function
}
@end
@implementation LaterCall
- (void)call:(NSTimer *)timer
{
    (void)timer;
    (*static_cast<std::function<void()> *>(mFunction))();
}
- (void)dealloc
{
    delete static_cast<std::function<void()> *>(mFunction);
    [super dealloc];
}
@end

void later(double seconds, std::function<void()> function)
{
    LaterCall *call = [[[LaterCall alloc] init] autorelease];
    call->mFunction = new std::function<void()>(std::move(function));
    NSTimer *timer = [NSTimer timerWithTimeInterval:seconds
                                             target:call
                                           selector:@selector(call:)
                                           userInfo:nil
                                            repeats:NO];
    for (NSString *mode : {NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode})
        [[NSRunLoop currentRunLoop] addTimer:timer forMode:mode];
}

NSButton *buttonTitled(NSView *view, NSString *title)
{
    if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqual:title])
        return (NSButton *)view;
    for (NSView *each : tarvik::each<NSView>([view subviews]))
        if (NSButton *found = buttonTitled(each, title))
            return found;
    return nil;
}

void pressWhenShown(NSString *title)
{
    later(0.05, [title] {
        NSButton *button = buttonTitled([[[NSApp modalWindow] contentView] superview], title);
        if (!button)
            return pressWhenShown(title);
        [button performClick:nil];
        // A modal loop looks whether it is to end when an event has come.
        [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:0
                                             context:nil
                                             subtype:0
                                               data1:0
                                               data2:0]
                 atStart:NO];
    });
}
