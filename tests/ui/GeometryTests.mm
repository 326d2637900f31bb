#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

struct RectCase {
    const char *what;
    void (*change)(NSRect *);
    NSRect expected;
};

// Each starts from {10, 20, 30, 40}: left 10, right 40, bottom 20, top 60.
const RectCase kRectCases[] = {
    {"right edge to", [](NSRect *r) { NSRectRightMoveTo(r, 0); }, {{-30, 20}, {30, 40}}},
    {"top edge to", [](NSRect *r) { NSRectTopMoveTo(r, 0); }, {{10, -40}, {30, 40}}},
    {"left and bottom to",
     [](NSRect *r) { NSRectLeftMoveTo(r, 1), NSRectBottomMoveTo(r, 2); },
     {{1, 2}, {30, 40}}},
    {"both ways by",
     [](NSRect *r) { NSRectHorizontalMove(r, -1), NSRectVerticalMove(r, 2); },
     {{9, 22}, {30, 40}}},
    {"centre to",
     [](NSRect *r) {
         NSPoint p = {0, 0.5};
         NSRectCenterMoveTo(r, &p);
     },
     {{-15, -19.5}, {30, 40}}},
    {"centre to none", [](NSRect *r) { NSRectCenterMoveTo(r, nullptr); }, {{10, 20}, {30, 40}}},
    {"top by", [](NSRect *r) { NSRectTopResize(r, 5); }, {{10, 20}, {30, 45}}},
    {"top by too much", [](NSRect *r) { NSRectTopResize(r, -41); }, {{10, 20}, {30, 0}}},
    {"right by too much", [](NSRect *r) { NSRectRightResize(r, -31); }, {{10, 20}, {0, 40}}},
    {"bottom by, beyond the top", [](NSRect *r) { NSRectBottomResize(r, -45); }, {{10, 65}, {30, -5}}},
    {"left by, beyond the right", [](NSRect *r) { NSRectLeftResize(r, -32); }, {{42, 20}, {-2, 40}}},
    {"top to", [](NSRect *r) { NSRectTopResizeTo(r, 100); }, {{10, 20}, {30, 80}}},
    {"top to below the bottom", [](NSRect *r) { NSRectTopResizeTo(r, -100); }, {{10, 20}, {30, 0}}},
    {"right to left of the left", [](NSRect *r) { NSRectRightResizeTo(r, 9); }, {{10, 20}, {0, 40}}},
    {"bottom to", [](NSRect *r) { NSRectBottomResizeTo(r, 0); }, {{10, 0}, {30, 60}}},
    {"bottom to above the top", [](NSRect *r) { NSRectBottomResizeTo(r, 100); }, {{10, 60}, {30, 0}}},
    {"left to right of the right", [](NSRect *r) { NSRectLeftResizeTo(r, 50); }, {{40, 20}, {0, 40}}},
    {"height at the top", [](NSRect *r) { NSRectSetHeightResizingTop(r, 1); }, {{10, 20}, {30, 1}}},
    {"height at the bottom", [](NSRect *r) { NSRectSetHeightResizingBottom(r, 0); }, {{10, 60}, {30, 0}}},
    {"width at the right", [](NSRect *r) { NSRectSetWidthResizingRight(r, 1); }, {{10, 20}, {1, 40}}},
    {"width at the left", [](NSRect *r) { NSRectSetWidthResizingLeft(r, 31); }, {{9, 20}, {31, 40}}},
    {"negative sizes",
     [](NSRect *r) {
         NSRectSetHeightResizingTop(r, -1), NSRectSetHeightResizingBottom(r, -1);
         NSRectSetWidthResizingRight(r, -1), NSRectSetWidthResizingLeft(r, -1);
     },
     {{10, 20}, {30, 40}}},
};

TEST(Geometry, AnEdgeOfARectangleMoves)
{
    for (const RectCase &each : kRectCases) {
        NSRect rect = NSMakeRect(10, 20, 30, 40);
        each.change(&rect);
        EXPECT_TRUE(NSEqualRects(rect, each.expected))
            << each.what << ": " << rect.origin.x << " " << rect.origin.y << " " << rect.size.width << " "
            << rect.size.height;
        each.change(nullptr);
    }
    NSRect rect = NSMakeRect(10, 20, 30, 40);
    NSRectSetWidthResizingRight(&rect, NAN);
    EXPECT_TRUE(std::isnan(NSRectWidth(&rect)));
    EXPECT_EQ(NSRectTop(nullptr), 0);
    EXPECT_TRUE(NSEqualPoints(NSRectCenter(nullptr), NSZeroPoint));
    EXPECT_TRUE(NSEqualPoints(NSRectRightTop(nullptr), NSZeroPoint));
}

TEST(Geometry, ToolboxRectangles)
{
    Rect rect = RectMake(1, 2, 3, 14);
    EXPECT_EQ(rect.top, 1);
    EXPECT_EQ(rect.left, 2);
    EXPECT_EQ(rect.bottom, 3);
    EXPECT_EQ(RectRight(&rect), 14);
    EXPECT_EQ(RectWidth(&rect), 12);
    RectRightMoveTo(&rect, 20);
    EXPECT_TRUE(RectIsEqualTo(rect, RectMake(1, 8, 3, 20)));
    RectLeftMoveTo(&rect, 0);
    RectRightResize(&rect, -21);
    EXPECT_TRUE(RectIsEqualTo(rect, RectMake(1, 0, 3, -1)));
    RectHorizontalMove(&rect, -32768);
    EXPECT_TRUE(RectIsEqualTo(rect, RectMake(1, -32768, 3, 32767)));
    EXPECT_FALSE(RectIsEqualTo(rect, RectMake(0, -32768, 3, 32767)));
    EXPECT_EQ(RectRight(nullptr) + RectWidth(nullptr), 0);
    RectRightMoveTo(nullptr, 1);
}

TEST(Geometry, RangesEndWhereTheyMay)
{
    const struct {
        void (*change)(CFRange *);
        CFIndex location, length;
    } cases[] = {
        {[](CFRange *r) { CFRangeMove(r, -10); }, 0, 5},
        {[](CFRange *r) { CFRangeMove(r, 2); }, 5, 5},
        {[](CFRange *r) { EXPECT_FALSE(CFRangeMoveLeftTo(r, -1)); }, 3, 5},
        {[](CFRange *r) { EXPECT_TRUE(CFRangeMoveLeftTo(r, 0)); }, 0, 5},
        {[](CFRange *r) { CFRangeMoveRightTo(r, 7); }, 2, 5},
        {[](CFRange *r) { CFRangeMoveRightTo(r, 4); }, 0, 5},
        {[](CFRange *r) { CFRangeResizeLeft(r, 10); }, 0, 8},
        {[](CFRange *r) { CFRangeResizeLeft(r, -2); }, 5, 3},
        {[](CFRange *r) { CFRangeResizeLeft(r, -10); }, 8, 0},
        {[](CFRange *r) { CFRangeResizeLeftTo(r, -4); }, 0, 8},
        {[](CFRange *r) { CFRangeResizeLeftTo(r, 9); }, 8, 0},
        {[](CFRange *r) { CFRangeResizeRight(r, 10, 10); }, 3, 7},
        {[](CFRange *r) { CFRangeResizeRight(r, 10, -1); }, 3, 15},
        {[](CFRange *r) { CFRangeResizeRight(r, -10, 20); }, 3, 0},
        {[](CFRange *r) { CFRangeResizeRight(r, 0, 1); }, 3, -2},
        {[](CFRange *r) { CFRangeResizeRight(r, 0, 1), CFRangeResizeLeft(r, 0); }, 3, -2},
        {[](CFRange *r) { CFRangeResizeRightTo(r, 4); }, 3, 1},
        {[](CFRange *r) { CFRangeResizeRightTo(r, 2); }, 3, 0},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        CFRange range = CFRangeMake(3, 5);
        cases[i].change(&range);
        EXPECT_EQ(range.location, cases[i].location) << i;
        EXPECT_EQ(range.length, cases[i].length) << i;
        cases[i].change(nullptr);
    }
}

}  // namespace
