// The alert that this floor shows: an icon, a message, an explanation, buttons.
#pragma once
#import <AppKit/NSPanel.h>

#include <functional>
#include <vector>

enum class AlertKind { Stop, Note, Caution, Plain };

struct AlertButton {
    NSString *title;  // nil: no such button
    NSInteger code;   // what the alert answers when it is pressed
    bool isDefault = false, isCancel = false;  // Return and Escape press it
};

@interface AlertPanel : NSPanel {
    void *mCalls;  // an Objective-C class can't name the types of what is called
}
/// The first button stands at the right, the next ones to its left; a third one, and the help button (helpCode not 0), at
/// the left edge. An alert that can't be moved has no title bar.
+ (AlertPanel *)alertOfKind:(AlertKind)kind
                    message:(NSString *)message
                explanation:(NSString *)explanation
                    buttons:(const std::vector<AlertButton> &)buttons
                   helpCode:(NSInteger)helpCode
                    movable:(BOOL)movable;
@end

/// Sees each event first; true ends the alert with the code.
using AlertFilter = std::function<bool(NSEvent *event, NSInteger &code)>;
/// Waits for the answer.
NSInteger RunAlert(AlertPanel *panel, const AlertFilter &filter = {});

/// Called with the code, first while the panel is still there, then when it has gone.
using AlertAnswer = std::function<void(NSInteger code, bool isGone)>;
/// Shows the panel as a sheet; returns at once.
void BeginAlert(AlertPanel *panel, NSWindow *parent, const AlertAnswer &answer);
