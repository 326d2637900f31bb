#import "platform/AppKit/private/CommandRelay.h"
#import "platform/AppKit/private/ControlReference.h"
#import "platform/AppKit/private/References.h"
#import "platform/AppKit/private/WindowReference.h"

#import <AppKit/NSCell.h>
#import <AppKit/NSControl.h>
#import <AppKit/NSFont.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Guard.h>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

using Controls = References<OpaqueControlRef>;

ControlID nameOf(NSView *view)
{
    if (const OpaqueControlRef *record = Controls::shared().existing(view); record && record->name)
        return *record->name;
    return {0, [view isKindOfClass:[NSControl class]] ? SInt32([view tag]) : 0};
}

/// Breadth first: the outer ones before the inner.
NSView *viewNamed(NSView *start, ControlID name)
{
    NSMutableArray *waiting = [NSMutableArray arrayWithObject:start];
    for (NSUInteger i = 0; i < [waiting count]; ++i) {
        NSView *view = [waiting objectAtIndex:i];
        const ControlID found = nameOf(view);
        if (found.signature == name.signature && found.id == name.id)
            return view;
        [waiting addObjectsFromArray:[view subviews]];
    }
    return nil;
}

OSStatus findByID(NSView *start, ControlID name, ControlRef *outControl)
{
    NSView *found = start ? viewNamed(start, name) : nil;
    if (!found)
        return errUnknownControl;
    *outControl = ReferenceOfView(found);
    return noErr;
}

/// The view that bounds are counted from: the window's content, or the outermost one without a window.
NSView *originOf(NSView *view)
{
    if (NSView *content = [[view window] contentView])
        return content;
    while (NSView *outer = [view superview])
        view = outer;
    return view;
}

SInt16 coordinate(CGFloat value) { return SInt16(std::clamp<long>(std::lround(value), SHRT_MIN, SHRT_MAX)); }

Rect boundsOf(NSView *view)
{
    NSView *origin = originOf(view);
    const NSRect rect = [origin convertRect:[view bounds] fromView:view];
    const NSRect whole = [origin bounds];
    const CGFloat top = [origin isFlipped] ? NSMinY(rect) - NSMinY(whole) : NSMaxY(whole) - NSMaxY(rect);
    const CGFloat left = NSMinX(rect) - NSMinX(whole);
    return {coordinate(top), coordinate(left), coordinate(top + NSHeight(rect)),
            coordinate(left + NSWidth(rect))};
}

void setBounds(NSView *view, const Rect &bounds)
{
    NSView *origin = originOf(view);
    if (view == origin)
        return;
    const NSRect whole = [origin bounds];
    const CGFloat height = bounds.bottom - bounds.top;
    const CGFloat y = [origin isFlipped] ? NSMinY(whole) + bounds.top : NSMaxY(whole) - bounds.top - height;
    const NSRect rect = NSMakeRect(NSMinX(whole) + bounds.left, y, bounds.right - bounds.left, height);
    NSView *outer = [view superview];
    [outer setNeedsDisplayInRect:[view frame]];
    [view setFrame:[outer convertRect:rect fromView:origin]];
    [view setNeedsDisplay:YES];
}

}  // namespace

OpaqueControlRef *KnownControl(ControlRef reference) { return Controls::shared().known(reference); }
ControlRef ReferenceOfView(NSView *view) { return Controls::shared().of(view); }

@implementation NSView (ControlReference)

- (ControlRef)controlRef
{
    return ReferenceOfView(self);
}

+ (NSView *)viewWithControlRef:(ControlRef)control
{
    const OpaqueControlRef *record = KnownControl(control);
    return record ? record->view : nil;
}

@end

OSStatus GetControlID(ControlRef control, ControlID *outID)
{
    const OpaqueControlRef *record = KnownControl(control);
    if (!record)
        return controlHandleInvalidErr;
    if (!outID)
        return paramErr;
    *outID = nameOf(record->view);
    return noErr;
}

OSStatus SetControlID(ControlRef control, const ControlID *name)
{
    OpaqueControlRef *record = KnownControl(control);
    if (!record)
        return controlHandleInvalidErr;
    if (!name)
        return paramErr;
    record->name = *name;
    return noErr;
}

OSStatus GetControlCommandID(ControlRef control, UInt32 *outCommandID)
{
    const OpaqueControlRef *record = KnownControl(control);
    if (!record)
        return controlHandleInvalidErr;
    if (!outCommandID)
        return paramErr;
    *outCommandID = record->commandID;
    return noErr;
}

OSStatus SetControlCommandID(ControlRef control, UInt32 commandID)
{
    OpaqueControlRef *record = KnownControl(control);
    if (!record)
        return controlHandleInvalidErr;
    record->commandID = commandID;
    if (commandID && [record->view isKindOfClass:[NSControl class]])
        RelayHits((NSControl *)record->view);
    return noErr;
}

WindowRef GetControlOwner(ControlRef control)
{
    const OpaqueControlRef *record = KnownControl(control);
    return record ? ReferenceOfWindow([record->view window]) : nullptr;
}

OSStatus GetControlByID(WindowRef window, const ControlID *name, ControlRef *outControl)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    return name && outControl ? findByID([found contentView], *name, outControl) : OSStatus(paramErr);
}

HIViewRef HIViewGetRoot(WindowRef window) { return ReferenceOfView([WindowOfReference(window) contentView]); }

OSStatus HIViewFindByID(HIViewRef start, HIViewID name, HIViewRef *outView)
{
    const OpaqueControlRef *record = KnownControl(start);
    if (!record)
        return controlHandleInvalidErr;
    return outView ? findByID(record->view, name, outView) : OSStatus(paramErr);
}

Rect *GetControlBounds(ControlRef control, Rect *outBounds)
{
    const OpaqueControlRef *record = KnownControl(control);
    if (outBounds)
        *outBounds = record ? boundsOf(record->view) : Rect{};
    return outBounds;
}

void SetControlBounds(ControlRef control, const Rect *bounds)
{
    if (const OpaqueControlRef *record = KnownControl(control); record && bounds)
        setBounds(record->view, *bounds);
}

OSErr GetBestControlRect(ControlRef control, Rect *outRect, SInt16 *outBaseLineOffset)
{
    const OpaqueControlRef *record = KnownControl(control);
    if (!record)
        return OSErr(controlHandleInvalidErr);
    if (!outRect)
        return paramErr;
    if (![record->view isKindOfClass:[NSControl class]])
        return OSErr(errMessageNotSupported);
    NSCell *cell = [(NSControl *)record->view cell];
    Rect best = {};
    if (cell) {
        const NSSize size = [cell cellSize];
        best = boundsOf(record->view);
        best.right = coordinate(best.left + std::ceil(size.width));
        best.bottom = coordinate(best.top + std::ceil(size.height));
    }
    *outRect = best;
    if (outBaseLineOffset) {
        NSFont *font = [cell font];
        *outBaseLineOffset = font ? coordinate([font descender]) : 0;
    }
    return noErr;
}
