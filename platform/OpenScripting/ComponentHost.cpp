#include "platform/CoreFoundation/private/HFSPath.h"
#include "private/Component.h"
#include "private/FileAccess.h"
#include "private/Parser.h"

#include <Carbon/Dialogs.h>
#include <Carbon/Folders.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace tarvik::osa {

int32_t ComponentHost::poll() { return component_.active ? component_.active(component_.activeRefCon) : 0; }

void ComponentHost::log(const std::string &text) { std::fprintf(stderr, "%s\n", text.c_str()); }

std::string ComponentHost::programName() { return program_invocation_short_name; }

std::string ComponentHost::posixPath(const std::string &hfs)
{
    const auto path = hfs::toPosix(hfs);
    if (!path)
        raise(error::noSuchFile, "File " + hfs + " wasn’t found.");
    return *path;
}

std::string ComponentHost::hfsPath(const std::string &posix) { return hfs::fromPosix(posix); }

std::string ComponentHost::folder(uint32_t type, bool local, bool create)
{
    char path[PATH_MAX];
    if (FSFindFolderPath(local ? kLocalDomain : kUserDomain, type, create, path, sizeof path) != noErr)
        return "";
    return path;
}

namespace {

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

/// display dialog, display alert
Value showAlert(Machine &machine, const Invocation &invocation)
{
    const bool isDialog = invocation.site.command->id == code("dlog");
    if (invocation.parameter(code("dtxt")))
        raise(-1713, "No user interaction allowed: dialogs with a default answer are not available here.");
    std::vector<std::string> buttons = isDialog ? std::vector<std::string>{"Cancel", "OK"} : std::vector<std::string>{"OK"};
    if (const Value *given = invocation.parameter(code("btns"))) {
        buttons.clear();
        const Value list = machine.coerced(*given, type::list);
        for (const Value &button : list.list()->items)
            buttons.push_back(machine.textOf(button));
        if (buttons.empty() || buttons.size() > 3)
            raise(-50, "An alert has one to three buttons.");
    }
    const auto numberOf = [&](uint32_t key) -> int {  // from 0; -1: not given
        const Value *given = invocation.parameter(key);
        if (!given)
            return -1;
        const Value which = machine.contentsOf(*given);
        if (which.is(Kind::integer) && which.integer() >= 1 && size_t(which.integer()) <= buttons.size())
            return int(which.integer() - 1);
        const std::string name = machine.textOf(which);
        for (size_t i = 0; i < buttons.size(); ++i) {
            if (buttons[i] == name)
                return int(i);
        }
        raise(-50, "There is no button " + machine.display(which) + ".");
    };
    int byDefault = numberOf(code("dflt")), cancels = numberOf(code("cbtn"));
    if (cancels < 0) {
        for (size_t i = 0; i < buttons.size(); ++i) {
            if (buttons[i] == "Cancel")
                cancels = int(i);
        }
    }
    if (byDefault < 0)
        byDefault = int(buttons.size()) - 1;
    if (byDefault == cancels && buttons.size() > 1)
        byDefault = cancels == 0 ? 1 : 0;
    // The alert's places: default, cancel, other.
    int places[3] = {byDefault, cancels, -1};
    if (places[1] == places[0])
        places[1] = -1;
    for (int i = 0; i < int(buttons.size()); ++i) {
        if (i != places[0] && i != places[1])
            (places[1] < 0 && buttons.size() == 2 ? places[2] : places[2] < 0 ? places[2] : places[1]) = i;
    }
    std::vector<PascalText> texts;
    for (const std::string &button : buttons)
        texts.emplace_back(button);
    AlertStdAlertParamRec parameters{};
    parameters.movable = true;
    parameters.defaultText = texts[size_t(places[0])].bytes;
    parameters.cancelText = places[1] >= 0 ? texts[size_t(places[1])].bytes : nullptr;
    parameters.otherText = places[2] >= 0 ? texts[size_t(places[2])].bytes : nullptr;
    parameters.defaultButton = kAlertStdAlertOKButton;
    parameters.cancelButton = places[1] >= 0 && places[1] == cancels ? SInt16(kAlertStdAlertCancelButton) : SInt16(0);
    AlertType kind = isDialog ? kAlertPlainAlert : kAlertNoteAlert;
    for (const uint32_t key : {code("disp"), code("EAlT")}) {
        const Value *icon = invocation.parameter(key);
        if (!icon)
            continue;
        const uint32_t which = icon->is(Kind::constant) || icon->is(Kind::type) ? icon->code() : icon->is(Kind::integer) ? uint32_t(icon->integer()) : 0;
        kind = which == code("stop") || which == 0 || which == code("crit") ? kAlertStopAlert : which == code("caut") || which == 2 || which == code("warn") ? kAlertCautionAlert : kAlertNoteAlert;
    }
    const Value *title = invocation.parameter(isDialog ? code("appr") : code("mesS"));
    const std::string head = isDialog ? (title ? machine.textOf(*title) : "") : machine.textOf(invocation.direct);
    const std::string body = isDialog ? machine.textOf(invocation.direct) : (title ? machine.textOf(*title) : "");
    const PascalText error(head.empty() ? body : head), explanation(head.empty() ? "" : body);
    SInt16 hit = 0;
    if (const OSErr failure = StandardAlert(kind, error.bytes, explanation.bytes, &parameters, &hit)) {
        if (failure == unimpErr)
            raise(-1713, "No user interaction allowed: nothing in this process can show an alert.");
        raise(failure, messageFor(failure));
    }
    const int pressed = hit >= 1 && hit <= 3 ? places[hit - 1] : -1;
    if (pressed < 0)
        raise(error::userCanceled, messageFor(error::userCanceled));
    if (pressed == cancels)
        raise(error::userCanceled, messageFor(error::userCanceled));
    Value answer = machine.heap.record();
    answer.record()->set(machine.heap.names.of("button returned"), machine.heap.text(buttons[size_t(pressed)]));
    if (invocation.parameter(code("givu")))
        answer.record()->set(machine.heap.names.of("gave up"), Value::of(false));
    return answer;
}

}  // namespace

Value ComponentHost::interact(Machine &machine, const Invocation &invocation)
{
    switch (invocation.site.command->id) {
    case code("dlog"):
    case code("disA"): return showAlert(machine, invocation);
    case code("beep"): std::fputc('\a', stderr); return {};
    default: raise(-1713, std::string("No user interaction allowed: “") + invocation.site.command->phrase + "” needs a program with windows.");
    }
}

namespace {

/// An owned program.
struct Owned {
    Program *program;
    ~Owned() { program->release(); }
};

Value rootOf(Machine &machine, const std::string &source, const std::string &state)
{
    try {
        const Tree tree = parse(source, machine.heap, machine.vocabulary);
        const Owned program{compile(tree, source, machine.heap, nullptr, false)};
        Value root = machine.instantiate(program.program);
        restoreState(machine, root, state);
        return root;
    } catch (ScriptError &failure) {
        failure.located = false;  // that place is in another source
        throw;
    } catch (const OSAError &error) {
        raise(error, messageFor(error));
    }
}

Value rootOf(Machine &machine, std::string_view bytes)
{
    Stored script;
    try {
        script = loaded(bytes);
    } catch (const OSAError &error) {
        raise(error, "The data is no script.");
    }
    return rootOf(machine, script.source, script.state);
}

}  // namespace

Value ComponentHost::runScript(Machine &machine, const Value &source)
{
    if (source.is(Kind::data))  // a stored script: the script itself
        return rootOf(machine, source.data()->bytes);
    Value script = source;
    if (!script.is(Kind::script))
        script = source.is(Kind::file) ? loadScript(machine, source.file()->path) : rootOf(machine, machine.textOf(source), "");
    return machine.call(script, Word::run, {});
}

Value ComponentHost::loadScript(Machine &machine, const std::string &path)
{
    FileAccess::OpenFile file = FileAccess::opened(path, false);
    return rootOf(machine, FileAccess::read(file, int64_t(1) << 30));
}

std::string displayForPeople(Machine &machine, const Value &value, int depth)
{
    if (depth > 100)
        raise(error::stackOverflow, "Stack overflow.");
    // Nested lists lose their braces, too.
    switch (value.kind()) {
    case Kind::text: return utf8(value);
    case Kind::list: {
        std::string out;
        for (size_t i = 0; i < value.list()->items.size(); ++i)
            out += (i ? ", " : "") + displayForPeople(machine, value.list()->items[i], depth + 1);
        return out;
    }
    case Kind::record: {
        std::string out;
        for (size_t i = 0; i < value.record()->fields.size(); ++i)
            out += (i ? ", " : "") + machine.displayName(value.record()->fields[i].first) + ":" + displayForPeople(machine, value.record()->fields[i].second, depth + 1);
        return out;
    }
    case Kind::date: return "date " + dateText(value.date()->seconds);
    case Kind::file: return (value.file()->isAlias ? "alias " : "file ") + machine.host.hfsPath(value.file()->path);
    default: return machine.display(value);
    }
}

}  // namespace tarvik::osa
