#import <Tarvik/ui/NSRectGeometry.h>

#include <algorithm>

namespace {

// The far edges (top, right) end at a size of 0.
void growFarEdge(CGFloat &size, CGFloat difference)
{
    size += difference < 0 ? std::max(difference, -size) : difference;
}

void moveFarEdge(CGFloat origin, CGFloat &size, CGFloat position)
{
    growFarEdge(size, std::max(origin, position) - (origin + size));
}

// The near edges (bottom, left) have no such end.
void growNearEdge(CGFloat &origin, CGFloat &size, CGFloat difference)
{
    size += difference;
    origin -= difference;
}

void moveNearEdge(CGFloat &origin, CGFloat &size, CGFloat position)
{
    const CGFloat edge = std::min(origin + size, position);
    size = origin - edge + size;
    origin = edge;
}

// "Not less than 0", rather than "0 or more": a size that is not a number is taken.
bool isSize(CGFloat size) { return !(size < 0); }

}  // namespace

CGFloat NSRectLeft(const NSRect *rect) { return rect ? rect->origin.x : 0; }
CGFloat NSRectRight(const NSRect *rect) { return rect ? rect->origin.x + rect->size.width : 0; }
CGFloat NSRectBottom(const NSRect *rect) { return rect ? rect->origin.y : 0; }
CGFloat NSRectTop(const NSRect *rect) { return rect ? rect->origin.y + rect->size.height : 0; }
CGFloat NSRectWidth(const NSRect *rect) { return rect ? rect->size.width : 0; }
CGFloat NSRectHeight(const NSRect *rect) { return rect ? rect->size.height : 0; }

NSPoint NSRectLeftBottom(const NSRect *rect) { return NSMakePoint(NSRectLeft(rect), NSRectBottom(rect)); }
NSPoint NSRectLeftTop(const NSRect *rect) { return NSMakePoint(NSRectLeft(rect), NSRectTop(rect)); }
NSPoint NSRectRightBottom(const NSRect *rect) { return NSMakePoint(NSRectRight(rect), NSRectBottom(rect)); }
NSPoint NSRectRightTop(const NSRect *rect) { return NSMakePoint(NSRectRight(rect), NSRectTop(rect)); }

NSPoint NSRectCenter(const NSRect *rect)
{
    return rect ? NSMakePoint(rect->origin.x + rect->size.width * 0.5,
                              rect->origin.y + rect->size.height * 0.5)
                : NSZeroPoint;
}

void NSRectHorizontalMove(NSRect *rect, CGFloat distance)
{
    if (rect)
        rect->origin.x += distance;
}

void NSRectVerticalMove(NSRect *rect, CGFloat distance)
{
    if (rect)
        rect->origin.y += distance;
}

void NSRectLeftMoveTo(NSRect *rect, CGFloat x)
{
    if (rect)
        rect->origin.x = x;
}

void NSRectRightMoveTo(NSRect *rect, CGFloat x) { NSRectHorizontalMove(rect, x - NSRectRight(rect)); }

void NSRectBottomMoveTo(NSRect *rect, CGFloat y)
{
    if (rect)
        rect->origin.y = y;
}

void NSRectTopMoveTo(NSRect *rect, CGFloat y) { NSRectVerticalMove(rect, y - NSRectTop(rect)); }

void NSRectCenterMoveTo(NSRect *rect, const NSPoint *center)
{
    if (!center)
        return;
    const NSPoint now = NSRectCenter(rect);
    NSRectVerticalMove(rect, center->y - now.y);
    NSRectHorizontalMove(rect, center->x - now.x);
}

void NSRectTopResize(NSRect *rect, CGFloat difference)
{
    if (rect)
        growFarEdge(rect->size.height, difference);
}

void NSRectRightResize(NSRect *rect, CGFloat difference)
{
    if (rect)
        growFarEdge(rect->size.width, difference);
}

void NSRectBottomResize(NSRect *rect, CGFloat difference)
{
    if (rect)
        growNearEdge(rect->origin.y, rect->size.height, difference);
}

void NSRectLeftResize(NSRect *rect, CGFloat difference)
{
    if (rect)
        growNearEdge(rect->origin.x, rect->size.width, difference);
}

void NSRectTopResizeTo(NSRect *rect, CGFloat y)
{
    if (rect)
        moveFarEdge(rect->origin.y, rect->size.height, y);
}

void NSRectRightResizeTo(NSRect *rect, CGFloat x)
{
    if (rect)
        moveFarEdge(rect->origin.x, rect->size.width, x);
}

void NSRectBottomResizeTo(NSRect *rect, CGFloat y)
{
    if (rect)
        moveNearEdge(rect->origin.y, rect->size.height, y);
}

void NSRectLeftResizeTo(NSRect *rect, CGFloat x)
{
    if (rect)
        moveNearEdge(rect->origin.x, rect->size.width, x);
}

void NSRectSetHeightResizingTop(NSRect *rect, CGFloat height)
{
    if (rect && isSize(height))
        rect->size.height = height;
}

void NSRectSetHeightResizingBottom(NSRect *rect, CGFloat height)
{
    if (!rect || !isSize(height))
        return;
    rect->origin.y -= height - rect->size.height;
    rect->size.height = height;
}

void NSRectSetWidthResizingRight(NSRect *rect, CGFloat width)
{
    if (rect && isSize(width))
        rect->size.width = width;
}

void NSRectSetWidthResizingLeft(NSRect *rect, CGFloat width)
{
    if (!rect || !isSize(width))
        return;
    rect->origin.x -= width - rect->size.width;
    rect->size.width = width;
}
