/// \file
/// Edges, corners, centre and size of an NSRect, read and changed one at a time.
///
///     NSRect r = NSMakeRect(10, 20, 30, 40);
///     NSRectTopMoveTo(&r, 100);             // {10, 60, 30, 40}: the whole rectangle moves
///     NSRectTopResizeTo(&r, 120);           // {10, 60, 30, 60}: the bottom stays
///     NSRectSetWidthResizingLeft(&r, 5);    // {35, 60,  5, 60}: the right edge stays
///
/// y grows upward: the bottom is y, the top y + height; whether a view is flipped is not looked at.
///
///   null        a reader answers 0 or (0, 0), everything else does nothing
///   limits      the far edges, top and right, never pass the near ones; the near edges moved by a difference may pass the far
///               ones and leave a negative size. Callers rely on both.
///   threads     any
#pragma once
#ifdef __OBJC__
#import <Foundation/NSGeometry.h>

#ifdef __cplusplus
extern "C" {
#endif

// Read.
CGFloat NSRectLeft(const NSRect *rect);    ///< x
CGFloat NSRectRight(const NSRect *rect);   ///< x + width
CGFloat NSRectBottom(const NSRect *rect);  ///< y
CGFloat NSRectTop(const NSRect *rect);     ///< y + height
CGFloat NSRectWidth(const NSRect *rect);
CGFloat NSRectHeight(const NSRect *rect);
NSPoint NSRectLeftBottom(const NSRect *rect);
NSPoint NSRectLeftTop(const NSRect *rect);
NSPoint NSRectRightBottom(const NSRect *rect);
NSPoint NSRectRightTop(const NSRect *rect);
NSPoint NSRectCenter(const NSRect *rect);

// Move: the size stays.
void NSRectHorizontalMove(NSRect *rect, CGFloat distance);
void NSRectVerticalMove(NSRect *rect, CGFloat distance);
void NSRectLeftMoveTo(NSRect *rect, CGFloat x);
void NSRectRightMoveTo(NSRect *rect, CGFloat x);
void NSRectBottomMoveTo(NSRect *rect, CGFloat y);
void NSRectTopMoveTo(NSRect *rect, CGFloat y);
void NSRectCenterMoveTo(NSRect *rect, const NSPoint *center);  ///< nothing for a null point too

// Resize by a difference: one edge moves, the opposite one stays.
void NSRectTopResize(NSRect *rect, CGFloat difference);     ///< down to height 0
void NSRectRightResize(NSRect *rect, CGFloat difference);   ///< down to width 0
void NSRectBottomResize(NSRect *rect, CGFloat difference);  ///< height 10 by -25: height -15, y + 25
void NSRectLeftResize(NSRect *rect, CGFloat difference);    ///< without a limit too

// Resize to a position, which never passes the opposite edge.
void NSRectTopResizeTo(NSRect *rect, CGFloat y);
void NSRectRightResizeTo(NSRect *rect, CGFloat x);
void NSRectBottomResizeTo(NSRect *rect, CGFloat y);
void NSRectLeftResizeTo(NSRect *rect, CGFloat x);

// Set a size. A negative one is ignored; one that is not a number is taken.
void NSRectSetHeightResizingTop(NSRect *rect, CGFloat height);     ///< the bottom stays
void NSRectSetHeightResizingBottom(NSRect *rect, CGFloat height);  ///< the top stays
void NSRectSetWidthResizingRight(NSRect *rect, CGFloat width);     ///< the left stays
void NSRectSetWidthResizingLeft(NSRect *rect, CGFloat width);      ///< the right stays

#ifdef __cplusplus
}
#endif
#endif
