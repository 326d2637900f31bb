#include "ScriptPrompt.h"

#include "Command.h"

#include <Carbon/AERegistry.h>
#include <Tarvik/support/Owned.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <editline/readline.h>

namespace {

volatile std::sig_atomic_t gStop = 0;

OSErr stopWhenAsked(SRefCon) { return gStop ? OSErr(userCanceledErr) : OSErr(noErr); }

using Line = tarvik::Owned<char, std::free>;

/// The place of an error in its source.
struct Place {
    std::string line;
    size_t number = 1, column = 0, length = 1;  // column and length in characters
};

bool startsCharacter(char c) { return (c & 0xC0) != 0x80; }

Place placeIn(const std::string &source, SInt32 start, SInt32 end)
{
    Place place;
    size_t lineStart = 0, at = 0;
    for (SInt32 character = 0; at < source.size() && character < start; ++at) {
        if (source[at] == '\n' || (source[at] == '\r' && source[at + 1] != '\n')) {
            lineStart = at + 1;
            ++place.number;
        }
        character += at + 1 >= source.size() || startsCharacter(source[at + 1]);
    }
    const size_t lineEnd = std::min(source.find_first_of("\r\n", lineStart), source.size());
    place.line = source.substr(lineStart, lineEnd - lineStart);
    place.column = size_t(std::count_if(source.begin() + long(lineStart),
                                        source.begin() + long(std::max(lineStart, std::min(at, lineEnd))),
                                        startsCharacter));
    place.length = size_t(std::max<SInt32>(1, end - start));
    return place;
}

}  // namespace

std::string taken(AEDesc &desc)
{
    std::string bytes(size_t(AEGetDescDataSize(&desc)), '\0');
    AEGetDescData(&desc, bytes.data(), Size(bytes.size()));
    AEDisposeDesc(&desc);
    return bytes;
}

Scripting::Scripting() : component_(OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype))
{
    if (!component_)
        throw Failure("the scripting component could not be opened");
}

Scripting::~Scripting() { CloseComponent(component_); }

OSAError Scripting::compile(const std::string &source, SInt32 mode, OSAID &script)
{
    AEDesc text;
    AECreateDesc(typeUTF8Text, source.data(), Size(source.size()), &text);
    const OSAError error = OSACompile(component_, &text, mode, &script);
    AEDisposeDesc(&text);
    return error;
}

OSAError Scripting::run(OSAID script, const std::vector<std::string> &arguments, OSAID &value)
{
    if (arguments.empty())
        return OSAExecute(component_, script, kOSANullScript, kOSAModeNull, &value);
    AppleEvent event;
    AEDescList list;
    AECreateAppleEvent(kCoreEventClass, kAEOpenApplication, nullptr, kAutoGenerateReturnID, kAnyTransactionID,
                       &event);
    AECreateList(nullptr, 0, false, &list);
    for (const std::string &argument : arguments)
        AEPutPtr(&list, 0, typeUTF8Text, argument.data(), Size(argument.size()));
    AEPutParamDesc(&event, keyDirectObject, &list);
    const OSAError error = OSAExecuteEvent(component_, &event, script, kOSAModeNull, &value);
    AEDisposeDesc(&list);
    AEDisposeDesc(&event);
    return error;
}

std::string Scripting::display(OSAID value, bool forPeople)
{
    AEDesc text;
    if (OSADisplay(component_, value, typeUTF8Text, forPeople ? kOSAModeDisplayForHumans : kOSAModeNull,
                   &text) != noErr)
        return part(kOSAErrorMessage);
    return taken(text);
}

std::string Scripting::sourceOf(OSAID script)
{
    AEDesc text;
    return OSAGetSource(component_, script, typeUTF8Text, &text) == noErr ? taken(text) : "";
}

std::string Scripting::part(OSType selector)
{
    AEDesc text;
    return OSAScriptError(component_, selector, typeUTF8Text, &text) == noErr ? taken(text) : "";
}

std::string Scripting::explained(const std::string &source, const std::string &name)
{
    AEDesc range;
    SInt32 start = 0, end = 0;
    if (OSAScriptError(component_, kOSAErrorRange, typeOSAErrorRange, &range) == noErr) {
        AEGetParamPtr(&range, keyOSASourceStart, typeSInt32, nullptr, &start, sizeof start, nullptr);
        AEGetParamPtr(&range, keyOSASourceEnd, typeSInt32, nullptr, &end, sizeof end, nullptr);
        AEDisposeDesc(&range);
    }
    std::string message = part(kOSAErrorMessage) + " (" + part(kOSAErrorNumber) + ")";
    if (end == 0)
        return name + ": " + message;
    const Place place = placeIn(source, start, end);
    message =
        name + ":" + std::to_string(place.number) + ":" + std::to_string(place.column + 1) + ": " + message;
    if (place.line.size() > 200)
        return message;
    const size_t width = size_t(std::count_if(place.line.begin(), place.line.end(), startsCharacter));
    const size_t marks = std::clamp<size_t>(width > place.column ? width - place.column : 1, 1, place.length);
    return message + "\n  " + place.line + "\n  " + std::string(place.column, ' ') + std::string(marks, '^');
}

int promptForScripts(Scripting &scripting)
{
    OSAID context = kOSANullScript;
    if (OSAMakeContext(scripting.component(), nullptr, kOSANullScript, &context) != noErr)
        throw Failure("no context could be made");
    struct sigaction action {};
    action.sa_handler = [](int) { gStop = 1; };
    sigaction(SIGINT, &action, nullptr);
    OSASetActiveProc(scripting.component(), stopWhenAsked, 0);
    std::printf("Scripts: a line runs at once, a block when its last “end” stands there. Ctrl-C stops a "
                "script, Ctrl-D ends.\n");
    std::string source;
    for (;;) {
        const Line line(readline(source.empty() ? "> " : ". "));
        if (!line)
            break;
        if (*line)
            add_history(line.get());
        source += std::string(line.get()) + "\n";
        if (source == "\n") {
            source.clear();
            continue;
        }
        gStop = 0;
        OSAID script = context;
        if (scripting.compile(source, kOSAModeAugmentContext, script) != noErr) {
            // An open block goes on in the next line; an empty line gives it up.
            const bool open = scripting.part(kOSAErrorMessage).ends_with("but found end of script.") &&
                              scripting.part(kOSAErrorMessage).starts_with("Expected “end”");
            if (open && *line)
                continue;
            std::printf("%s\n", scripting.explained(source, "error").c_str());
            source.clear();
            continue;
        }
        OSAID value = kOSANullScript;
        if (scripting.run(context, {}, value) != noErr)
            std::printf("%s\n", scripting.explained(source, "error").c_str());
        else if (value != kOSANullScript)
            std::printf("%s\n", scripting.display(value, false).c_str());
        OSADispose(scripting.component(), value);
        source.clear();
    }
    std::printf("\n");
    return kSuccess;
}
