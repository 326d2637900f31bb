#import <AppKit/AppKit.h>
#import <Tarvik/ui/NSPanel+Alerts.h>

#include <iterator>

namespace {

struct Style {
    decltype(&NSBeginAlertSheet) begin;
    decltype(&NSRunAlertPanel) run;
};

constexpr int32_t kNoSuchStyle = -2, kBegun = 1;

}  // namespace

@implementation NSPanel (AppKitXAlerts)

+ (int32_t)runGenericAlert:(int32_t)style
                    parent:(NSWindow *)parent
             modalDelegate:(id)delegate
            didEndSelector:(SEL)didEnd
        didDismissSelector:(SEL)didDismiss
               contextInfo:(void *)context
                     title:(NSString *)title
                   message:(NSString *)message
             defaultButton:(NSString *)defaultButton
           alternateButton:(NSString *)alternateButton
               otherButton:(NSString *)otherButton
{
    static const Style styles[] = {{NSBeginAlertSheet, NSRunAlertPanel},
                                   {NSBeginInformationalAlertSheet, NSRunInformationalAlertPanel},
                                   {NSBeginCriticalAlertSheet, NSRunCriticalAlertPanel}};
    if (style < 0 || style >= int32_t(std::size(styles)))
        return kNoSuchStyle;
    NSString *format = message ? message : @"";
    if (!parent)
        return int32_t(styles[style].run(title, format, defaultButton, alternateButton, otherButton));
    styles[style].begin(title, defaultButton, alternateButton, otherButton, parent, delegate, didEnd,
                        didDismiss, context, format);
    return kBegun;
}

@end
