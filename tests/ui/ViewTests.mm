#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#include <gtest/gtest.h>
#include <tests/ui/Desktop.h>

@interface FrameCounter : NSView {
@public
    int mSets;
}
@end
@implementation FrameCounter
- (void)setFrame:(NSRect)frame
{
    ++mSets;
    [super setFrame:frame];
}
- (BOOL)acceptsFirstResponder
{
    return YES;
}
@end

namespace {

FrameCounter *viewAt(CGFloat x, CGFloat y, CGFloat width, CGFloat height)
{
    return [[[FrameCounter alloc] initWithFrame:NSMakeRect(x, y, width, height)] autorelease];
}

TEST(View, ItsEdgesAreThoseOfItsFrame)
{
    FrameCounter *view = viewAt(10, 20, 30, 40);
    [view setBounds:NSMakeRect(0, 0, 300, 400)];  // not looked at
    EXPECT_EQ([view left], 10);
    EXPECT_EQ([view right], 40);
    EXPECT_EQ([view bottom], 20);
    EXPECT_EQ([view top], 60);
    EXPECT_EQ([view width], 30);
    EXPECT_EQ([view height], 40);
    EXPECT_TRUE(NSEqualPoints([view leftTop], NSMakePoint(10, 60)));
    EXPECT_TRUE(NSEqualPoints([view rightBottom], NSMakePoint(40, 20)));
    EXPECT_EQ([view horizontalCenter], 25);
    EXPECT_EQ([view verticalCenter], 40);
    view->mSets = 0;
    [view horizontalCenterMoveTo:0];
    [view verticalCenterMoveTo:0];
    EXPECT_TRUE(NSEqualRects([view frame], NSMakeRect(-15, -20, 30, 40)));
    [view leftMoveTo:0], [view topMoveTo:100], [view horizontalMove:1], [view verticalMove:1];
    EXPECT_TRUE(NSEqualRects([view frame], NSMakeRect(1, 61, 30, 40)));
    [view rightMoveTo:30], [view bottomMoveTo:0], [view leftResize:1], [view rightResize:-1],
        [view topResize:2], [view bottomResize:3];
    EXPECT_TRUE(NSEqualRects([view frame], NSMakeRect(-1, -3, 30, 45)));
    [view leftResizeTo:0], [view rightResizeTo:10], [view topResizeTo:10], [view bottomResizeTo:0];
    EXPECT_TRUE(NSEqualRects([view frame], NSMakeRect(0, 0, 10, 10)));
    [view setHeightResizingTop:20], [view setHeightResizingBottom:30], [view setWidthResizingLeft:20],
        [view setWidthResizingRight:30];
    EXPECT_TRUE(NSEqualRects([view frame], NSMakeRect(-10, -10, 30, 30)));
    EXPECT_EQ(view->mSets, 20);
}

TEST(View, TakenOutAndPutBackIsNeitherLostNorLeaked)
{
    NSView *one = viewAt(0, 0, 10, 10), *two = viewAt(0, 0, 10, 10), *moved = viewAt(1, 1, 2, 2);
    EXPECT_FALSE([moved unuseFromSuperview]);
    EXPECT_FALSE([moved useInView:nil]);
    [one addSubview:moved];
    const NSUInteger owners = [moved retainCount];
    EXPECT_FALSE([moved useInView:one]);
    EXPECT_FALSE([moved useInView:moved]);
    EXPECT_TRUE([moved useInView:two]);  // straight from one to the other
    EXPECT_EQ([moved superview], two);
    EXPECT_EQ([moved retainCount], owners);
    EXPECT_TRUE([moved unuseFromSuperview]);
    EXPECT_EQ([moved superview], nil);
    EXPECT_EQ([moved retainCount], owners);
    EXPECT_TRUE([moved useInView:one]);
    EXPECT_EQ([moved retainCount], owners);
}

TEST(View, LetsTheKeyboardFocusWander)
{
    const TestWindow window;
    FrameCounter *first = viewAt(0, 0, 10, 10), *second = viewAt(20, 0, 10, 10);
    window.add(first);
    window.add(second);
    [first setNextKeyView:second];
    [second setNextKeyView:first];
    [second getTabFocus];
    EXPECT_EQ([window.get() firstResponder], second);
    [second forwardTabFocus];
    EXPECT_EQ([window.get() firstResponder], first);
    [first backTabFocus];
    EXPECT_EQ([window.get() firstResponder], second);
    [viewAt(0, 0, 1, 1) getTabFocus];  // without a window
}

TEST(View, KnowsWhereTheMouseIs)
{
    const TestWindow window;
    FrameCounter *view = viewAt(100, 50, 10, 10);
    EXPECT_TRUE(NSEqualPoints([view mouseLocation], NSMakePoint(2147483648.0, 2147483648.0)));
    window.add(view);
    window.show();
    {
        const Hand hand("mousemove " + onScreen(view, NSMakePoint(7, 11)));
    }
    EXPECT_NEAR([window.get() mouseLocation].x, 107, 1);
    EXPECT_NEAR([window.get() mouseLocation].y, 61, 1);
    EXPECT_NEAR([view mouseLocation].x, 7, 1);
    EXPECT_NEAR([view mouseLocation].y, 11, 1);
}

}  // namespace
