#import <AppKit/AppKit.h>
#include <Carbon/Controls.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/AppleEvents.h>
#include <tests/ui/Desktop.h>

#include <cmath>
#include <string>

/// Has data of its own, which grows with each look at it when it is told to.
@interface OwnData : NSView {
@public
    NSMutableData *mData;
    BOOL mGrows;
}
@end
@implementation OwnData
- (NSData *)controlDataForPart:(ControlPartCode)part tag:(ResType)tag
{
    if (part != 9 || tag != "own "_code)
        return nil;
    if (mGrows)
        [mData increaseLengthBy:1];
    return mData;
}
- (BOOL)setControlData:(NSData *)data forPart:(ControlPartCode)part tag:(ResType)tag
{
    if (part != 9 || tag != "own "_code)
        return NO;
    [mData setData:data];
    return YES;
}
- (void)dealloc
{
    [mData release];
    [super dealloc];
}
@end

@interface FlippedView : NSView
@end
@implementation FlippedView
- (BOOL)isFlipped
{
    return YES;
}
@end

namespace {

constexpr ControlPartCode kText = kControlEditTextPart;

class Control : public testing::Test {
protected:
    Control()
    {
        field_ = window_.add([[[NSTextField alloc] initWithFrame:NSMakeRect(20, 150, 100, 22)] autorelease]);
        button_ = window_.add([[[NSButton alloc] initWithFrame:NSMakeRect(20, 20, 80, 30)] autorelease]);
        own_ = window_.add([[[OwnData alloc] initWithFrame:NSMakeRect(200, 100, 50, 40)] autorelease]);
        own_->mData = [[NSMutableData alloc] initWithBytes:"abc" length:3];
    }
    const TestWindow window_;
    NSTextField *field_ = nil;
    NSButton *button_ = nil;
    OwnData *own_ = nil;
};

NSString *copied(ControlRef control) { return [(NSString *)ControlCopyString(control) autorelease]; }
NSData *copied(ControlRef control, ControlPartCode part, ResType tag)
{
    return [(NSData *)ControlCopyData(control, part, tag) autorelease];
}

TEST_F(Control, HoldsTextAndGivesCopies)
{
    const ControlRef field = [field_ controlRef];
    EXPECT_EQ([field_ controlRef], field);
    EXPECT_TRUE(ControlSetString(field, (CFStringRef) @"naïve 😀"));
    EXPECT_TRUE([[field_ stringValue] isEqual:@"naïve 😀"]);
    NSMutableString *text = (NSMutableString *)copied(field);
    [text appendString:@"!"];  // mutable, and its own
    EXPECT_TRUE([[field_ stringValue] isEqual:@"naïve 😀"]);
    EXPECT_EQ(ControlGetLength(field), 8);
    EXPECT_TRUE(
        [copied(field, kText, "text"_code) isEqual:[@"naïve 😀" dataUsingEncoding:NSUTF8StringEncoding]]);
    EXPECT_TRUE(
        ControlSetData(field, (CFDataRef)[NSData dataWithBytes:"plain" length:5], kText, "text"_code));
    EXPECT_TRUE([copied(field) isEqual:@"plain"]);

    const ControlRef button = [button_ controlRef];
    EXPECT_EQ(copied(button), nil);
    EXPECT_EQ(ControlGetLength(button), 0);
    EXPECT_FALSE(ControlSetString(button, (CFStringRef) @"x"));
    EXPECT_FALSE(ControlSetString(field, nullptr));
    EXPECT_FALSE(ControlSetData(field, (CFDataRef)[NSData dataWithBytes:"\xFF\xFE" length:2], kText,
                                "text"_code));  // no text
    EXPECT_TRUE([copied(field) isEqual:@"plain"]);
    EXPECT_EQ(ControlCopyString(nullptr), nullptr);
}

TEST_F(Control, DataIsOfAPartATagAndASize)
{
    const ControlRef field = [field_ controlRef], button = [button_ controlRef], own = [own_ controlRef];
    const Boolean yes = 1;
    Boolean is = 2;
    EXPECT_EQ(SetControlData(button, 0, "dflt"_code, sizeof yes, &yes), noErr);
    EXPECT_TRUE([[button_ keyEquivalent] isEqual:@"\r"]);
    EXPECT_EQ(GetControlData(button, 0, "cncl"_code, sizeof is, &is, nullptr), noErr);
    EXPECT_EQ(is, 0);
    EXPECT_EQ(SetControlData(field, kText, "lock"_code, sizeof yes, &yes), noErr);
    EXPECT_FALSE([field_ isEditable]);
    char text[] = "kept";
    Size size = 9;
    EXPECT_EQ(GetControlData(field, kText, "text"_code, sizeof text, text, &size), noErr);
    EXPECT_EQ(size, 0);  // an empty field
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(SetControlData(field, kText, "lock"_code, 3, "abc"), errDataSizeMismatch);
    EXPECT_EQ(SetControlData(field, kText, "cfst"_code, 4, "abcd"), errDataSizeMismatch);
    EXPECT_EQ(SetControlData(field, 3, "text"_code, 1, "a"), errInvalidPartCode);
    EXPECT_EQ(SetControlData(field, kText, "none"_code, 1, "a"), errDataNotSupported);
    EXPECT_EQ(SetControlData(field, kText, "text"_code, -1, "a"), paramErr);

    EXPECT_TRUE([copied(own, 9, "own "_code) isEqual:[NSData dataWithBytes:"abc" length:3]]);
    EXPECT_TRUE(ControlSetData(own, (CFDataRef)[NSData data], 9, "own "_code));
    EXPECT_EQ([copied(own, 9, "own "_code) length], 0u);
    EXPECT_EQ(ControlCopyData(own, kText, "text"_code), nullptr);
    own_->mGrows = YES;
    EXPECT_EQ(ControlCopyData(own, 9, "own "_code), nullptr);  // not what it was when its size was asked
}

TEST_F(Control, ASelectionIsKeptUntilItIsEdited)
{
    const ControlRef field = [field_ controlRef];
    window_.show();
    [window_.get() makeFirstResponder:nil];
    [field_ setStringValue:@"0123456789"];
    const CFRange middle = CFRangeMake(2, 3), beyond = CFRangeMake(4, 100), none = CFRangeMake(0, 0);
    EXPECT_EQ(ControlSetSelectionRange(field, &middle), noErr);
    EXPECT_EQ(ControlGetSelectionRange(field).location, 2);
    EXPECT_EQ(SetKeyboardFocus((WindowRef)[window_.get() windowRef], field, kText), noErr);
    ASSERT_TRUE([field_ currentEditor] != nil);
    EXPECT_TRUE(NSEqualRanges([[field_ currentEditor] selectedRange], NSMakeRange(2, 3)));
    EXPECT_EQ(ControlSetSelectionRange(field, &beyond), noErr);
    EXPECT_EQ(ControlGetSelectionRange(field).location, 4);
    EXPECT_EQ(ControlGetSelectionRange(field).length, 6);
    [[field_ currentEditor] insertText:@"x"];  // as a key would
    EXPECT_TRUE([copied(field) isEqual:@"0123x"]) << [copied(field) UTF8String];

    EXPECT_EQ(ControlSetSelectionRange(nullptr, &none), 0);
    EXPECT_EQ(ControlSetSelectionRange(field, nullptr), 0);
    EXPECT_EQ(ControlSetSelectionRange([button_ controlRef], &none), errDataNotSupported);
    EXPECT_EQ(ControlGetSelectionRange([button_ controlRef]).length, 0);
}

TEST_F(Control, IsFoundByItsName)
{
    const WindowRef window = (WindowRef)[window_.get() windowRef];
    NSButton *inner = [[[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)] autorelease];
    [own_ addSubview:inner];
    [inner setTag:12];
    const ControlID name = {"demo"_code, 7};
    EXPECT_EQ(SetControlID([inner controlRef], &name), noErr);
    [button_ setTag:12];
    EXPECT_EQ(ControlForControlID(window, "demo"_code, 7), [inner controlRef]);
    EXPECT_EQ(ControlForControlID(window, 0, 12), [button_ controlRef]);
    EXPECT_EQ(HIViewFindFromWindow(window, "demo"_code, 7), [inner controlRef]);
    EXPECT_EQ(HIViewFindFromView([own_ controlRef], "demo"_code, 7), [inner controlRef]);
    EXPECT_EQ(HIViewFindFromView([inner controlRef], "demo"_code, 7), [inner controlRef]);
    EXPECT_EQ(HIViewFindFromView([own_ controlRef], 0, 12), nullptr);
    EXPECT_EQ(ControlForControlID(window, "demo"_code, 8), nullptr);
    EXPECT_EQ(ControlForControlID(nullptr, "demo"_code, 7), nullptr);
    EXPECT_EQ(HIViewFindFromWindow(nullptr, "demo"_code, 7), nullptr);
    SetWRefCon(window, 0x1234567F0);
    EXPECT_EQ(ControlGetWindowRefCon([inner controlRef]), 0x234567F0);
    EXPECT_EQ(ControlGetWindowRefCon(nullptr), 0);
    EXPECT_EQ(WindowDumpControlHierarchy(), 0);
}

TEST_F(Control, StandsInTheContentFromItsTopLeftCorner)
{
    NSView *flipped =
        window_.add([[[FlippedView alloc] initWithFrame:NSMakeRect(100, 0, 100, 100)] autorelease]);
    NSButton *inner = [[[NSButton alloc] initWithFrame:NSMakeRect(10, 20, 30, 40)] autorelease];
    [flipped addSubview:inner];
    const CGFloat height = NSHeight([[window_.get() contentView] bounds]);
    Rect bounds;
    GetControlBounds([inner controlRef], &bounds);
    EXPECT_TRUE(RectIsEqualTo(bounds, RectMake(int16_t(height - 80), 110, int16_t(height - 40), 140)));
    bounds = RectMake(int16_t(height - 90), 120, int16_t(height - 80), 125);
    SetControlBounds([inner controlRef], &bounds);
    EXPECT_TRUE(NSEqualRects([inner frame], NSMakeRect(20, 10, 5, 10)));
    GetControlBounds(nullptr, &bounds);
    EXPECT_TRUE(RectIsEqualTo(bounds, RectMake(0, 0, 0, 0)));
}

struct Adjustment {
    Boolean takes;
    Rect old, proposed;
};
Boolean adjust(const Rect *old, Rect *proposed, void *userData)
{
    auto *adjustment = static_cast<Adjustment *>(userData);
    adjustment->old = *old;
    adjustment->proposed = *proposed;
    RectRightResize(proposed, 10);
    return adjustment->takes;
}

TEST_F(Control, IsFittedToItsContent)
{
    const ControlRef button = [button_ controlRef];
    [button_ setTitle:@"A rather long title of a button"];
    const CGFloat top = NSMaxY([button_ frame]), needed = std::ceil([[button_ cell] cellSize].width);
    Adjustment adjustment = {false, {}, {}};
    EXPECT_TRUE(ControlSizeToFit(button, adjust, &adjustment));
    EXPECT_EQ(NSWidth([button_ frame]), 80);
    EXPECT_EQ(RectWidth(&adjustment.old), 80);
    EXPECT_EQ(RectWidth(&adjustment.proposed), needed);
    adjustment.takes = true;
    EXPECT_TRUE(ControlSizeToFit(button, adjust, &adjustment));
    EXPECT_EQ(NSWidth([button_ frame]), needed + 10);
    EXPECT_TRUE(ControlSizeToFit(button, nullptr, nullptr));
    EXPECT_EQ(NSWidth([button_ frame]), needed);
    EXPECT_EQ(NSMaxY([button_ frame]), top);

    EXPECT_FALSE(ControlSizeToFit([own_ controlRef], nullptr, nullptr));  // no control
    NSControl *without = window_.add([[[NSControl alloc] initWithFrame:NSMakeRect(5, 5, 5, 5)] autorelease]);
    [without setCell:nil];
    EXPECT_FALSE(
        ControlSizeToFit([without controlRef], adjust, nullptr));  // all zeros: the adjuster is not asked
    EXPECT_FALSE(ControlSizeToFit(nullptr, nullptr, nullptr));
}

TEST(ControlReference, EndsWithItsView)
{
    [NSApplication sharedApplication];
    ControlRef gone = nullptr;
    {
        const tarvik::Pool pool;
        NSButton *button = [[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
        gone = [button controlRef];
        EXPECT_EQ([NSView viewWithControlRef:gone], button);
        EXPECT_EQ(GetControlOwner(gone), nullptr);
        EXPECT_EQ(ControlGetWindowRefCon(gone), 0);
        [button release];
    }
    UInt32 command = 0;
    EXPECT_EQ([NSView viewWithControlRef:gone], nil);
    EXPECT_EQ(GetControlCommandID(gone, &command), controlHandleInvalidErr);
    EXPECT_EQ(ControlCopyData(gone, kText, "text"_code), nullptr);
    EXPECT_FALSE(ControlSizeToFit(gone, nullptr, nullptr));
}

}  // namespace
