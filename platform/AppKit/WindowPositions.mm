#import <AppKit/NSScreen.h>
#include <Carbon/MacWindows.h>

#import "platform/AppKit/private/WindowReference.h"

#include <algorithm>

namespace {

enum class Way { Centre, Cascade, Alert, CascadeFromParent };
enum class Place { MainScreen, Parent, ParentScreen };

struct Positioning {
    WindowPositionMethod method;
    Way way;
    Place place;
};

constexpr Positioning kMethods[] = {
    {kWindowCenterOnMainScreen, Way::Centre, Place::MainScreen},
    {kWindowCenterOnParentWindow, Way::Centre, Place::Parent},
    {kWindowCenterOnParentWindowScreen, Way::Centre, Place::ParentScreen},
    {kWindowCascadeOnMainScreen, Way::Cascade, Place::MainScreen},
    {kWindowCascadeOnParentWindow, Way::Cascade, Place::Parent},
    {kWindowCascadeOnParentWindowScreen, Way::Cascade, Place::ParentScreen},
    {kWindowAlertPositionOnMainScreen, Way::Alert, Place::MainScreen},
    {kWindowAlertPositionOnParentWindow, Way::Alert, Place::Parent},
    {kWindowAlertPositionOnParentWindowScreen, Way::Alert, Place::ParentScreen},
    {kWindowCascadeStartAtParentWindowScreen, Way::CascadeFromParent, Place::ParentScreen},
};

constexpr CGFloat kCascadeStep = 20;

/// The main screen of the toolbox is the one with the menu bar.
NSScreen *screenOf(NSWindow *window)
{
    NSArray *screens = [NSScreen screens];
    NSScreen *first = [screens count] ? [screens objectAtIndex:0] : nil;
    NSScreen *own = window ? [window screen] : first;
    return own ? own : first;
}

/// Where the next window of a cascade on a screen has its top left corner; begins again when it would not fit.
NSPoint nextOfCascade(NSRect screen, NSSize size, NSPoint start)
{
    static NSRect lastScreen = NSZeroRect;
    static NSPoint next = NSZeroPoint;
    const bool fits = next.x + size.width <= NSMaxX(screen) && next.y - size.height >= NSMinY(screen);
    if (!NSEqualRects(lastScreen, screen) || !fits)
        next = start;
    lastScreen = screen;
    const NSPoint found = next;
    next = NSMakePoint(found.x + kCascadeStep, found.y - kCascadeStep);
    return found;
}

}  // namespace

OSStatus RepositionWindow(WindowRef window, WindowRef parentWindow, WindowPositionMethod method)
{
    NSWindow *moved = WindowOfReference(window), *parent = WindowOfReference(parentWindow);
    if (!moved || (parentWindow && !parent))
        return errInvalidWindowPtr;
    const auto *found = std::find_if(std::begin(kMethods), std::end(kMethods),
                                     [&](const Positioning &each) { return each.method == method; });
    if (found == std::end(kMethods) || (found->place != Place::MainScreen && !parent))
        return paramErr;
    NSScreen *screen = screenOf(found->place == Place::MainScreen ? nil : parent);
    if (!screen)
        return unimpErr;
    const NSRect room = [screen visibleFrame];
    const NSRect area = found->place == Place::Parent ? [parent frame] : room;
    const NSSize size = [moved frame].size;
    const CGFloat across = NSMidX(area) - size.width / 2, spare = NSHeight(area) - size.height;
    NSPoint corner = NSZeroPoint;  // the top left one
    switch (found->way) {
    case Way::Centre: corner = NSMakePoint(across, NSMaxY(area) - spare / 2); break;
    case Way::Alert: corner = NSMakePoint(across, NSMaxY(area) - spare / 5); break;
    case Way::Cascade:
        if (found->place == Place::Parent)
            corner = NSMakePoint(NSMinX(area) + kCascadeStep, NSMaxY(area) - kCascadeStep);
        else
            corner = nextOfCascade(room, size,
                                   NSMakePoint(NSMinX(room) + kCascadeStep, NSMaxY(room) - kCascadeStep));
        break;
    case Way::CascadeFromParent:
        corner = nextOfCascade(room, size, NSMakePoint(NSMinX([parent frame]), NSMaxY([parent frame])));
        break;
    }
    // The top left corner counts when there is no room for all of it.
    corner.x = std::max(NSMinX(room), std::min(corner.x, NSMaxX(room) - size.width));
    corner.y = std::min(NSMaxY(room), std::max(corner.y, NSMinY(room) + size.height));
    [moved setFrameOrigin:NSMakePoint(corner.x, corner.y - size.height)];
    return noErr;
}
