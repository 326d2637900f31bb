// The alert that this floor shows: an icon, a message, an explanation, buttons.
#pragma once
#import <AppKit/NSPanel.h>
#import <AppKit/NSTextField.h>

#include <functional>
#include <vector>

enum class AlertKind { Stop, Note, Caution, Plain };

struct AlertButton {
    NSString *title;                           // nil: no such button
    NSInteger code;                            // what the alert answers when it is pressed
    bool isDefault = false, isCancel = false;  // Return and Escape press it
};

/// What there is beside the texts and the buttons.
struct AlertExtras {
    NSInteger helpCode = 0;        // what the help button answers; 0: there is none
    bool movable = false;          // one that can't be moved has no title bar
    bool buttonsTogether = false;  // all at the right, none at the left edge
    NSString *title = nil;         // of the window
    NSTextField *field = nil;      // to type into, below the texts
};

@interface AlertPanel : NSPanel {
    void *mCalls;  // an Objective-C class can't name the types of what is called
}
/// The first button stands at the right, the next ones to its left; a third one, and the help button, at the left edge.
+ (AlertPanel *)alertOfKind:(AlertKind)kind
                    message:(NSString *)message
                explanation:(NSString *)explanation
                    buttons:(const std::vector<AlertButton> &)buttons
                     extras:(const AlertExtras &)extras;
+ (AlertPanel *)alertOfKind:(AlertKind)kind
                    message:(NSString *)message
                explanation:(NSString *)explanation
                    buttons:(const std::vector<AlertButton> &)buttons
                   helpCode:(NSInteger)helpCode
                    movable:(BOOL)movable;
/// Ends it from outside.
- (void)endWithCode:(NSInteger)code;
@end

/// Sees each event first; true ends the alert with the code.
using AlertFilter = std::function<bool(NSEvent *event, NSInteger &code)>;
/// Waits for the answer.
NSInteger RunAlert(AlertPanel *panel, const AlertFilter &filter = {});

/// Called with the code, first while the panel is still there, then when it has gone.
using AlertAnswer = std::function<void(NSInteger code, bool isGone)>;
/// Shows the panel as a sheet; returns at once.
void BeginAlert(AlertPanel *panel, NSWindow *parent, const AlertAnswer &answer);
