/// \file
/// Alerts in one call: a sheet of a window, or a modal panel.
///
///     [NSPanel runGenericAlert:0 parent:nil modalDelegate:nil didEndSelector:NULL didDismissSelector:NULL
///         contextInfo:NULL title:@"Delete 3 images?" message:@"100%% of them." defaultButton:@"Delete"
///         alternateButton:@"Keep" otherButton:nil];
///     -> 1 for Delete, 0 for Keep
///
/// Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSPanel.h>

#include <stdint.h>

@interface NSPanel (AppKitXAlerts)
/// Style 0: an alert, 1: an informational one, 2: a critical one; any other shows nothing and is answered by -2.
/// With a parent a sheet: 1 at once, and the selectors (sheet, code, context) bring the answer: 1 default, 0 alternate, -1 other.
/// Without one the answer itself, or -2 for an error.
/// The message is a format without arguments: write a percent sign twice. Nil for a button leaves it out (the default one: "OK").
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
               otherButton:(NSString *)otherButton;
@end
#endif
