#include "Theme.h"

#include "Style.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSTheme.h>

#include <algorithm>

namespace {

NSColor *gray(CGFloat white) { return [NSColor colorWithCalibratedWhite:white alpha:1]; }

NSString *const kDefault = @"GSTheme", *const kName = @"Shelf";

void fill(NSRect area, NSColor *color)
{
    [color set];
    NSRectFill(area);
}

/// A line of one pixel along the inside of the edges.
void frame(NSRect area, NSColor *color)
{
    [color set];
    NSFrameRect(area);
}

}  // namespace

/// The moving part of a scroller: a rounded bar, with room around it.
@interface FlatKnobCell : NSCell
@end

@implementation FlatKnobCell

- (void)drawWithFrame:(NSRect)area inView:(NSView *)view
{
    (void)view;
    constexpr CGFloat kRoom = 3;
    const NSRect bar = NSInsetRect(area, kRoom, kRoom);
    if (bar.size.width <= 0 || bar.size.height <= 0)
        return;
    [gray(0.68) set];
    [shelf::roundedShape(bar, std::min(bar.size.width, bar.size.height) / 2) fill];
}

@end

/// What it moves in.
@interface FlatSlotCell : NSCell
@end

@implementation FlatSlotCell

- (void)drawWithFrame:(NSRect)area inView:(NSView *)view
{
    (void)view, fill(area, gray(0.95));
}

@end

/// One step of a scroller.
@interface FlatArrowCell : NSButtonCell {
@public
    bool mIsHorizontal, mIsForward;  // down or to the right
}
@end

@implementation FlatArrowCell

- (void)drawWithFrame:(NSRect)area inView:(NSView *)view
{
    fill(area, gray([self isHighlighted] ? 0.86 : 0.95));
    const CGFloat half = 3.5, x = NSMidX(area), y = NSMidY(area),
                  along = mIsForward == (mIsHorizontal || [view isFlipped]) ? half / 2 : -half / 2;
    NSBezierPath *triangle = [NSBezierPath bezierPath];
    if (mIsHorizontal) {
        [triangle moveToPoint:NSMakePoint(x - along, y - half)];
        [triangle lineToPoint:NSMakePoint(x - along, y + half)];
        [triangle lineToPoint:NSMakePoint(x + along, y)];
    } else {
        [triangle moveToPoint:NSMakePoint(x - half, y - along)];
        [triangle lineToPoint:NSMakePoint(x + half, y - along)];
        [triangle lineToPoint:NSMakePoint(x, y + along)];
    }
    [gray(0.45) set];
    [triangle fill];
}

@end

@interface ShelfTheme : GSTheme {
    NSCell *mKnob, *mSlot;
    FlatArrowCell *mArrows[2][2];  // horizontal, forward
}
@end

@implementation ShelfTheme

- (id)initWithBundle:(NSBundle *)bundle
{
    if (!(self = [super initWithBundle:bundle]))
        return nil;
    mKnob = [[FlatKnobCell alloc] init];
    mSlot = [[FlatSlotCell alloc] init];
    for (int horizontal : {0, 1}) {
        for (int forward : {0, 1}) {
            FlatArrowCell *arrow = mArrows[horizontal][forward] = [[FlatArrowCell alloc] init];
            arrow->mIsHorizontal = horizontal;
            arrow->mIsForward = forward;
            [arrow setContinuous:YES];
            [arrow sendActionOn:NSLeftMouseDownMask | NSPeriodicMask];
            [arrow setPeriodicDelay:0.3 interval:0.03];
        }
    }
    return self;
}

- (void)dealloc
{
    [mKnob release];
    [mSlot release];
    for (auto &pair : mArrows) {
        for (FlatArrowCell *arrow : pair)
            [arrow release];
    }
    [super dealloc];
}

- (NSString *)name
{
    return kName;
}

// ---- Buttons

- (void)drawButton:(NSRect)area
                in:(NSCell *)cell
              view:(NSView *)view
             style:(int)style
             state:(GSThemeControlState)state
{
    (void)view, (void)style;
    const bool isPressed = state == GSThemeHighlightedState || state == GSThemeSelectedState;
    const bool isDefault =
        [cell isKindOfClass:[NSButtonCell class]] && [[(NSButtonCell *)cell keyEquivalent] isEqual:@"\r"];
    NSBezierPath *shape = shelf::roundedShape(NSInsetRect(area, 0.5, 0.5), 4);
    [gray(isPressed ? 0.86 : 0.99) set];
    [shape fill];
    [isDefault && [cell isEnabled] ? shelf::labelColor(4) : gray([cell isEnabled] ? 0.70 : 0.82) set];
    [shape setLineWidth:1];
    [shape stroke];
}

// The button that Return presses is known by its colour.
- (void)setKeyEquivalent:(NSString *)key forButtonCell:(NSButtonCell *)cell
{
    (void)key, (void)cell;
}

- (void)drawFocusFrame:(NSRect)area view:(NSView *)view
{
    (void)view;
    NSBezierPath *shape = shelf::roundedShape(NSInsetRect(area, 0.5, 0.5), 3);
    [[shelf::labelColor(4) colorWithAlphaComponent:0.45] set];
    [shape setLineWidth:1];
    [shape stroke];
}

- (void)drawBorderType:(NSBorderType)type frame:(NSRect)area view:(NSView *)view
{
    if (type != NSBezelBorder)
        return [super drawBorderType:type frame:area view:view];
    frame(area, gray(0.70));
    frame(NSInsetRect(area, 1, 1), [NSColor whiteColor]);
}

// ---- Scrollers

- (NSCell *)cellForScrollerKnob:(BOOL)horizontal
{
    return (void)horizontal, mKnob;
}
- (NSCell *)cellForScrollerKnobSlot:(BOOL)horizontal
{
    return (void)horizontal, mSlot;
}
- (NSButtonCell *)cellForScrollerArrow:(NSScrollerArrow)arrow horizontal:(BOOL)horizontal
{
    return mArrows[horizontal ? 1 : 0][arrow == NSScrollerIncrementArrow ? 1 : 0];
}
- (float)defaultScrollerWidth
{
    return 15;
}
- (void)drawTableCornerView:(NSView *)view withClip:(NSRect)clip
{
    (void)clip;
    const NSRect area = [view bounds];
    fill(area, gray(0.97));
    fill(NSMakeRect(NSMinX(area), [view isFlipped] ? NSMaxY(area) - 1 : NSMinY(area), area.size.width, 1),
         gray(0.82));
}

// ---- Menus

- (void)drawBackgroundForMenuView:(NSMenuView *)view
                        withFrame:(NSRect)area
                        dirtyRect:(NSRect)dirty
                       horizontal:(BOOL)horizontal
{
    (void)view, (void)dirty;
    fill(area, horizontal ? gray(0.95) : gray(0.99));
    if (!horizontal)
        frame(area, gray(0.70));
}
- (BOOL)drawsBorderForMenuItemCell:(NSMenuItemCell *)cell
                             state:(GSThemeControlState)state
                      isHorizontal:(BOOL)horizontal
{
    return (void)cell, (void)state, (void)horizontal, NO;
}
- (void)drawBorderAndBackgroundForMenuItemCell:(NSMenuItemCell *)cell
                                     withFrame:(NSRect)area
                                        inView:(NSView *)view
                                         state:(GSThemeControlState)state
                                  isHorizontal:(BOOL)horizontal
{
    const bool isChosen =
        (state == GSThemeSelectedState || state == GSThemeHighlightedState) && [[cell menuItem] isEnabled];
    const NSRect inside = horizontal ? area : NSInsetRect(area, 1, 0);
    fill(inside, isChosen ? [NSColor selectedMenuItemColor] : gray(horizontal ? 0.95 : 0.99));
    if (!horizontal)  // the first and the last item cover the menu's edges
        frame([view bounds], gray(0.70));
}
- (NSColor *)menuSeparatorColor
{
    return gray(0.85);
}
- (CGFloat)menuSeparatorInset
{
    return 8;
}

@end

void shelf::putOnTheme()
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    if ([[defaults stringForKey:kDefault] length])
        return;
    [GSTheme setTheme:[[[ShelfTheme alloc] initWithBundle:nil] autorelease]];
    // AppKit looks for the theme of this name, and finds that it is the one that is on.
    [defaults registerDefaults:[NSDictionary dictionaryWithObject:kName forKey:kDefault]];
}
