#import <AppKit/NSPageLayout.h>
#import <AppKit/NSPanel.h>
#import <AppKit/NSPrintInfo.h>
#import <Foundation/NSDictionary.h>
#import <Foundation/NSValue.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/ui/NSTextView+Printing.h>

namespace {

CGFloat printableWidth(NSPrintInfo *info)
{
    NSNumber *factor = [[info dictionary] objectForKey:NSPrintScalingFactor];
    const float scale = factor ? [factor floatValue] : 1.0f;
    return ([info paperSize].width - [info leftMargin] - [info rightMargin]) / scale;
}

}  // namespace

@implementation NSTextView (AppKitX)

- (BOOL)runPrintModal
{
    NSPrintInfo *info = [NSPrintInfo sharedPrintInfo];
    if ([[NSPageLayout pageLayout] runModalWithPrintInfo:info] != NSOKButton)
        return NO;
    const NSRect frame = [self frame];
    [info setVerticallyCentered:NO];
    tarvik::guarded("-[NSTextView(AppKitX) runPrintModal]", __LINE__, [&] {
        [self setFrame:NSMakeRect(frame.origin.x, frame.origin.y, printableWidth(info), frame.size.height)];
        [self print:self];
    });
    [self setFrame:frame];
    return YES;
}

@end
