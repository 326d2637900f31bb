#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

namespace {

NSButton *buttonTitled(NSView *view, NSString *title)
{
    if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqual:title])
        return (NSButton *)view;
    for (NSView *each : tarvik::each<NSView>([view subviews]))
        if (NSButton *found = buttonTitled(each, title))
            return found;
    return nil;
}

/// Presses a button of the panel that has it, as soon as it is shown.
void pressWhenShown(NSString *title)
{
    later(0.05, [title] {
        NSButton *button = buttonTitled([[[NSApp modalWindow] contentView] superview], title);
        if (!button)
            return pressWhenShown(title);
        [button performClick:nil];
        // A modal loop looks whether it is to end when an event has come.
        [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined location:NSZeroPoint modifierFlags:0 timestamp:0
                                        windowNumber:0 context:nil subtype:0 data1:0 data2:0]
                 atStart:NO];
    });
}

TEST(Print, TheTextIsAsWideAsThePage)
{
    const TestWindow window;
    NSTextView *view = window.add([[[NSTextView alloc] initWithFrame:NSMakeRect(5, 6, 2000, 150)] autorelease]);
    NSMutableString *text = [NSMutableString string];
    for (int i = 0; i < 100; ++i)
        [text appendString:@"many words "];
    [view setString:text];
    window.show();
    const NSRect frame = [view frame];

    pressWhenShown(@"Cancel");
    EXPECT_FALSE([view runPrintModal]);
    EXPECT_TRUE(NSEqualRects([view frame], frame));

    TemporaryFolder folder;
    const std::string path = folder / "page.pdf";
    NSPrintInfo *info = [NSPrintInfo sharedPrintInfo];
    [info setJobDisposition:NSPrintSaveJob];
    [[info dictionary] setObject:tarvik::nsstring(path) forKey:NSPrintSavePath];
    [info setLeftMargin:100];
    [info setRightMargin:50];
    [info setVerticallyCentered:YES];
    pressWhenShown(@"OK");
    pressWhenShown(@"Print");
    EXPECT_TRUE([view runPrintModal]);
    EXPECT_FALSE([info isVerticallyCentered]);
    EXPECT_TRUE(NSEqualRects([view frame], frame));

    const ProgramResult words = runProgram({"pdftotext", "-bbox", path, "-"});
    ASSERT_EQ(words.status, 0) << words.error;
    size_t count = 0;
    double left = 1e9, right = 0;
    for (size_t at = 0; (at = words.out.find("<word xMin=\"", at)) != std::string::npos; ++count) {
        left = std::min(left, std::stod(words.out.substr(at += 12)));
        right = std::max(right, std::stod(words.out.substr(words.out.find("xMax=\"", at) + 6)));
    }
    EXPECT_EQ(count, 200u);
    EXPECT_GE(left, 100);
    EXPECT_LT(left, 120);
    EXPECT_LE(right, [info paperSize].width - 50);
    EXPECT_GT(right, [info paperSize].width - 130);
}

}  // namespace
