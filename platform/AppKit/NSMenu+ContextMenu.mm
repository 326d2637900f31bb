// gnustep-gui shows such a menu around the mouse, and not where the event is, below a button say. Its menus end with the first release
// of the mouse, so that a click on what opens one only makes it flash. Here a click leaves the menu open for the next one, and a press
// that is held, dragged and released on an item chooses it as before.
#import <AppKit/AppKit.h>

#include "platform/Foundation/private/ReplacedMethod.h"

#include <algorithm>
#include <cmath>
#include <optional>

@interface SentActions : NSObject {
@public
    bool mAny;
}
@end
@implementation SentActions
- (void)sent:(NSNotification *)notification
{
    (void)notification;
    mAny = true;
}
@end

namespace {

using PopUp = void (*)(id, SEL, NSMenu *, NSEvent *, NSView *);
PopUp original = nullptr;
void (*showTransient)(id, SEL) = nullptr;

/// The menu that is popped up, not its submenus, and its corner on the screen.
struct Popped {
    NSMenu *menu;
    NSPoint corner;
};
std::optional<Popped> gPopped;

constexpr NSTimeInterval kClick = 0.35;
constexpr CGFloat kStill = 4;

/// The menu's top left corner at the event's place, as far as the screen allows.
void displayTransient(NSMenu *self, SEL command)
{
    showTransient(self, command);
    NSWindow *window = [[self menuRepresentation] window];
    if (!gPopped || gPopped->menu != self || !window)
        return;
    const NSRect screen = [([window screen] ? [window screen] : [NSScreen mainScreen]) visibleFrame];
    const NSSize size = [window frame].size;
    const CGFloat left = std::min(gPopped->corner.x, NSMaxX(screen) - size.width);
    const CGFloat top = std::max(gPopped->corner.y, NSMinY(screen) + size.height);
    [window setFrameTopLeftPoint:NSMakePoint(std::max(left, NSMinX(screen)), std::min(top, NSMaxY(screen)))];
}

void popUp(id self, SEL command, NSMenu *menu, NSEvent *event, NSView *view)
{
    SentActions *actions = [[SentActions alloc] init];
    NSNotificationCenter *center = [NSNotificationCenter defaultCenter];
    [center addObserver:actions selector:@selector(sent:) name:NSMenuDidSendActionNotification object:nil];
    // The events' own times: how long the menu took to open is not how long the button was held.
    NSEvent *press = [NSApp currentEvent];
    const NSTimeInterval pressed = press ? [press timestamp] : 0;
    const NSPoint place = [NSEvent mouseLocation];
    if (NSWindow *window = [event window])
        gPopped = {menu, [window convertBaseToScreen:[event locationInWindow]]};
    original(self, command, menu, event, view);
    NSEvent *release = [NSApp currentEvent];
    const NSTimeInterval held = release ? [release timestamp] - pressed : kClick;
    const NSPoint now = [NSEvent mouseLocation];
    const bool clicked = held >= 0 && held < kClick && std::hypot(now.x - place.x, now.y - place.y) < kStill;
    if (clicked && !actions->mAny)
        original(self, command, menu, event, view);
    gPopped.reset();
    [center removeObserver:actions];
    [actions release];
}

}  // namespace

@implementation NSMenu (ContextMenu)
+ (void)load
{
    original = tarvik::replacedMethod(
        class_getClassMethod(self, @selector(popUpContextMenu:withEvent:forView:)), &popUp);
    showTransient =
        tarvik::replacedMethod(class_getInstanceMethod(self, @selector(displayTransient)), &displayTransient);
}
@end
