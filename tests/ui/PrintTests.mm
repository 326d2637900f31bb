#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

/// Notes how wide it is when it is printed, and prints nothing.
@interface PrintedWidth : NSTextView {
@public
    CGFloat mWidth;
}
@end
@implementation PrintedWidth
- (void)print:(id)sender
{
    (void)sender;
    mWidth = NSWidth([self frame]);
    [NSException raise:NSGenericException format:@"no printer"];
}
@end

namespace {

TEST(Print, AScaledTextIsWiderAndItsFrameComesBackWhateverHappens)
{
    const TestWindow window;
    PrintedWidth *view =
        window.add([[[PrintedWidth alloc] initWithFrame:NSMakeRect(5, 6, 200, 150)] autorelease]);
    window.show();
    NSPrintInfo *info = [NSPrintInfo sharedPrintInfo];
    [[info dictionary] setObject:[NSNumber numberWithFloat:0.5] forKey:NSPrintScalingFactor];
    pressWhenShown(@"OK");
    EXPECT_TRUE([view runPrintModal]);
    EXPECT_NEAR(view->mWidth, ([info paperSize].width - [info leftMargin] - [info rightMargin]) * 2, 0.01);
    EXPECT_TRUE(NSEqualRects([view frame], NSMakeRect(5, 6, 200, 150)));
}

TEST(Print, TheTextIsAsWideAsThePage)
{
    const TestWindow window;
    NSTextView *view =
        window.add([[[NSTextView alloc] initWithFrame:NSMakeRect(5, 6, 2000, 150)] autorelease]);
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
