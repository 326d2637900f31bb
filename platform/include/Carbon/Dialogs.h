/// \file
/// The Dialog Manager's standard alert.
#pragma once
#include <Carbon/MacErrors.h>
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

#ifdef __cplusplus
}
#endif
