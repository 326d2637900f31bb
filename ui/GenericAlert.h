/// \file
/// The toolbox's standard alert or sheet in one call, on every version of the system.
///
///     DialogRunGenericAlert(kAlertStopAlert, NULL, true, CFSTR("The disk is full."), CFSTR("Delete something."), false,
///                           CFSTR("Try Again"), CFSTR("Cancel"), NULL, 0, 0, 0, 0, NULL, NULL, NULL, NULL, NULL);
///     -> 1 for Try Again, 2 for Cancel
///
/// Thread: main.
#pragma once
#include <Carbon/Dialogs.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Called before the alert is shown and after it ran. The dialog is null on systems before 10.0; in the second call of a
/// modal alert it only names the dialog, which has gone.
typedef void (*DialogRunCallback)(DialogRef dialog, void *userData);

/// \param parent null: a modal alert, whose item (1 default, 2 cancel, 3 other, 4 help) is the result. Otherwise a sheet:
///        1 at once, and the user's choice is sent to the target as a command (kHICommandOK and so on).
/// \param defaultText,cancelText,otherText null: as the system has them (one button, "OK")
/// \param defaultButton,cancelButton,position,flags 0: as the system has them
/// \param filter of a modal alert; \param notifyTarget of a sheet
/// \param before,after null: none; `after` is only called when the alert ran
/// \return 0 when a toolbox call failed.
SInt16 DialogRunGenericAlert(UInt16 alertType, WindowRef parent, Boolean movable, CFStringRef error,
                             CFStringRef explanation, Boolean helpButton, CFStringRef defaultText,
                             CFStringRef cancelText, CFStringRef otherText, UInt16 defaultButton,
                             UInt16 cancelButton, UInt16 position, OptionBits flags, ModalFilterUPP filter,
                             EventTargetRef notifyTarget, DialogRunCallback before, DialogRunCallback after,
                             void *userData);

#ifdef __cplusplus
}
#endif
