// gnustep-gui's menus end with the first release of the mouse, so that a click on what opens one only makes it flash. Here a click
// leaves the menu open for the next one, and a press that is held, dragged and released on an item chooses it as before.
#import <AppKit/AppKit.h>
#include <objc/runtime.h>

#include <cmath>

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

constexpr NSTimeInterval kClick = 0.35;
constexpr CGFloat kStill = 4;

void popUp(id self, SEL command, NSMenu *menu, NSEvent *event, NSView *view)
{
    SentActions *actions = [[SentActions alloc] init];
    NSNotificationCenter *center = [NSNotificationCenter defaultCenter];
    [center addObserver:actions selector:@selector(sent:) name:NSMenuDidSendActionNotification object:nil];
    // The events' own times: how long the menu took to open is not how long the button was held.
    NSEvent *press = [NSApp currentEvent];
    const NSTimeInterval pressed = press ? [press timestamp] : 0;
    const NSPoint place = [NSEvent mouseLocation];
    original(self, command, menu, event, view);
    NSEvent *release = [NSApp currentEvent];
    const NSTimeInterval held = release ? [release timestamp] - pressed : kClick;
    const NSPoint now = [NSEvent mouseLocation];
    const bool clicked = held >= 0 && held < kClick && std::hypot(now.x - place.x, now.y - place.y) < kStill;
    if (clicked && !actions->mAny)
        original(self, command, menu, event, view);
    [center removeObserver:actions];
    [actions release];
}

}  // namespace

@implementation NSMenu (ContextMenu)
+ (void)load
{
    Method method = class_getClassMethod(self, @selector(popUpContextMenu:withEvent:forView:));
    original = reinterpret_cast<PopUp>(reinterpret_cast<void (*)()>(method_getImplementation(method)));
    method_setImplementation(method, reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(popUp)));
}
@end
