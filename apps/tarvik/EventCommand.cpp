#include "Command.h"
#include "Streams.h"

#include <Carbon/AEHelpers.h>
#include <Carbon/AEMach.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFRunLoop.h>
#include <Tarvik/Tarvik.h>
#include <Tarvik/support/OwnedDesc.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

using tarvik::OwnedDesc;

namespace {

constexpr int kTicksPerSecond = 60;
constexpr size_t kCodeLength = 4;

FourCharCode codeOf(const std::string &word, const char *what)
{
    OwnedDesc code;
    FourCharCode value;
    if (word.size() > kCodeLength ||
        AECoercePtr(typeUTF8Text, (word + "    ").data(), kCodeLength, typeType, code.out()) != noErr ||
        AEGetDescData(code.get(), &value, sizeof value) != noErr)
        throw UsageError("'" + word + "' is no " + what + " (up to four characters)");
    return value;
}

struct Name {
    AEEventClass eventClass;
    AEEventID eventID;
};
Name eventNamed(const std::string &word)
{
    const size_t slash = word.find('/');
    if (slash == word.npos)
        throw UsageError("'" + word + "' is no event (CLASS/ID, say aevt/odoc)");
    return {codeOf(word.substr(0, slash), "event class"), codeOf(word.substr(slash + 1), "event identifier")};
}

OwnedDesc descOf(DescType type, const void *data, size_t size)
{
    OwnedDesc desc;
    if (AECreateDesc(type, data, Size(size), desc.out()) != noErr)
        throw Failure("no memory");
    return desc;
}

OwnedDesc fileDesc(const std::string &path, DescType type)
{
    FSRef ref;
    OwnedDesc desc;
    if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr) != noErr)
        throw Failure(path + ": is not there");
    if (AECoercePtr(typeFSRef, &ref, sizeof ref, type, desc.out()) != noErr)
        throw Failure(path + ": nothing of that type could be made of it");
    return desc;
}

/// 1234, self, system, sign:CODE, a path, or a bundle identifier.
OwnedDesc targetNamed(const std::string &word)
{
    if (word == "self" || word == "system") {
        const ProcessSerialNumber number = {0, word == "self" ? UInt32(kCurrentProcess)
                                                              : UInt32(kSystemProcess)};
        return descOf(typeProcessSerialNumber, &number, sizeof number);
    }
    if (word.starts_with("sign:")) {
        const OSType signature = codeOf(word.substr(5), "signature");
        return descOf(typeApplSignature, &signature, sizeof signature);
    }
    char *end;
    const long pid = std::strtol(word.c_str(), &end, 10);
    if (!word.empty() && *end == '\0') {
        const SInt32 number =
            pid > 0 && pid <= INT_MAX ? SInt32(pid) : throw UsageError("'" + word + "' is no process id");
        return descOf(typeKernelProcessID, &number, sizeof number);
    }
    if (word.find('/') != word.npos)
        return fileDesc(word, typeApplicationURL);
    if (word.find('.') == word.npos)
        throw UsageError("'" + word +
                         "' is no target (a process id, a bundle identifier, sign:CODE, the path of an "
                         "application, self or system)");
    return descOf(typeApplicationBundleID, word.data(), word.size());
}

OwnedDesc valueOf(const std::string &text, const std::string &typeName)
{
    const DescType type = typeName.empty() ? DescType(typeUTF8Text) : codeOf(typeName, "type");
    if (type == typeFileURL || type == typeAlias || type == typeFSRef)
        return fileDesc(text, type);
    OwnedDesc desc;
    if (AECoercePtr(typeUTF8Text, text.data(), Size(text.size()), type, desc.out()) != noErr)
        throw UsageError("'" + text + "' can't be of type '" + typeName + "'");
    return desc;
}

/// VALUE, KEY=VALUE, KEY:TYPE=VALUE, or :TYPE=VALUE. A keyword has four characters, so that most text is just a value.
void putParam(AppleEvent *event, const std::string &word)
{
    const size_t equals = word.find('='), keyLength = word.starts_with(':') ? 0 : kCodeLength;
    const bool hasType = equals != word.npos && equals > keyLength && word[keyLength] == ':' &&
                         equals <= keyLength + 1 + kCodeLength;
    const bool hasKey = hasType || (keyLength > 0 && equals == keyLength);
    const AEKeyword key =
        hasKey && keyLength > 0 ? codeOf(word.substr(0, keyLength), "keyword") : AEKeyword(keyDirectObject);
    const std::string type = hasType ? word.substr(keyLength + 1, equals - keyLength - 1) : "";
    if (AEPutParamDesc(event, key, valueOf(hasKey ? word.substr(equals + 1) : word, type).get()) != noErr)
        throw Failure("no memory");
}

std::string shown(const AEDesc *desc)
{
    Handle text = nullptr;
    if (AEPrintDescToHandle(desc, &text) != noErr)
        throw Failure("no memory");
    const std::string result = *text;
    DisposeHandle(text);
    return result;
}

std::string reasonOf(OSStatus error)
{
    switch (error) {
    case procNotFound: return "nobody receives events there (is it running, and has it installed a handler?)";
    case errAEEventNotHandled: return "the receiver doesn't know this event";
    case errAETimeout: return "no answer in time (--timeout sets how long to wait)";
    case connectionInvalid: return "the receiver ended before it answered";
    case errAECorruptData: return "the answer made no sense";
    case memFullErr: return "the event is too large";
    default: return "error " + std::to_string(error);
    }
}

int send(const Arguments &arguments)
{
    const auto &words = arguments.rest(2);
    const OwnedDesc target = targetNamed(words[0]);
    const Name name = eventNamed(words[1]);
    const auto seconds = arguments.number("timeout", 0, INT_MAX / kTicksPerSecond);
    OwnedDesc event, reply;
    if (AECreateAppleEvent(name.eventClass, name.eventID, target.get(), kAutoGenerateReturnID,
                           kAnyTransactionID, event.out()) != noErr)
        throw Failure("no memory");
    for (size_t i = 2; i < words.size(); ++i)
        putParam(event.get(), words[i]);
    const bool waits = !arguments.has("no-reply");
    const OSStatus error =
        AESendMessage(event.get(), reply.out(), waits ? kAEWaitReply : kAENoReply,
                      seconds ? long(*seconds) * kTicksPerSecond : long(kAEDefaultTimeout));
    if (error)
        throw Failure(words[0] + ": " + reasonOf(error));
    if (!waits)
        return kSuccess;
    SInt32 failure = noErr;
    AEGetParamPtr(reply.get(), keyErrorNumber, typeSInt32, nullptr, &failure, sizeof failure, nullptr);
    std::printf("%s\n", shown(reply.get()).c_str());
    return failure ? kFailure : kSuccess;
}

// --- listening

struct Listening {
    int64_t left;  // how many more events; 0: without end
    bool echoes, isAnswering;
    std::string answer;
};

OSErr print(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    auto &listening = *reinterpret_cast<Listening *>(refcon);
    SInt32 sender = 0;
    AEGetAttributePtr(event, keySenderPIDAttr, typeSInt32, nullptr, &sender, sizeof sender, nullptr);
    std::printf("%d: %s\n", sender, shown(event).c_str());
    std::fflush(stdout);
    AEEventID id = 0;
    AEGetAttributePtr(event, keyEventIDAttr, typeType, nullptr, &id, sizeof id, nullptr);
    OwnedDesc object;
    if (listening.echoes && AEGetParamDesc(event, keyDirectObject, typeWildCard, object.out()) == noErr)
        AEPutParamDesc(reply, keyDirectObject, object.get());
    if (listening.isAnswering)
        AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, listening.answer.data(),
                      Size(listening.answer.size()));
    if ((listening.left > 0 && --listening.left == 0) || id == kAEQuitApplication)
        CFRunLoopStop(CFRunLoopGetMain());
    return noErr;
}

int listen(const Arguments &arguments)
{
    Listening listening = {arguments.number("count", 1, INT64_MAX).value_or(0), arguments.has("echo"),
                           arguments.has("answer"), arguments.value("answer").value_or("")};
    std::vector<std::string> names = arguments.rest();
    if (names.empty())
        names = {"****/****"};
    for (const std::string &word : names) {
        const Name name = eventNamed(word);
        if (!AppleEventInstallHandler(name.eventClass, name.eventID, print,
                                      reinterpret_cast<SRefCon>(&listening)))
            throw Failure("no memory");
    }
    if (!arguments.has("quiet"))
        std::fprintf(stderr, "listening as process %d\n", getpid());
    CFRunLoopRun();
    return kSuccess;
}

const Registration registration({
    .name = "event",
    .summary = "send Apple events to other programs, and receive them",
    .details = "TARGET is a process id, a bundle identifier, sign:CODE, the path of an application's folder "
               "(with a slash in it), self or\n"
               "system. An event is CLASS/ID, each of up to four characters. A parameter is VALUE or "
               ":TYPE=VALUE, the direct object, or KEY=VALUE or KEY:TYPE=VALUE: text, or a value\n"
               "of a type (long, doub, bool, type, enum, furl, alis ...). Replies and received events are "
               "printed as\n"
               "'CLASS'\\'ID'{ 'KEY':VALUE, ... }.\n\n"
               "Examples:\n"
               "  tarvik event listen --echo &\n"
               "  tarvik event send $! book/borw Emma 'page:long=12'\n"
               "  tarvik event send org.example.editor aevt/odoc :furl=letter.txt\n"
               "  tarvik event send $! aevt/quit",
    .subcommands =
        {
            {.name = "send",
             .summary = "send an event and print the reply; 1 when that tells of an error",
             .usage = "[OPTION]... TARGET CLASS/ID [PARAMETER]...",
             .options = {{'n', "no-reply", nullptr, "do not wait for a reply"},
                         {'t', "timeout", "SECONDS", "wait so long at most (60)"}},
             .run = send},
            {.name = "listen",
             .summary = "print the events that come, until aevt/quit does",
             .usage = "[OPTION]... [CLASS/ID]...",
             .details = "Without CLASS/ID every event is taken; **** stands for any class or identifier.",
             .options = {{'c', "count", "N", "end after so many events"},
                         {'e', "echo", nullptr, "answer with the event's own direct object"},
                         {'a', "answer", "TEXT", "answer with this text"},
                         {'q', "quiet", nullptr, "do not say which process listens"}},
             .run = listen},
        },
});

}  // namespace
