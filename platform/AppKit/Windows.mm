#import "platform/AppKit/private/References.h"
#import "platform/AppKit/private/WindowReference.h"

#import <AppKit/NSApplication.h>
#import <AppKit/NSPanel.h>
#import <AppKit/NSScreen.h>
#import <Tarvik/support/Guard.h>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

using Windows = References<OpaqueWindowPtr>;

struct ClassTraits {
    WindowClass windowClass;
    WindowAttributes attributes;  // those that it may have
    NSUInteger style;
    NSInteger level;
    bool isPanel;
};

// AppKit's levels, which are constants of other types.
constexpr NSInteger normal = 0, floating = 3, modal = 8;

constexpr ClassTraits kClasses[] = {
    {kAlertWindowClass, 0, NSTitledWindowMask, modal, true},
    {kMovableAlertWindowClass, 0, NSTitledWindowMask, modal, true},
    {kModalWindowClass, 0, NSTitledWindowMask, modal, true},
    {kMovableModalWindowClass, kWindowStandardDocumentAttributes, NSTitledWindowMask, modal, true},
    {kFloatingWindowClass, kWindowStandardDocumentAttributes,
     NSUInteger(NSTitledWindowMask) | NSUtilityWindowMask, floating, true},
    {kDocumentWindowClass, kWindowStandardDocumentAttributes, NSTitledWindowMask, normal, false},
    {kUtilityWindowClass, kWindowStandardDocumentAttributes,
     NSUInteger(NSTitledWindowMask) | NSUtilityWindowMask, floating, true},
    {kSheetWindowClass, kWindowResizableAttribute, NSDocModalWindowMask, normal, true},
    {kPlainWindowClass, kWindowResizableAttribute, NSBorderlessWindowMask, normal, false},
};

const ClassTraits *traitsOf(WindowClass windowClass)
{
    const auto found = std::find_if(std::begin(kClasses), std::end(kClasses), [&](const ClassTraits &traits) {
        return traits.windowClass == windowClass;
    });
    return found == std::end(kClasses) ? nullptr : found;
}

NSUInteger styleOf(const ClassTraits &traits, WindowAttributes attributes)
{
    NSUInteger style = traits.style;
    if (attributes & kWindowCloseBoxAttribute)
        style |= NSClosableWindowMask;
    if (attributes & kWindowCollapseBoxAttribute)
        style |= NSMiniaturizableWindowMask;
    if (attributes & kWindowResizableAttribute)
        style |= NSResizableWindowMask;
    return style;
}

// An application's window is resized by its zoom box too, which is why AppKit has no bit for that.
WindowAttributes attributesOf(NSUInteger style)
{
    WindowAttributes attributes = 0;
    if (style & NSClosableWindowMask)
        attributes |= kWindowCloseBoxAttribute;
    if (style & NSMiniaturizableWindowMask)
        attributes |= kWindowCollapseBoxAttribute;
    if (style & NSResizableWindowMask)
        attributes |= kWindowResizableAttribute | kWindowFullZoomAttribute;
    return attributes;
}

WindowClass classOf(NSWindow *window)
{
    const NSUInteger style = [window styleMask];
    if (style & NSDocModalWindowMask)
        return kSheetWindowClass;
    if (style & NSUtilityWindowMask)
        return kUtilityWindowClass;
    if ([window level] >= modal)
        return kMovableModalWindowClass;
    if ([window level] >= floating)
        return kFloatingWindowClass;
    return style & NSTitledWindowMask ? kDocumentWindowClass : kPlainWindowClass;
}

CGFloat screenTop()
{
    NSArray *screens = [NSScreen screens];
    return [screens count] ? NSMaxY([(NSScreen *)[screens objectAtIndex:0] frame]) : 0;
}

SInt16 coordinate(CGFloat value) { return SInt16(std::clamp<long>(std::lround(value), SHRT_MIN, SHRT_MAX)); }

OpaqueWindowPtr *known(WindowRef reference) { return Windows::shared().known(reference); }

}  // namespace

WindowRef ReferenceOfWindow(NSWindow *window) { return Windows::shared().of(window); }

NSWindow *WindowOfReference(WindowRef reference)
{
    const OpaqueWindowPtr *record = known(reference);
    return record ? record->window : nil;
}

NSRect ScreenRectFromToolbox(const Rect &rect)
{
    return NSMakeRect(rect.left, screenTop() - rect.bottom, rect.right - rect.left, rect.bottom - rect.top);
}

Rect ToolboxRectFromScreen(NSRect rect)
{
    const CGFloat top = screenTop();
    return {coordinate(top - NSMaxY(rect)), coordinate(NSMinX(rect)), coordinate(top - NSMinY(rect)),
            coordinate(NSMaxX(rect))};
}

OSStatus CreateNewWindow(WindowClass windowClass, WindowAttributes attributes, const Rect *contentBounds,
                         WindowRef *outWindow)
{
    if (!contentBounds || !outWindow || contentBounds->right <= contentBounds->left ||
        contentBounds->bottom <= contentBounds->top)
        return paramErr;
    const ClassTraits *traits = traitsOf(windowClass);
    if (!traits)
        return errUnrecognizedWindowClass;
    if (attributes & ~traits->attributes)
        return errUnsupportedWindowAttributesForClass;
    OSStatus status = unimpErr;
    tarvik::attempt([&] {
        [NSApplication sharedApplication];
        NSWindow *window =
            [(traits->isPanel ? [NSPanel alloc]
                              : [NSWindow alloc]) initWithContentRect:ScreenRectFromToolbox(*contentBounds)
                                                            styleMask:styleOf(*traits, attributes)
                                                              backing:NSBackingStoreBuffered
                                                                defer:YES];
        if (!window)
            return;
        [window setReleasedWhenClosed:NO];
        [window setLevel:traits->level];
        OpaqueWindowPtr *record = Windows::shared().of(window);
        record->owned = true;
        record->windowClass = windowClass;
        *outWindow = record;
        status = noErr;
    });
    return status;
}

void DisposeWindow(WindowRef window)
{
    const OpaqueWindowPtr *record = known(window);
    if (!record)
        return;
    NSWindow *gone = record->window;
    const bool owned = record->owned;
    Windows::shared().forget(gone);
    [gone close];
    if (owned)
        [gone release];
}

Boolean IsValidWindowPtr(WindowRef window) { return known(window) != nullptr; }

OSStatus GetWindowClass(WindowRef window, WindowClass *outClass)
{
    const OpaqueWindowPtr *record = known(window);
    if (!record)
        return errInvalidWindowPtr;
    if (!outClass)
        return paramErr;
    *outClass = record->windowClass ? *record->windowClass : classOf(record->window);
    return noErr;
}

OSStatus GetWindowAttributes(WindowRef window, WindowAttributes *outAttributes)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    if (!outAttributes)
        return paramErr;
    *outAttributes = attributesOf([found styleMask]);
    return noErr;
}

OSStatus GetWindowBounds(WindowRef window, WindowRegionCode region, Rect *bounds)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    if (!bounds || (region != kWindowStructureRgn && region != kWindowContentRgn))
        return paramErr;
    const NSRect frame = [found frame];
    *bounds =
        ToolboxRectFromScreen(region == kWindowStructureRgn ? frame : [found contentRectForFrameRect:frame]);
    return noErr;
}

OSStatus SetWindowBounds(WindowRef window, WindowRegionCode region, const Rect *bounds)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    if (!bounds || (region != kWindowStructureRgn && region != kWindowContentRgn))
        return paramErr;
    const NSRect rect = ScreenRectFromToolbox(*bounds);
    [found setFrame:region == kWindowStructureRgn ? rect : [found frameRectForContentRect:rect]
            display:[found isVisible]];
    return noErr;
}

void ShowWindow(WindowRef window) { [WindowOfReference(window) orderFront:nil]; }
void HideWindow(WindowRef window) { [WindowOfReference(window) orderOut:nil]; }
void SelectWindow(WindowRef window) { [WindowOfReference(window) makeKeyAndOrderFront:nil]; }
Boolean IsWindowVisible(WindowRef window) { return [WindowOfReference(window) isVisible]; }

OSStatus SetWindowTitleWithCFString(WindowRef window, CFStringRef title)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    if (!title)
        return paramErr;
    [found setTitle:(NSString *)title];
    return noErr;
}

OSStatus CopyWindowTitleAsCFString(WindowRef window, CFStringRef *outTitle)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    if (!outTitle)
        return paramErr;
    *outTitle = (CFStringRef)[[found title] copy];
    return noErr;
}

SRefCon GetWRefCon(WindowRef window)
{
    const OpaqueWindowPtr *record = known(window);
    return record ? record->constant : 0;
}

EventTargetRef GetWindowEventTarget(WindowRef window)
{
    OpaqueWindowPtr *record = known(window);
    return record ? &record->target : nullptr;
}

void SetWRefCon(WindowRef window, SRefCon constant)
{
    if (OpaqueWindowPtr *record = known(window))
        record->constant = constant;
}

// gnustep-gui's own answer a number of its backend, and crash.
@implementation NSWindow (WindowReference)

- (void *)windowRef
{
    return ReferenceOfWindow(self);
}

/// The window behind the reference itself takes the receiver's place; nil for an unknown reference.
- (id)initWithWindowRef:(void *)windowRef
{
    NSWindow *found = [WindowOfReference((WindowRef)windowRef) retain];
    [self release];
    return found;
}

@end
