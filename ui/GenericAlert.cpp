#include <Carbon/Gestalt.h>
#include <Tarvik/support/Owned.h>
#include <Tarvik/text/EncodingConversion.h>
#include <Tarvik/ui/GenericAlert.h>

#include <cstdlib>

namespace {

constexpr SInt32 kFirstVersionWithStrings = 0x1000;

/// Asked once; asked again as long as the answer fails.
SInt32 systemVersion()
{
    static SInt32 version = 0;
    if (version == 0 && Gestalt(gestaltSystemVersion, &version) != noErr)
        version = 0;
    return version;
}

using PascalText = tarvik::Owned<unsigned char, std::free>;

PascalText pascalText(CFStringRef text)
{
    return PascalText(CFStringAllocTECConvertedPascalString(text, CFStringGetSystemEncoding(), 0, nullptr,
                                                            nullptr, nullptr));
}

/// What the callbacks are told.
struct Callbacks {
    DialogRunCallback before, after;
    void *userData;

    void willRun(DialogRef dialog) const { call(before, dialog); }
    void didRun(DialogRef dialog) const { call(after, dialog); }

private:
    void call(DialogRunCallback callback, DialogRef dialog) const
    {
        if (callback)
            callback(dialog, userData);
    }
};

SInt16 runOlderAlert(AlertType type, CFStringRef error, CFStringRef explanation, AlertStdAlertParamRec &look,
                     const PascalText (&titles)[3], const Callbacks &callbacks)
{
    const PascalText message = pascalText(error), more = pascalText(explanation);
    look.defaultText = titles[0].get();
    look.cancelText = titles[1].get();
    look.otherText = titles[2].get();
    callbacks.willRun(nullptr);
    SInt16 item = 0;
    if (StandardAlert(type, message.get(), more.get(), &look, &item) != noErr)
        return 0;
    callbacks.didRun(nullptr);
    return item;
}

}  // namespace

SInt16 DialogRunGenericAlert(UInt16 alertType, WindowRef parent, Boolean movable, CFStringRef error,
                             CFStringRef explanation, Boolean helpButton, CFStringRef defaultText,
                             CFStringRef cancelText, CFStringRef otherText, UInt16 defaultButton,
                             UInt16 cancelButton, UInt16 position, OptionBits flags, ModalFilterUPP filter,
                             EventTargetRef notifyTarget, DialogRunCallback before, DialogRunCallback after,
                             void *userData)
{
    const Callbacks callbacks{before, after, userData};
    if (systemVersion() < kFirstVersionWithStrings) {
        AlertStdAlertParamRec look{};
        look.movable = movable;
        look.helpButton = helpButton;
        look.defaultButton = SInt16(defaultButton);
        look.cancelButton = SInt16(cancelButton);
        look.position = position;
        const PascalText titles[] = {pascalText(defaultText), pascalText(cancelText), pascalText(otherText)};
        return runOlderAlert(AlertType(alertType), error, explanation, look, titles, callbacks);
    }

    AlertStdCFStringAlertParamRec look;
    if (GetStandardAlertDefaultParams(&look, kStdCFStringAlertVersionOne) != noErr)
        return 0;
    look.movable = movable;
    look.helpButton = helpButton;
    if (defaultText)
        look.defaultText = defaultText;
    if (cancelText)
        look.cancelText = cancelText;
    if (otherText)
        look.otherText = otherText;
    if (defaultButton)
        look.defaultButton = SInt16(defaultButton);
    if (cancelButton)
        look.cancelButton = SInt16(cancelButton);
    if (position)
        look.position = position;
    if (flags)
        look.flags = flags;

    DialogRef dialog = nullptr;
    SInt16 item = 0;
    if (!parent) {
        if (CreateStandardAlert(AlertType(alertType), error, explanation, &look, &dialog) != noErr || !dialog)
            return 0;
        callbacks.willRun(dialog);
        if (RunStandardAlert(dialog, filter, &item) != noErr)
            return 0;
    } else {
        if (CreateStandardSheet(AlertType(alertType), error, explanation, &look, notifyTarget, &dialog) !=
                noErr ||
            !dialog)
            return 0;
        callbacks.willRun(dialog);
        if (ShowSheetWindow(GetDialogWindow(dialog), parent) != noErr) {
            CloseStandardSheet(dialog, 0);
            return 0;
        }
        item = kAlertStdAlertOKButton;
    }
    callbacks.didRun(dialog);
    return item;
}
