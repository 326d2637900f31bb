/// \file
/// The Dialog Manager's standard alerts: modal ones, and sheets whose answer arrives as an event.
///
///     AlertStdCFStringAlertParamRec look;
///     DialogRef alert;
///     DialogItemIndex hit;
///     if (GetStandardAlertDefaultParams(&look, kStdCFStringAlertVersionOne) == noErr &&
///         CreateStandardAlert(kAlertStopAlert, CFSTR("No room."), CFSTR("The disk is full."), &look, &alert) == noErr &&
///         RunStandardAlert(alert, NULL, &hit) == noErr) ...           // 1: OK
///
/// Buttons are told by number: 1 default, 2 cancel, 3 other, 4 help. Thread: main.
#pragma once
#include <Carbon/CarbonEvents.h>
#include <Carbon/MacErrors.h>
#include <Carbon/MacWindows.h>
#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt16 AlertType;
enum {
    kAlertStopAlert = 0,
    kAlertNoteAlert = 1,
    kAlertCautionAlert = 2,
    kAlertPlainAlert = 3,
};
enum {
    kAlertStdAlertOKButton = 1,
    kAlertStdAlertCancelButton = 2,
    kAlertStdAlertOtherButton = 3,
    kAlertStdAlertHelpButton = 4,
};
enum { kWindowDefaultPosition = 0x0000 };

/// Sees the alert's events before the alert does; the platform's own event type is opaque here.
typedef Boolean (*ModalFilterUPP)(void *dialog, void *event, SInt16 *itemHit);

typedef struct AlertStdAlertParamRec {
    Boolean movable;
    Boolean helpButton;
    ModalFilterUPP filterProc;     ///< or null
    ConstStringPtr defaultText;    ///< button 1, a Pascal string; null: "OK"
    ConstStringPtr cancelText;     ///< button 2; null: no such button
    ConstStringPtr otherText;      ///< button 3; null: no such button
    SInt16 defaultButton;          ///< the button that Return presses
    SInt16 cancelButton;           ///< the button that Escape presses; 0: none
    UInt16 position;               ///< kWindowDefaultPosition
} AlertStdAlertParamRec;
typedef AlertStdAlertParamRec *AlertStdAlertParamPtr;

/// Shows a modal alert with two Pascal-string texts and waits for the user.
/// \param itemHit receives 1 (default), 2 (cancel) or 3 (other); untouched on failure.
/// \return noErr; paramErr for a null itemHit; unimpErr when nothing in the process can show an alert
///         (it takes libtarvik-ui and a display).
/// Thread: main.
OSErr StandardAlert(AlertType alertType, ConstStr255Param error, ConstStr255Param explanation,
                    const AlertStdAlertParamRec *alertParam, SInt16 *itemHit);

/// Shows an alert in StandardAlert's place: the floor that has windows installs its own when it is loaded.
typedef OSErr (*StandardAlertPresenter)(AlertType alertType, ConstStr255Param error, ConstStr255Param explanation,
                                        const AlertStdAlertParamRec *alertParam, SInt16 *itemHit);
/// Installs the presenter (null removes it) and returns the one before.
StandardAlertPresenter SetStandardAlertPresenter(StandardAlertPresenter presenter);

typedef struct OpaqueDialogPtr *DialogRef;
typedef SInt16 DialogItemIndex;

/// Standard titles: "OK", "Cancel" and "Don't Save".
#define kAlertDefaultOKText ((CFStringRef)-1L)
#define kAlertDefaultCancelText ((CFStringRef)-1L)
#define kAlertDefaultOtherText ((CFStringRef)-1L)

enum { kStdCFStringAlertVersionOne = 1 };
enum { kStdAlertDoNotDisposeSheet = 1 << 0 };  ///< the caller closes the sheet's dialog (CloseStandardSheet)

typedef struct AlertStdCFStringAlertParamRec {
    UInt32 version;            ///< kStdCFStringAlertVersionOne
    Boolean movable;
    Boolean helpButton;
    CFStringRef defaultText;   ///< button 1; null: no such button
    CFStringRef cancelText;    ///< button 2; null: no such button
    CFStringRef otherText;     ///< button 3; null: no such button
    SInt16 defaultButton;      ///< the button that Return presses
    SInt16 cancelButton;       ///< the button that Escape presses; 0: none
    UInt16 position;           ///< kWindowDefaultPosition, or a WindowPositionMethod of MacWindows.h
    OptionBits flags;          ///< kStdAlertDoNotDisposeSheet; others have no effect
} AlertStdCFStringAlertParamRec;
typedef AlertStdCFStringAlertParamRec *AlertStdCFStringAlertParamPtr;

/// One button, "OK", which Return presses. paramErr for null and for another version.
OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamPtr param, UInt32 version);
/// Makes an alert, not shown yet. A null record means the default one. paramErr for a null result; unimpErr without a display.
OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, DialogRef *outAlert);
/// Shows the alert, waits for the user and disposes of it. The filter sees each event first (an NSEvent); when it answers true,
/// the alert ends with the item that it set. paramErr for null and for an alert that is no more.
OSStatus RunStandardAlert(DialogRef alert, ModalFilterUPP filter, DialogItemIndex *outItemHit);
/// Makes a sheet that ShowSheetWindow shows. The answer is an event (kEventClassCommand, kEventCommandProcess) for the target, whose
/// HICommand is kHICommandOK, kHICommandCancel or kHICommandOther; the sheet is disposed of then.
OSStatus CreateStandardSheet(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, EventTargetRef notifyTarget, DialogRef *outSheet);
/// Ends a sheet as if the button of the command had been pressed; 0: without telling the target.
OSStatus CloseStandardSheet(DialogRef sheet, OSStatus resultCommand);
/// Null for null and for a dialog that is no more.
WindowRef GetDialogWindow(DialogRef dialog);

#ifdef __cplusplus
}
#endif
