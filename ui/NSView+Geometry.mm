#import <AppKit/NSEvent.h>
#import <Tarvik/ui/NSRectGeometry.h>
#import <Tarvik/ui/NSView+Geometry.h>

namespace {

template <class Result>
Result ask(NSView *view, Result (*question)(const NSRect *))
{
    const NSRect frame = [view frame];
    return question(&frame);
}

template <class Value>
void change(NSView *view, void (*function)(NSRect *, Value), Value value)
{
    NSRect frame = [view frame];
    function(&frame, value);
    [view setFrame:frame];
}

}  // namespace

@implementation NSView (AppKitX)

// clang-format off
- (CGFloat)left { return ask(self, NSRectLeft); }
- (CGFloat)right { return ask(self, NSRectRight); }
- (CGFloat)top { return ask(self, NSRectTop); }
- (CGFloat)bottom { return ask(self, NSRectBottom); }
- (CGFloat)width { return ask(self, NSRectWidth); }
- (CGFloat)height { return ask(self, NSRectHeight); }
- (NSPoint)leftBottom { return ask(self, NSRectLeftBottom); }
- (NSPoint)leftTop { return ask(self, NSRectLeftTop); }
- (NSPoint)rightBottom { return ask(self, NSRectRightBottom); }
- (NSPoint)rightTop { return ask(self, NSRectRightTop); }
- (NSPoint)center { return ask(self, NSRectCenter); }
- (CGFloat)horizontalCenter { return [self center].x; }
- (CGFloat)verticalCenter { return [self center].y; }

- (void)horizontalMove:(CGFloat)distance { change(self, NSRectHorizontalMove, distance); }
- (void)verticalMove:(CGFloat)distance { change(self, NSRectVerticalMove, distance); }
- (void)leftMoveTo:(CGFloat)x { change(self, NSRectLeftMoveTo, x); }
- (void)rightMoveTo:(CGFloat)x { change(self, NSRectRightMoveTo, x); }
- (void)topMoveTo:(CGFloat)y { change(self, NSRectTopMoveTo, y); }
- (void)bottomMoveTo:(CGFloat)y { change(self, NSRectBottomMoveTo, y); }
- (void)centerMoveTo:(NSPoint)center { change<const NSPoint *>(self, NSRectCenterMoveTo, &center); }
- (void)horizontalCenterMoveTo:(CGFloat)x { [self centerMoveTo:NSMakePoint(x, [self center].y)]; }
- (void)verticalCenterMoveTo:(CGFloat)y { [self centerMoveTo:NSMakePoint([self center].x, y)]; }

- (void)leftResize:(CGFloat)difference { change(self, NSRectLeftResize, difference); }
- (void)rightResize:(CGFloat)difference { change(self, NSRectRightResize, difference); }
- (void)topResize:(CGFloat)difference { change(self, NSRectTopResize, difference); }
- (void)bottomResize:(CGFloat)difference { change(self, NSRectBottomResize, difference); }
- (void)leftResizeTo:(CGFloat)x { change(self, NSRectLeftResizeTo, x); }
- (void)rightResizeTo:(CGFloat)x { change(self, NSRectRightResizeTo, x); }
- (void)topResizeTo:(CGFloat)y { change(self, NSRectTopResizeTo, y); }
- (void)bottomResizeTo:(CGFloat)y { change(self, NSRectBottomResizeTo, y); }
- (void)setHeightResizingTop:(CGFloat)height { change(self, NSRectSetHeightResizingTop, height); }
- (void)setHeightResizingBottom:(CGFloat)height { change(self, NSRectSetHeightResizingBottom, height); }
- (void)setWidthResizingLeft:(CGFloat)width { change(self, NSRectSetWidthResizingLeft, width); }
- (void)setWidthResizingRight:(CGFloat)width { change(self, NSRectSetWidthResizingRight, width); }

- (void)getTabFocus { [[self window] makeFirstResponder:self]; }
- (void)forwardTabFocus { [[self window] selectKeyViewFollowingView:self]; }
- (void)backTabFocus { [[self window] selectKeyViewPrecedingView:self]; }
// clang-format on

- (BOOL)unuseFromSuperview
{
    if (![self superview])
        return NO;
    [self retain];
    [self removeFromSuperview];
    return YES;
}

- (BOOL)useInView:(NSView *)view
{
    if (!view || [self isDescendantOf:view])
        return NO;
    const bool wasUnused = ![self superview];
    [view addSubview:self];
    if (wasUnused)
        [self release];
    return YES;
}

- (NSPoint)mouseLocation
{
    NSWindow *window = [self window];
    NSView *content = [window contentView];
    if (!content)
        return NSMakePoint(2147483648.0, 2147483648.0);
    return [self convertPoint:[window mouseLocation] fromView:content];
}

@end

@implementation NSWindow (AppKitXMouse)
- (NSPoint)mouseLocation
{
    return [self convertScreenToBase:[NSEvent mouseLocation]];
}
@end
