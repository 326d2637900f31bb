// The platform's alert sheets, on sheets that don't hold up the application: gnustep-gui's take down their panel as soon as
// the sheet has been begun.
#import <AppKit/AppKit.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Retained.h>

#include "platform/AppKit/private/AlertPanel.h"

#include <cstdarg>

namespace {

using Call = void (*)(id, SEL, id, NSInteger, void *);

void call(id delegate, SEL selector, id sheet, NSInteger code, void *context)
{
    if (selector && [delegate respondsToSelector:selector])
        reinterpret_cast<Call>(reinterpret_cast<void (*)()>([delegate methodForSelector:selector]))(
            delegate, selector, sheet, code, context);
}

void begin(AlertKind kind, NSString *title, const std::vector<AlertButton> &buttons, NSString *text,
           NSWindow *parent, id delegate, SEL didEnd, SEL didDismiss, void *context)
{
    AlertPanel *panel = [AlertPanel alertOfKind:kind
                                        message:title ? title : @"Alert"
                                    explanation:text
                                        buttons:buttons
                                       helpCode:0
                                        movable:!parent];
    if (!parent) {
        const NSInteger code = [NSApp runModalForWindow:panel];  // still there when its end is told
        call(delegate, didEnd, panel, code, context);
        [panel orderOut:nil];
        return call(delegate, didDismiss, panel, code, context);
    }
    const auto kept = tarvik::retain<NSObject>(delegate);
    BeginAlert(panel, parent, [=](NSInteger code, bool isGone) {
        call(kept.get(), isGone ? didDismiss : didEnd, panel, code, context);
    });
}

void begin(AlertKind kind, NSString *title, NSString *first, NSString *second, NSString *third,
           NSWindow *parent, id delegate, SEL didEnd, SEL didDismiss, void *context, NSString *format,
           va_list arguments)
{
    const std::vector<AlertButton> buttons = {{first ? first : @"OK", NSAlertDefaultReturn, true},
                                              {second, NSAlertAlternateReturn, false, true},
                                              {third, NSAlertOtherReturn}};
    NSString *text =
        format ? [[[NSString alloc] initWithFormat:format arguments:arguments] autorelease] : @"";
    begin(kind, title, buttons, text, parent, delegate, didEnd, didDismiss, context);
}

AlertButton described(NSButton *button)
{
    AlertButton result{[button title], [button tag]};
    result.isDefault = [[button keyEquivalent] isEqual:@"\r"];
    result.isCancel = [[button keyEquivalent] isEqual:@"\e"];
    return result;
}

AlertKind kindOf(NSAlertStyle style)
{
    return style == NSCriticalAlertStyle        ? AlertKind::Stop
           : style == NSInformationalAlertStyle ? AlertKind::Note
                                                : AlertKind::Caution;
}

}  // namespace

extern "C" {

void NSBeginAlertSheet(NSString *title, NSString *first, NSString *second, NSString *third, NSWindow *parent,
                       id delegate, SEL didEnd, SEL didDismiss, void *context, NSString *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    begin(AlertKind::Caution, title, first, second, third, parent, delegate, didEnd, didDismiss, context,
          format, arguments);
    va_end(arguments);
}

void NSBeginInformationalAlertSheet(NSString *title, NSString *first, NSString *second, NSString *third,
                                    NSWindow *parent, id delegate, SEL didEnd, SEL didDismiss, void *context,
                                    NSString *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    begin(AlertKind::Note, title, first, second, third, parent, delegate, didEnd, didDismiss, context, format,
          arguments);
    va_end(arguments);
}

void NSBeginCriticalAlertSheet(NSString *title, NSString *first, NSString *second, NSString *third,
                               NSWindow *parent, id delegate, SEL didEnd, SEL didDismiss, void *context,
                               NSString *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    begin(AlertKind::Stop, title, first, second, third, parent, delegate, didEnd, didDismiss, context, format,
          arguments);
    va_end(arguments);
}

}  // extern "C"

@implementation NSAlert (Sheets)

- (void)beginSheetModalForWindow:(NSWindow *)parent
                   modalDelegate:(id)delegate
                  didEndSelector:(SEL)didEnd
                     contextInfo:(void *)context
{
    std::vector<AlertButton> buttons;
    for (NSButton *button : tarvik::each<NSButton>([self buttons]))
        buttons.push_back(described(button));
    if (buttons.empty())
        buttons.push_back({@"OK", NSAlertDefaultReturn, true});
    AlertPanel *panel = [AlertPanel alertOfKind:kindOf([self alertStyle])
                                        message:[self messageText]
                                    explanation:[self informativeText]
                                        buttons:buttons
                                       helpCode:0
                                        movable:NO];
    const auto kept = tarvik::retain<NSObject>(delegate);
    const auto alert = tarvik::retain(self);
    BeginAlert(panel, parent, [=](NSInteger code, bool isGone) {
        if (!isGone)
            call(kept.get(), didEnd, alert.get(), code, context);
    });
}

@end
