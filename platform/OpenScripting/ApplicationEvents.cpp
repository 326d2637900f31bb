// What scripts tell applications, as Apple events: commands, subroutines, properties read and written.
#include "private/Component.h"

#include <Carbon/AEInteraction.h>
#include <Carbon/AERegistry.h>
#include <Carbon/Processes.h>

#include <filesystem>
#include <strings.h>

namespace tarvik::osa {

namespace {

constexpr uint32_t kSubroutineClass = code("ascr"), kSubroutine = code("psbr"), kSubroutineName = code("snam"), kLaunched = code("noop");

/// What users call a process: its application's folder, else its executable.
std::string nameOf(const ProcessSerialNumber &number)
{
    pid_t process = 0;
    if (GetProcessPID(&number, &process) != noErr)
        return "";
    std::error_code failed;
    const auto executable = std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", failed);
    for (auto folder = executable.parent_path(); folder.has_relative_path(); folder = folder.parent_path()) {
        if (folder.extension() == ".app")
            return folder.stem();
    }
    std::string name = executable.filename();
    if (name.ends_with(" (deleted)"))
        name.resize(name.size() - 10);
    return name;
}

/// The running processes of that name, the latest first; the script's own for no name.
std::vector<ProcessSerialNumber> processesNamed(const std::string &name)
{
    std::vector<ProcessSerialNumber> found;
    ProcessSerialNumber number = {0, kCurrentProcess};
    if (name.empty() || !strcasecmp(name.c_str(), nameOf(number).c_str())) {
        GetCurrentProcess(&number);
        return {number};
    }
    number = {0, kNoProcess};
    while (GetNextProcess(&number) == noErr) {
        if (!strcasecmp(nameOf(number).c_str(), name.c_str()))
            found.insert(found.begin(), number);
    }
    return found;
}

// The idle function knows nothing of who waits.
thread_local ComponentHost *gWaiting = nullptr;
thread_local int32_t gStopped = 0;

Boolean idle(EventRecord *, SInt32 *sleepTime, RgnHandle *)
{
    *sleepTime = 6;
    gStopped = gWaiting ? gWaiting->poll() : 0;
    return gStopped != 0;
}

[[noreturn]] void notRunning(Machine &machine, const std::string &name)
{
    raise(-600, "Application isn’t running.", machine.heap.application(name));
}

/// Sends an event and waits for the reply. Its error, as it comes from the application.
class Message {
public:
    Message(Machine &machine, ComponentHost &host, std::string application) : machine_(machine), host_(host), application_(std::move(application)) {}

    /// `fill` puts the parameters in.
    template <class Fill>
    OSErr send(AEEventClass eventClass, AEEventID eventID, Fill fill)
    {
        auto targets = processesNamed(application_);
        // An identifier of a bundle names an application, too.
        const bool byIdentifier = targets.empty() && application_.find('.') != std::string::npos;
        if (targets.empty() && !byIdentifier)
            notRunning(machine_, application_);
        if (byIdentifier)
            targets.push_back({});
        OSErr error = procNotFound;
        for (const ProcessSerialNumber &target : targets) {
            Descriptor address, event;
            if (byIdentifier)
                AECreateDesc(typeApplicationBundleID, application_.data(), Size(application_.size()), &address);
            else
                AECreateDesc(typeProcessSerialNumber, &target, sizeof target, &address);
            error = AECreateAppleEvent(eventClass, eventID, &address, kAutoGenerateReturnID, kAnyTransactionID, &event);
            if (error == noErr) {
                fill(&event);
                AEDisposeDesc(&reply_);
                gWaiting = &host_;
                gStopped = 0;
                error = OSErr(AESend(&event, &reply_, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, idle, nullptr));
                gWaiting = nullptr;
            }
            if (gStopped) {
                ScriptError stop{gStopped, messageFor(gStopped)};
                stop.stops = true;
                throw stop;
            }
            if (error != procNotFound)
                break;
        }
        SInt32 number = 0;
        if (error == noErr && AEGetParamPtr(&reply_, keyErrorNumber, typeSInt32, nullptr, &number, sizeof number, nullptr) == noErr)
            return OSErr(number);
        return error;
    }
    Value result()
    {
        Descriptor direct;
        if (AEGetParamDesc(&reply_, keyDirectObject, typeWildCard, &direct) != noErr)
            return {};
        return fromDescriptor(machine_, &direct);
    }
    /// Raises an error as users know it: "Shelf got an error: ...".
    [[noreturn]] void fail(OSErr error, const std::string &otherwise)
    {
        if (error == procNotFound || error == connectionInvalid)
            notRunning(machine_, application_);
        Descriptor text;
        const std::string said = AEGetParamDesc(&reply_, keyErrorString, typeUTF8Text, &text) == noErr ? text.bytes() : otherwise.empty() ? messageFor(error) : otherwise;
        raise(error, (application_.empty() ? "current application" : application_) + " got an error: " + said, machine_.heap.application(application_));
    }

private:
    Machine &machine_;
    ComponentHost &host_;
    const std::string application_;
    Descriptor reply_;
};

void putValue(Machine &machine, AppleEvent *event, AEKeyword keyword, const Value &value)
{
    Descriptor desc;
    toDescriptor(machine, value, &desc);
    AEPutParamDesc(event, keyword, &desc);
}

const Value &rootOf(const Value &place)
{
    const Value *value = &place;
    while (value->is(Kind::reference))
        value = &value->reference()->container;
    return *value;
}

/// What every process answers, though it has no dictionary. No value: not that.
Value knownProperty(Machine &machine, ComponentHost &host, const Value &place)
{
    const Reference *reference = place.reference();
    if (reference->specifier.form != Specifier::property || !reference->container.is(Kind::application))
        return {};
    const std::string &name = reference->container.application()->name;
    const auto processes = processesNamed(name);
    switch (reference->specifier.name) {
    case Word::running: return Value::of(!processes.empty());
    case Word::name:
    case Word::displayedName:
        if (name.empty())
            return machine.heap.text(host.programName());
        if (!processes.empty())
            return machine.heap.text(nameOf(processes[0]));
        return {};
    default: return {};
    }
}

}  // namespace

Value ComponentHost::sendEvent(Machine &machine, const std::string &application, uint32_t eventClass, uint32_t eventID, const Invocation &invocation)
{
    if (invocation.site.command && eventID == kAEActivate)
        eventClass = kAEMiscStandards;
    if (invocation.site.command && eventID == code("ascr")) {
        eventClass = kSubroutineClass;
        eventID = kLaunched;
    }
    Message message(machine, *this, application);
    const OSErr error = message.send(eventClass, eventID, [&](AppleEvent *event) {
        if (invocation.direct && !invocation.direct.is(Kind::application)) {
            const bool documents = eventClass == kCoreEventClass && eventID == kAEOpenDocuments;
            Value direct = invocation.direct;
            if (documents) {  // a list of files, as an application expects it
                Value files = machine.heap.list();
                for (const Value &file : machine.coerced(direct, type::list).list()->items)
                    files.list()->items.push_back(machine.coerced(file, type::file));
                direct = files;
            }
            putValue(machine, event, keyDirectObject, direct);
        }
        for (size_t i = 0; i < invocation.site.codes.size(); ++i)
            putValue(machine, event, invocation.site.codes[i], invocation.values[i]);
    });
    if (error == errAEEventNotHandled && eventID == kLaunched)
        return {};
    if (error != noErr)
        message.fail(error, error == errAEEventNotHandled ? "It doesn’t understand the “" + (invocation.site.command ? std::string(invocation.site.command->phrase) : fourCharacters(eventClass) + fourCharacters(eventID)) + "” message." : "");
    return message.result();
}

Value ComponentHost::callApplication(Machine &machine, const std::string &application, Name handler, const std::vector<Value> &arguments)
{
    Message message(machine, *this, application);
    const std::string &name = machine.heap.names.spelling(handler);
    const OSErr error = message.send(kSubroutineClass, kSubroutine, [&](AppleEvent *event) {
        AEPutParamPtr(event, kSubroutineName, typeUTF8Text, name.data(), Size(name.size()));
        putValue(machine, event, keyDirectObject, machine.heap.list(arguments));
    });
    if (error != noErr)
        message.fail(error, error == errAEEventNotHandled ? "It doesn’t understand the “" + name + "” message." : "");
    return message.result();
}

Value ComponentHost::applicationProperty(Machine &machine, const Value &place)
{
    const std::string application = rootOf(place).application()->name;
    if (place.reference()->specifier.form == Specifier::property && place.reference()->specifier.name == Word::running)
        return knownProperty(machine, *this, place);
    Message message(machine, *this, application);
    const OSErr error = message.send(kAECoreSuite, kAEGetData, [&](AppleEvent *event) { putValue(machine, event, keyDirectObject, place); });
    if (error == noErr)
        return message.result();
    if (error == errAEEventNotHandled || error == errAEDescNotFound || error == error::notFound || error == procNotFound) {
        if (const Value known = knownProperty(machine, *this, place))
            return known;
    }
    message.fail(error == errAEEventNotHandled ? OSErr(error::notFound) : error, "Can’t get " + machine.display(place) + ".");
}

void ComponentHost::setApplicationProperty(Machine &machine, const Value &place, const Value &value)
{
    Message message(machine, *this, rootOf(place).application()->name);
    const OSErr error = message.send(kAECoreSuite, kAESetData, [&](AppleEvent *event) {
        putValue(machine, event, keyDirectObject, place);
        putValue(machine, event, keyAEData, value);
    });
    if (error != noErr)
        message.fail(error == errAEEventNotHandled ? OSErr(error::cantAssign) : error, "Can’t set " + machine.display(place) + " to " + machine.display(value) + ".");
}

}  // namespace tarvik::osa
