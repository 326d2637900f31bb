#import <AppKit/AppKit.h>
#include <Carbon/Dialogs.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Retained.h>

#import "platform/AppKit/private/AlertPanel.h"
#import "platform/AppKit/private/WindowReference.h"

#include <map>
#include <memory>

struct OpaqueDialogPtr {
    tarvik::Retained<AlertPanel *> panel;
    EventTargetRef target = nullptr;
    UInt16 position = kWindowDefaultPosition;
    OptionBits flags = 0;
    bool isSheet = false;
};

namespace {

std::map<DialogRef, std::unique_ptr<OpaqueDialogPtr>> gDialogs;

OpaqueDialogPtr *known(DialogRef dialog)
{
    const auto found = gDialogs.find(dialog);
    return found == gDialogs.end() ? nullptr : found->second.get();
}

AlertKind kindOf(AlertType type)
{
    switch (type) {
    case kAlertStopAlert: return AlertKind::Stop;
    case kAlertNoteAlert: return AlertKind::Note;
    case kAlertCautionAlert: return AlertKind::Caution;
    default: return AlertKind::Plain;
    }
}

NSString *title(CFStringRef text, NSString *standard)
{
    return text == kAlertDefaultOKText ? standard : (NSString *)text;
}

OSStatus make(AlertType type, CFStringRef error, CFStringRef explanation,
              const AlertStdCFStringAlertParamRec *param, bool isSheet, EventTargetRef target,
              DialogRef *outDialog)
{
    AlertStdCFStringAlertParamRec standard;
    if (!param) {
        GetStandardAlertDefaultParams(&standard, kStdCFStringAlertVersionOne);
        param = &standard;
    }
    if (!outDialog || param->version != kStdCFStringAlertVersionOne)
        return paramErr;
    OSStatus status = unimpErr;
    tarvik::attempt([&] {
        [NSApplication sharedApplication];
        std::vector<AlertButton> buttons = {
            {title(param->defaultText, @"OK"), kAlertStdAlertOKButton},
            {title(param->cancelText, @"Cancel"), kAlertStdAlertCancelButton},
            {title(param->otherText, @"Don't Save"), kAlertStdAlertOtherButton}};
        for (AlertButton &button : buttons) {
            button.isDefault = button.code == param->defaultButton;
            button.isCancel = button.code == param->cancelButton;
        }
        auto dialog = std::make_unique<OpaqueDialogPtr>();
        dialog->panel =
            tarvik::retain([AlertPanel alertOfKind:kindOf(type)
                                           message:(NSString *)error
                                       explanation:(NSString *)explanation
                                           buttons:buttons
                                          helpCode:param->helpButton ? kAlertStdAlertHelpButton : 0
                                           movable:param->movable && !isSheet]);
        dialog->target = target;
        dialog->position = param->position;
        dialog->flags = param->flags;
        dialog->isSheet = isSheet;
        *outDialog = dialog.get();
        gDialogs[dialog.get()] = std::move(dialog);
        status = noErr;
    });
    return status;
}

void tell(EventTargetRef target, NSInteger item)
{
    HICommand command{};
    command.commandID = item == kAlertStdAlertOKButton       ? kHICommandOK
                        : item == kAlertStdAlertCancelButton ? kHICommandCancel
                                                             : kHICommandOther;
    EventRef event = nullptr;
    if (!target || CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, kEventAttributeNone,
                               &event) != noErr)
        return;
    SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command);
    SendEventToEventTarget(event, target);
    ReleaseEvent(event);
}

DialogRef dialogOf(NSWindow *window)
{
    for (const auto &[dialog, record] : gDialogs)
        if (record->panel.get() == window)
            return dialog;
    return nullptr;
}

tarvik::Retained<NSString *> textOf(ConstStringPtr pascal)
{
    return tarvik::Retained<NSString *>::adopting(
        pascal ? (NSString *)CFStringCreateWithPascalString(nullptr, pascal, CFStringGetSystemEncoding())
               : nil);
}

/// StandardAlert, with Pascal strings and the older record.
OSErr present(AlertType type, ConstStr255Param error, ConstStr255Param explanation,
              const AlertStdAlertParamRec *older, SInt16 *itemHit)
{
    AlertStdCFStringAlertParamRec look;
    GetStandardAlertDefaultParams(&look, kStdCFStringAlertVersionOne);
    const auto first = textOf(older ? older->defaultText : nullptr),
               second = textOf(older ? older->cancelText : nullptr),
               third = textOf(older ? older->otherText : nullptr), message = textOf(error),
               more = textOf(explanation);
    if (older) {
        look.movable = older->movable;
        look.helpButton = older->helpButton;
        if (first)
            look.defaultText = (CFStringRef)first.get();
        look.cancelText = (CFStringRef)second.get();
        look.otherText = (CFStringRef)third.get();
        if (older->defaultButton)
            look.defaultButton = older->defaultButton;
        look.cancelButton = older->cancelButton;
        look.position = older->position;
    }
    DialogRef alert = nullptr;
    const OSStatus status =
        CreateStandardAlert(type, (CFStringRef)message.get(), (CFStringRef)more.get(), &look, &alert);
    return OSErr(status == noErr ? RunStandardAlert(alert, older ? older->filterProc : nullptr, itemHit)
                                 : status);
}

const StandardAlertPresenter kInstalled = (SetStandardAlertPresenter(&present), &present);

}  // namespace

OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamPtr param, UInt32 version)
{
    if (!param || version != kStdCFStringAlertVersionOne)
        return paramErr;
    *param = {};
    param->version = version;
    param->defaultText = kAlertDefaultOKText;
    param->defaultButton = kAlertStdAlertOKButton;
    return noErr;
}

OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, DialogRef *outAlert)
{
    return make(alertType, error, explanation, param, false, nullptr, outAlert);
}

OSStatus CreateStandardSheet(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, EventTargetRef notifyTarget,
                             DialogRef *outSheet)
{
    return make(alertType, error, explanation, param, true, notifyTarget, outSheet);
}

OSStatus RunStandardAlert(DialogRef alert, ModalFilterUPP filter, DialogItemIndex *outItemHit)
{
    const OpaqueDialogPtr *record = known(alert);
    if (!record || !outItemHit || record->isSheet)
        return paramErr;
    OSStatus status = unimpErr;
    tarvik::attempt([&] {
        const UInt16 position = record->position;
        RepositionWindow(GetDialogWindow(alert), nullptr,
                         position ? position : UInt16(kWindowAlertPositionOnMainScreen));
        *outItemHit = DialogItemIndex(RunAlert(record->panel.get(), [&](NSEvent *event, NSInteger &item) {
            SInt16 hit = 0;
            if (!filter || !filter(alert, event, &hit))
                return false;
            item = hit;
            return true;
        }));
        status = noErr;
    });
    gDialogs.erase(alert);
    return status;
}

OSStatus CloseStandardSheet(DialogRef sheet, OSStatus resultCommand)
{
    const OpaqueDialogPtr *record = known(sheet);
    if (!record || !record->isSheet)
        return paramErr;
    const auto panel = record->panel;
    if (!resultCommand)
        known(sheet)->target = nullptr;
    [NSApp endSheet:panel.get()
         returnCode:resultCommand == OSStatus(kHICommandOK)       ? kAlertStdAlertOKButton
                    : resultCommand == OSStatus(kHICommandCancel) ? kAlertStdAlertCancelButton
                                                                  : kAlertStdAlertOtherButton];
    [panel.get() orderOut:nil];
    gDialogs.erase(sheet);
    return noErr;
}

WindowRef GetDialogWindow(DialogRef dialog)
{
    const OpaqueDialogPtr *record = known(dialog);
    return record ? ReferenceOfWindow(record->panel.get()) : nullptr;
}

OSStatus ShowSheetWindow(WindowRef sheet, WindowRef parentWindow)
{
    NSWindow *shown = WindowOfReference(sheet), *parent = WindowOfReference(parentWindow);
    if (!shown || !parent)
        return errInvalidWindowPtr;
    OSStatus status = unimpErr;
    tarvik::attempt([&] {
        if (DialogRef dialog = dialogOf(shown)) {
            const auto answered = [dialog](NSInteger code, bool isGone) {
                const OpaqueDialogPtr *record = known(dialog);
                if (!record || !isGone)
                    return;
                const EventTargetRef target = record->target;
                if (!(record->flags & kStdAlertDoNotDisposeSheet))
                    gDialogs.erase(dialog);
                tell(target, code);
            };
            BeginAlert((AlertPanel *)shown, parent, answered);
        } else {
            [NSApp beginSheet:shown
                modalForWindow:parent
                 modalDelegate:nil
                didEndSelector:nullptr
                   contextInfo:nullptr];
        }
        status = noErr;
    });
    return status;
}

OSStatus HideSheetWindow(WindowRef sheet)
{
    NSWindow *shown = WindowOfReference(sheet);
    if (!shown)
        return errInvalidWindowPtr;
    [NSApp endSheet:shown];
    [shown orderOut:nil];
    return noErr;
}
