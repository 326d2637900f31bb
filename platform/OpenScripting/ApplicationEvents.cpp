// What scripts tell applications, as Apple events: commands, subroutines, properties read and written.
#include "private/Applications.h"
#include "private/Component.h"

#include <Carbon/AEInteraction.h>
#include <Carbon/AERegistry.h>

#include <algorithm>

namespace tarvik::osa {

namespace {

constexpr uint32_t kSubroutineClass = code("ascr"), kSubroutine = code("psbr"),
                   kSubroutineName = code("snam"), kLaunched = code("noop");

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
    Message(Machine &machine, ComponentHost &host, std::string application)
        : machine_(machine), host_(host), application_(std::move(application)),
          targets_(applications::running(application_))
    {
    }
    const std::vector<ProcessSerialNumber> &targets() const { return targets_; }

    /// `fill` puts the parameters in. A question is waited for, though the script may ignore responses.
    template <class Fill>
    OSErr send(AEEventClass eventClass, AEEventID eventID, Fill fill, bool isQuestion = false)
    {
        // An identifier of a bundle may be known to the receivers only.
        const bool byIdentifier = targets_.empty() && application_.find('.') != std::string::npos;
        if (targets_.empty() && !byIdentifier)
            notRunning(machine_, application_);
        const bool waits = isQuestion || machine_.considering & Considering::responses;
        OSErr error = procNotFound;
        for (const ProcessSerialNumber &target :
             byIdentifier ? std::vector<ProcessSerialNumber>{{}} : targets_) {
            Descriptor address, event;
            if (byIdentifier)
                AECreateDesc(typeApplicationBundleID, application_.data(), Size(application_.size()),
                             &address);
            else
                AECreateDesc(typeProcessSerialNumber, &target, sizeof target, &address);
            error = AECreateAppleEvent(eventClass, eventID, &address, kAutoGenerateReturnID,
                                       kAnyTransactionID, &event);
            if (error == noErr) {
                fill(&event);
                AEDisposeDesc(&reply_);
                gWaiting = &host_;
                gStopped = 0;
                error = OSErr(AESend(&event, &reply_, waits ? kAEWaitReply : kAENoReply, kAENormalPriority,
                                     machine_.timeLimit ? SInt32(machine_.timeLimit) : kAEDefaultTimeout,
                                     idle, nullptr));
                gWaiting = nullptr;
            }
            if (gStopped)
                machine_.stop(gStopped);
            if (error != procNotFound)
                break;
        }
        // It runs, and takes no events.
        if (error == procNotFound && isRunning())
            return errAEEventNotHandled;
        SInt32 number = 0;
        if (error == noErr && AEGetParamPtr(&reply_, keyErrorNumber, typeSInt32, nullptr, &number,
                                            sizeof number, nullptr) == noErr)
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
        if (error == procNotFound)
            notRunning(machine_, application_);
        Descriptor text;
        const std::string said = AEGetParamDesc(&reply_, keyErrorString, typeUTF8Text, &text) == noErr
                                     ? text.bytes()
                                 : otherwise.empty() ? messageFor(error)
                                                     : otherwise;
        refuse(error, said);
    }
    [[noreturn]] void refuse(OSErr error, const std::string &said)
    {
        raise(error, (application_.empty() ? "current application" : application_) + " got an error: " + said,
              machine_.heap.application(application_));
    }

private:
    bool isRunning() const
    {
        return std::any_of(targets_.begin(), targets_.end(), [](const ProcessSerialNumber &target) {
            pid_t process = 0;
            return GetProcessPID(&target, &process) == noErr;
        });
    }

    Machine &machine_;
    ComponentHost &host_;
    const std::string application_;
    const std::vector<ProcessSerialNumber> targets_;
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

// --- what every program answers, though it has no handler and no dictionary -----------------------------

/// No value: not that.
Value knownProperty(Machine &machine, const Value &place, const std::vector<ProcessSerialNumber> &processes)
{
    const Reference *reference = place.reference();
    if (reference->specifier.form != Specifier::property || !reference->container.is(Kind::application))
        return {};
    const auto text = [&](const std::optional<std::string> &said) {
        return said ? machine.heap.text(*said) : Value();
    };
    if (reference->specifier.name == Word::running)
        return Value::of(!processes.empty());
    if (processes.empty())
        return {};
    switch (reference->specifier.name) {
    case Word::name:
    case Word::displayedName: return text(applications::nameOf(processes[0]));
    case Word::version: return text(applications::versionOf(processes[0]));
    case Word::id: return text(applications::identifierOf(processes[0]));
    case Word::frontmost:
        return Value::of(std::any_of(processes.begin(), processes.end(), applications::isFrontmost));
    default: return {};
    }
}

void bringToFront(Message &message)
{
    OSErr error = procNotFound;
    for (const ProcessSerialNumber &process : message.targets())
        if ((error = SetFrontProcess(&process)) == noErr)
            return;
    message.refuse(error, error == appIsDaemon ? "It has no windows."
                          : error == connectionInvalid
                              ? "There is no window manager that could bring it to the front."
                              : messageFor(error));
}

/// POSIX paths of a list of files.
std::vector<std::string> pathsOf(Machine &machine, const Value &files)
{
    std::vector<std::string> paths;
    const Value list = machine.coerced(files, type::list);
    for (const Value &file : list.list()->items)
        paths.push_back(machine.path(file));
    return paths;
}

/// A command that the program doesn't know is carried out from outside, where that takes nothing out of its hands. False: it can't be.
bool standsIn(Machine &machine, Message &message, AEEventID eventID, const Value &direct)
{
    switch (eventID) {
    case kAEActivate: return bringToFront(message), true;
    case kAEOpenApplication:
    case kLaunched: return true;
    case kAEOpenDocuments: return applications::open(message.targets()[0], pathsOf(machine, direct)) == noErr;
    default: return false;
    }
}

/// An application that doesn't run is started by the commands that make sense then.
bool starts(Machine &machine, const std::string &application, AEEventID eventID, const Value &direct)
{
    switch (eventID) {
    case kAEOpenApplication:
    case kAEActivate: return applications::launch(application, true) == noErr;
    case kLaunched: return applications::launch(application, false) == noErr;
    case kAEOpenDocuments: return applications::launch(application, true, pathsOf(machine, direct)) == noErr;
    default: return false;
    }
}

}  // namespace

Value ComponentHost::sendEvent(Machine &machine, const std::string &application, uint32_t eventClass,
                               uint32_t eventID, const Invocation &invocation)
{
    if (invocation.site.command && eventID == kAEActivate)
        eventClass = kAEMiscStandards;
    if (invocation.site.command && eventID == code("ascr")) {
        eventClass = kSubroutineClass;
        eventID = kLaunched;
    }
    Message message(machine, *this, application);
    if (invocation.site.command && message.targets().empty() &&
        starts(machine, application, eventID, invocation.direct))
        return {};
    const OSErr error = message.send(
        eventClass, eventID,
        [&](AppleEvent *event) {
            if (invocation.direct && !invocation.direct.is(Kind::application)) {
                const bool documents = eventClass == kCoreEventClass && eventID == kAEOpenDocuments;
                Value direct = invocation.direct;
                if (documents) {  // a list of files, as an application expects it
                    const Value given = machine.coerced(direct, type::list);
                    Value files = machine.heap.list();
                    for (const Value &file : given.list()->items)
                        files.list()->items.push_back(machine.coerced(file, type::file));
                    direct = files;
                }
                putValue(machine, event, keyDirectObject, direct);
            }
            for (size_t i = 0; i < invocation.site.codes.size(); ++i)
                putValue(machine, event, invocation.site.codes[i], invocation.values[i]);
        },
        eventID == kAEActivate ||
            eventID == kAEOpenDocuments);  // its answer says whether there is more to do
    if (error == connectionInvalid && eventClass == kCoreEventClass && eventID == kAEQuitApplication)
        return {};  // it ended before its answer went out
    if (error == errAEEventNotHandled && invocation.site.command && !message.targets().empty() &&
        standsIn(machine, message, eventID, invocation.direct))
        return {};
    if (error != noErr)
        message.fail(error, error == errAEEventNotHandled
                                ? "It doesn’t understand the “" +
                                      (invocation.site.command
                                           ? std::string(invocation.site.command->phrase)
                                           : fourCharacters(eventClass) + fourCharacters(eventID)) +
                                      "” message."
                                : "");
    return message.result();
}

Value ComponentHost::callApplication(Machine &machine, const std::string &application, Name handler,
                                     const std::vector<Value> &arguments)
{
    Message message(machine, *this, application);
    const std::string &name = machine.heap.names.spelling(handler);
    const OSErr error = message.send(kSubroutineClass, kSubroutine, [&](AppleEvent *event) {
        AEPutParamPtr(event, kSubroutineName, typeUTF8Text, name.data(), Size(name.size()));
        putValue(machine, event, keyDirectObject, machine.heap.list(arguments));
    });
    if (error != noErr)
        message.fail(
            error, error == errAEEventNotHandled ? "It doesn’t understand the “" + name + "” message." : "");
    return message.result();
}

Value ComponentHost::applicationProperty(Machine &machine, const Value &place)
{
    Message message(machine, *this, rootOf(place).application()->name);
    // Whether it runs is no question for it.
    if (place.reference()->specifier.form == Specifier::property &&
        place.reference()->specifier.name == Word::running)
        return knownProperty(machine, place, message.targets());
    const OSErr error = message.send(
        kAECoreSuite, kAEGetData,
        [&](AppleEvent *event) { putValue(machine, event, keyDirectObject, place); }, true);
    if (error == noErr)
        return message.result();
    if (error == errAEEventNotHandled || error == errAEDescNotFound || error == error::notFound) {
        if (const Value known = knownProperty(machine, place, message.targets()))
            return known;
    }
    message.fail(error == errAEEventNotHandled ? OSErr(error::notFound) : error,
                 "Can’t get " + machine.display(place) + ".");
}

void ComponentHost::setApplicationProperty(Machine &machine, const Value &place, const Value &value)
{
    Message message(machine, *this, rootOf(place).application()->name);
    const OSErr error = message.send(kAECoreSuite, kAESetData, [&](AppleEvent *event) {
        putValue(machine, event, keyDirectObject, place);
        putValue(machine, event, keyAEData, value);
    });
    if (error == noErr)
        return;
    const Reference *reference = place.reference();
    const bool unknown =
        error == errAEEventNotHandled || error == error::notFound || error == error::cantAssign;
    if (unknown && reference->specifier.form == Specifier::property &&
        reference->specifier.name == Word::frontmost && reference->container.is(Kind::application) &&
        machine.truth(value))
        return bringToFront(message);
    message.fail(error == errAEEventNotHandled ? OSErr(error::cantAssign) : error,
                 "Can’t set " + machine.display(place) + " to " + machine.display(value) + ".");
}

}  // namespace tarvik::osa
