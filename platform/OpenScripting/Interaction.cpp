// What scripts show to the user and take from the desktop: dialogs, alerts, the clipboard.
#include "private/Component.h"
#include "private/Presenter.h"

#include <Carbon/AEMach.h>
#include <Carbon/Dialogs.h>
#include <Carbon/Scrap.h>

#include <algorithm>
#include <cstdio>

namespace tarvik::osa {

namespace {

[[noreturn]] void noInteraction(const std::string &why)
{
    raise(-1713, "No user interaction allowed: " + why);
}

// --- display dialog, display alert ---------------------------------------------------------------------

constexpr size_t kMostButtons = 3;

/// A button by its number or name; -1: not given.
int buttonOf(Machine &machine, const std::vector<std::string> &buttons, const Value *given)
{
    if (!given)
        return -1;
    const Value which = machine.contentsOf(*given);
    if (which.is(Kind::integer) && which.integer() >= 1 && size_t(which.integer()) <= buttons.size())
        return int(which.integer() - 1);
    const auto found = std::find(buttons.begin(), buttons.end(), machine.textOf(which));
    if (found == buttons.end())
        raise(-50, "There is no button " + machine.display(which) + ".", which);
    return int(found - buttons.begin());
}

Dialog::Icon iconOf(Machine &machine, const Value &given)
{
    const Value icon = machine.contentsOf(given);
    if (icon.is(Kind::integer))
        return icon.integer() == 0 ? Dialog::stop : icon.integer() == 2 ? Dialog::caution : Dialog::note;
    switch (icon.is(Kind::constant) || icon.is(Kind::type) ? icon.code() : 0) {
    case code("stop"):
    case code("crit"): return Dialog::stop;
    case code("caut"):
    case code("warn"): return Dialog::caution;
    default: return Dialog::note;  // a file's picture is not shown
    }
}

Dialog described(Machine &machine, const Invocation &invocation)
{
    const bool isDialog = invocation.site.command->id == code("dlog");
    const auto text = [&](uint32_t key) {
        const Value *given = invocation.parameter(key);
        return given ? machine.textOf(*given) : std::string();
    };
    Dialog dialog;
    if (isDialog) {
        dialog.title = text(code("appr"));
        dialog.explanation = machine.textOf(invocation.direct);
        if (invocation.parameter(code("dtxt")))
            dialog.answer = text(code("dtxt"));
        const Value *hidden = invocation.parameter(code("htxt"));
        dialog.hidesAnswer = hidden && machine.truth(*hidden);
    } else {
        dialog.icon = Dialog::note;
        dialog.message = machine.textOf(invocation.direct);
        dialog.explanation = text(code("mesS"));
    }
    if (const Value *icon = invocation.parameter(isDialog ? code("disp") : code("EAlT")))
        dialog.icon = iconOf(machine, *icon);
    if (const Value *seconds = invocation.parameter(code("givu")))
        dialog.givesUpAfter = std::clamp(machine.number(*seconds), 0.0, 1e9);

    dialog.buttons = isDialog ? std::vector<std::string>{"Cancel", "OK"} : std::vector<std::string>{"OK"};
    if (const Value *given = invocation.parameter(code("btns"))) {
        dialog.buttons.clear();
        const Value list = machine.coerced(*given, type::list);
        for (const Value &button : list.list()->items)
            dialog.buttons.push_back(machine.textOf(button));
        if (dialog.buttons.empty() || dialog.buttons.size() > kMostButtons)
            raise(-50, "An alert has one to three buttons.", *given);
    }
    dialog.byDefault = buttonOf(machine, dialog.buttons, invocation.parameter(code("dflt")));
    dialog.cancels = buttonOf(machine, dialog.buttons, invocation.parameter(code("cbtn")));
    if (dialog.cancels < 0) {
        const auto cancel = std::find(dialog.buttons.begin(), dialog.buttons.end(), "Cancel");
        if (cancel != dialog.buttons.end())
            dialog.cancels = int(cancel - dialog.buttons.begin());
    }
    if (dialog.byDefault < 0) {
        dialog.byDefault = int(dialog.buttons.size()) - 1;
        if (dialog.byDefault == dialog.cancels && dialog.byDefault > 0)
            --dialog.byDefault;
    }
    return dialog;
}

/// A Pascal string, cut where it is too long, between two characters.
struct PascalText {
    Str255 bytes;
    explicit PascalText(const std::string &text)
    {
        size_t length = std::min<size_t>(text.size(), 255);
        while (length < text.size() && length && (text[length] & 0xC0) == 0x80)
            --length;
        bytes[0] = uint8_t(length);
        std::copy_n(text.begin(), length, bytes + 1);
    }
};

/// The host's own standard alert, where there is nothing better. It has no field and no clock.
DialogAnswer standardAlert(const Dialog &dialog)
{
    if (dialog.answer || dialog.givesUpAfter > 0)
        noInteraction("nothing in this process can show such a dialog.");
    // The alert's places: default, cancel, other.
    int places[3] = {dialog.byDefault, dialog.cancels == dialog.byDefault ? -1 : dialog.cancels, -1};
    for (int i = 0; i < int(dialog.buttons.size()); ++i) {
        if (i != places[0] && i != places[1])
            (places[2] < 0 ? places[2] : places[1]) = i;
    }
    std::vector<PascalText> texts;
    for (const std::string &button : dialog.buttons)
        texts.emplace_back(button);
    const auto textAt = [&](int place) {
        return places[place] >= 0 ? texts[size_t(places[place])].bytes : nullptr;
    };
    AlertStdAlertParamRec parameters{};
    parameters.movable = true;
    parameters.defaultText = textAt(0);
    parameters.cancelText = textAt(1);
    parameters.otherText = textAt(2);
    parameters.defaultButton = kAlertStdAlertOKButton;
    parameters.cancelButton =
        places[1] >= 0 && places[1] == dialog.cancels ? SInt16(kAlertStdAlertCancelButton) : SInt16(0);
    constexpr AlertType kKinds[] = {kAlertPlainAlert, kAlertNoteAlert, kAlertCautionAlert, kAlertStopAlert};
    const std::string &head = dialog.message.empty() ? dialog.title : dialog.message;
    const PascalText error(head.empty() ? dialog.explanation : head),
        explanation(head.empty() ? "" : dialog.explanation);
    SInt16 hit = 0;
    if (const OSErr failure =
            StandardAlert(kKinds[dialog.icon], error.bytes, explanation.bytes, &parameters, &hit)) {
        if (failure == unimpErr)
            noInteraction("nothing in this process can show an alert.");
        raise(failure, messageFor(failure));
    }
    DialogAnswer answer;
    answer.button = hit >= 1 && hit <= 3 ? places[hit - 1] : dialog.cancels;
    return answer;
}

Value showDialog(Machine &machine, const Invocation &invocation)
{
    Dialog dialog = described(machine, invocation);
    int32_t stopped = 0;
    dialog.isStopped = [&] { return stopped || (stopped = machine.host.poll()) != 0; };
    DialogAnswer answer;
    if (Presenter *const shown = presenter()) {
        if (!shown->show(dialog, answer))
            noInteraction("a dialog can’t be shown here (no display, or not the main thread).");
    } else {
        answer = standardAlert(dialog);
    }
    if (stopped)
        machine.stop(stopped);
    if (!answer.gaveUp && (answer.button < 0 || answer.button == dialog.cancels))
        raise(error::userCanceled, messageFor(error::userCanceled));
    Value result = machine.heap.record();
    result.record()->set(Word::button,
                         machine.heap.text(answer.gaveUp ? "" : dialog.buttons[size_t(answer.button)]));
    if (dialog.answer)
        result.record()->set(Word::textReturned, machine.heap.text(answer.text));
    if (invocation.parameter(code("givu")))
        result.record()->set(Word::gaveUp, answer.gaveUp ? Value::of(true) : Value::of(false));
    return result;
}

// --- the clipboard -------------------------------------------------------------------------------------

bool isText(uint32_t type)
{
    return type == type::text || type == type::string || type == type::unicodeText || type == type::utf8;
}
/// Lists and records go there as flattened descriptors.
bool isFlattened(uint32_t type) { return type == type::list || type == type::record; }

Presenter &clipboardOwner(const char *phrase)
{
    if (Presenter *const found = presenter())
        return *found;
    noInteraction(std::string("“") + phrase + "” needs a program with windows.");
}

void check(OSStatus status)
{
    if (status == internalScrapErr)
        raise(status, "The clipboard can’t be reached: there is no display.");
    if (status != noErr)
        raise(status, messageFor(status));
}

std::vector<ClipboardFlavor> flavorsOf(Presenter &owner)
{
    std::vector<ClipboardFlavor> flavors;
    check(owner.clipboardFlavors(flavors));
    return flavors;
}

Value clipboard(Machine &machine, const Invocation &invocation)
{
    Presenter &owner = clipboardOwner("the clipboard");
    const auto flavors = flavorsOf(owner);
    const auto has = [&](uint32_t wanted) {
        return std::any_of(flavors.begin(), flavors.end(),
                           [=](const ClipboardFlavor &one) { return one.type == wanted; });
    };
    const Value *as = invocation.parameter(code("rtyp"));
    uint32_t wanted = as                                             ? as->code()
                      : flavors.empty() || has(kScrapFlavorTypeText) ? type::text
                                                                     : flavors[0].type;
    if (flavors.empty() && !as)
        return machine.heap.emptyText();
    if (isText(wanted))
        wanted = kScrapFlavorTypeText;
    std::string bytes;
    if (!has(wanted)) {
        if (as && has(kScrapFlavorTypeText)) {  // "12" as integer
            check(owner.clipboard(kScrapFlavorTypeText, bytes));
            return machine.coerced(machine.heap.text(bytes), wanted);
        }
        raise(error::wrongType, "Can’t make some data into the expected type.");
    }
    check(owner.clipboard(wanted, bytes));
    if (wanted == kScrapFlavorTypeText)
        return machine.heap.text(bytes);
    if (isFlattened(wanted)) {
        Descriptor desc;
        if (AEUnflattenDescFromBytes(bytes.data(), Size(bytes.size()), &desc) == noErr)
            return fromDescriptor(machine, &desc);
    }
    return machine.heap.data(wanted, std::move(bytes));
}

void setClipboard(Machine &machine, const Value &given)
{
    Presenter &owner = clipboardOwner("set the clipboard to");
    const Value value = machine.contentsOf(given);
    switch (value.kind()) {
    case Kind::data: return check(owner.setClipboard(value.data()->type, value.data()->bytes));
    case Kind::list:
    case Kind::record: {
        Descriptor desc;
        toDescriptor(machine, value, &desc);
        std::string bytes(size_t(AESizeOfFlattenedDesc(&desc)), '\0');
        Size size = 0;
        check(AEFlattenDesc(&desc, bytes.data(), Size(bytes.size()), &size));
        return check(owner.setClipboard(value.is(Kind::list) ? type::list : type::record, bytes));
    }
    default: return check(owner.setClipboard(kScrapFlavorTypeText, machine.textOf(value)));
    }
}

/// {{string, 5}, {Unicode text, 10}}
Value clipboardInfo(Machine &machine, const Invocation &invocation)
{
    const Value *only = invocation.parameter(code("for "));
    const uint32_t wanted = only ? machine.contentsOf(*only).code() : 0;
    Value info = machine.heap.list();
    for (const auto &[type, size] : flavorsOf(clipboardOwner("clipboard info"))) {
        if (!wanted || type == wanted || (wanted == type::text && type == type::string))
            info.list()->items.push_back(machine.heap.list({Value::type(type), Value::of(int64_t(size))}));
    }
    return info;
}

}  // namespace

Value ComponentHost::interact(Machine &machine, const Invocation &invocation)
{
    switch (invocation.site.command->id) {
    case code("dlog"):
    case code("disA"): return showDialog(machine, invocation);
    case code("gClp"): return clipboard(machine, invocation);
    case code("sClp"): return setClipboard(machine, invocation.direct), Value();
    case code("iClp"): return clipboardInfo(machine, invocation);
    case code("beep"): std::fputc('\a', stderr); return {};
    default:
        noInteraction(std::string("“") + invocation.site.command->phrase + "” needs a program with windows.");
    }
}

}  // namespace tarvik::osa
