/// \file
/// Views placed by their edges, and where the mouse is.
///
///     [label leftMoveTo:[field right] + 8];
///     [label verticalCenterMoveTo:[field verticalCenter]];
///     [field rightResizeTo:[[field superview] width] - 20];
///
/// Each geometry method works on the view's `frame` as its namesake of NSRectGeometry.h does, limits included, and changes it by
/// `setFrame:`. As there, y grows upward by the numbers alone: in a flipped superview `top` is the edge that is seen below.
/// Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSView.h>
#import <AppKit/NSWindow.h>

@interface NSView (AppKitX)

// Read.
- (CGFloat)left;
- (CGFloat)right;
- (CGFloat)top;
- (CGFloat)bottom;
- (CGFloat)width;
- (CGFloat)height;
- (NSPoint)leftBottom;
- (NSPoint)leftTop;
- (NSPoint)rightBottom;
- (NSPoint)rightTop;
- (NSPoint)center;
- (CGFloat)horizontalCenter;
- (CGFloat)verticalCenter;

// Move: the size stays.
- (void)horizontalMove:(CGFloat)distance;
- (void)verticalMove:(CGFloat)distance;
- (void)leftMoveTo:(CGFloat)x;
- (void)rightMoveTo:(CGFloat)x;
- (void)topMoveTo:(CGFloat)y;
- (void)bottomMoveTo:(CGFloat)y;
- (void)centerMoveTo:(NSPoint)center;
- (void)horizontalCenterMoveTo:(CGFloat)x;
- (void)verticalCenterMoveTo:(CGFloat)y;

// Resize: one edge moves, the opposite one stays.
- (void)leftResize:(CGFloat)difference;
- (void)rightResize:(CGFloat)difference;
- (void)topResize:(CGFloat)difference;
- (void)bottomResize:(CGFloat)difference;
- (void)leftResizeTo:(CGFloat)x;
- (void)rightResizeTo:(CGFloat)x;
- (void)topResizeTo:(CGFloat)y;
- (void)bottomResizeTo:(CGFloat)y;
- (void)setHeightResizingTop:(CGFloat)height;
- (void)setHeightResizingBottom:(CGFloat)height;
- (void)setWidthResizingLeft:(CGFloat)width;
- (void)setWidthResizingRight:(CGFloat)width;

// The keyboard's focus, in the view's window.
- (void)getTabFocus;      ///< to this view
- (void)forwardTabFocus;  ///< to the key view after this one
- (void)backTabFocus;     ///< to the key view before this one

/// Takes the view out of its superview and keeps it alive for `useInView:`, which balances that. NO without a superview.
- (BOOL)unuseFromSuperview;
/// Puts the view into another one, from wherever it was. NO for nil and when the view stands in it, or is it, already.
/// A view without a superview is released once: it must come from `unuseFromSuperview`, or its caller gives it away.
- (BOOL)useInView:(NSView *)view;

/// The mouse in the view's coordinates; (2147483648, 2147483648), which is no place, without a window.
- (NSPoint)mouseLocation;

@end

@interface NSWindow (AppKitXMouse)
/// The mouse in the window's base coordinates, wherever on the screen it is.
- (NSPoint)mouseLocation;
@end
#endif
