#import <AppKit/AppKit.h>
#include <Carbon/MacWindows.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

namespace {

class Window : public testing::Test {
protected:
    void SetUp() override { [NSApplication sharedApplication]; }
};

bool operator==(const Rect &one, const Rect &other)
{
    return one.top == other.top && one.left == other.left && one.bottom == other.bottom &&
           one.right == other.right;
}

TEST_F(Window, IsMadeMovedShownAndDisposedOf)
{
    const Rect bounds = {100, 120, 300, 520};
    WindowRef window = nullptr;
    ASSERT_EQ(CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds, &window),
              noErr);
    Rect found;
    ASSERT_EQ(GetWindowBounds(window, kWindowContentRgn, &found), noErr);
    EXPECT_TRUE(found == bounds);
    ASSERT_EQ(GetWindowBounds(window, kWindowStructureRgn, &found), noErr);
    EXPECT_LE(found.top, bounds.top);
    const Rect other = {50, 60, 250, 260};
    ASSERT_EQ(SetWindowBounds(window, kWindowStructureRgn, &other), noErr);
    ASSERT_EQ(GetWindowBounds(window, kWindowStructureRgn, &found), noErr);
    EXPECT_TRUE(found == other);
    EXPECT_EQ(GetWindowBounds(window, 7, &found), paramErr);

    WindowAttributes attributes = 0;
    EXPECT_EQ(GetWindowAttributes(window, &attributes), noErr);
    EXPECT_EQ(attributes, WindowAttributes(kWindowStandardDocumentAttributes));
    EXPECT_FALSE(IsWindowVisible(window));
    ShowWindow(window);
    EXPECT_TRUE(IsWindowVisible(window));
    HideWindow(window);
    EXPECT_FALSE(IsWindowVisible(window));
    EXPECT_EQ(SetWindowTitleWithCFString(window, (CFStringRef) @"Títle"), noErr);
    CFStringRef title = nullptr;
    EXPECT_EQ(CopyWindowTitleAsCFString(window, &title), noErr);
    EXPECT_TRUE([(NSString *)title isEqual:@"Títle"]);
    CFRelease(title);
    EXPECT_EQ(GetWRefCon(window), 0);
    SetWRefCon(window, -7);
    EXPECT_EQ(GetWRefCon(window), -7);

    DisposeWindow(window);
    EXPECT_FALSE(IsValidWindowPtr(window));
    DisposeWindow(window);
    EXPECT_EQ(GetWindowBounds(window, kWindowContentRgn, &found), errInvalidWindowPtr);
    EXPECT_EQ(GetWRefCon(window), 0);
    ShowWindow(nullptr);
}

TEST_F(Window, OfEachClassWithTheAttributesItMayHave)
{
    const Rect bounds = {0, 0, 100, 100}, empty = {0, 0, 0, 100};
    WindowRef window = nullptr;
    EXPECT_EQ(CreateNewWindow(99, 0, &bounds, &window), errUnrecognizedWindowClass);
    EXPECT_EQ(CreateNewWindow(kPlainWindowClass, kWindowCloseBoxAttribute, &bounds, &window),
              errUnsupportedWindowAttributesForClass);
    EXPECT_EQ(CreateNewWindow(kDocumentWindowClass, 0, &empty, &window), paramErr);
    EXPECT_EQ(CreateNewWindow(kDocumentWindowClass, 0, nullptr, &window), paramErr);
    EXPECT_EQ(window, nullptr);
    for (WindowClass each : {1, 2, 3, 4, 5, 6, 8, 11, 13}) {
        ASSERT_EQ(CreateNewWindow(each, 0, &bounds, &window), noErr) << each;
        WindowClass found = 0;
        EXPECT_EQ(GetWindowClass(window, &found), noErr);
        EXPECT_EQ(found, each);
        DisposeWindow(window);
    }
}

TEST_F(Window, AndItsReferenceKnowEachOther)
{
    WindowRef reference = nullptr;
    {
        tarvik::Pool pool;
        NSWindow *window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                       styleMask:NSTitledWindowMask
                                                         backing:NSBackingStoreBuffered
                                                           defer:YES];
        [window setReleasedWhenClosed:NO];
        reference = (WindowRef)[window windowRef];
        EXPECT_EQ([window windowRef], reference);
        const NSUInteger owners = [window retainCount];
        NSWindow *same = [[NSWindow alloc] initWithWindowRef:reference];
        EXPECT_EQ(same, window);
        EXPECT_EQ([window retainCount], owners + 1);
        [same release];
        WindowClass found = 0;
        EXPECT_EQ(GetWindowClass(reference, &found), noErr);
        EXPECT_EQ(found, WindowClass(kDocumentWindowClass));
        EXPECT_TRUE(IsValidWindowPtr(reference));
        [window release];
    }
    EXPECT_FALSE(IsValidWindowPtr(reference));
    EXPECT_EQ([[NSWindow alloc] initWithWindowRef:reference], nil);
    EXPECT_EQ([[NSWindow alloc] initWithWindowRef:nullptr], nil);
}

}  // namespace
