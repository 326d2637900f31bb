#include "Command.h"
#include "ScriptPrompt.h"
#include "Streams.h"

#include <Carbon/OSA.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

/// Ctrl-C stops the script, not the command.
OSErr stopWhenInterrupted(SRefCon) { return gInterrupted ? OSErr(userCanceledErr) : OSErr(noErr); }

/// Dialogs and the clipboard need the library with windows; most scripts don't.
void loadWindows()
{
    // It lies beside the library that the command has already.
    Dl_info own;
    std::string path = "libtarvik-ui.so.0";
    if (dladdr(reinterpret_cast<const void *>(&OSASetInteractionLoader), &own) && own.dli_fname)
        path.insert(0, own.dli_fname, std::string_view(own.dli_fname).rfind('/') + 1);
    if (!dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL))
        std::fprintf(stderr, "tarvik script: dialogs and the clipboard are not available: %s\n", dlerror());
}

OSAID compiled(Scripting &scripting, const std::string &source, const std::string &name)
{
    OSAID script = kOSANullScript;
    if (scripting.compile(source, kOSAModeNull, script) != noErr)
        throw Failure(scripting.explained(source, name));
    return script;
}

/// A script file: text or compiled.
OSAID loaded(Scripting &scripting, const std::string &bytes, const std::string &name, std::string &source)
{
    OSAID script = kOSANullScript;
    AEDesc data;
    AECreateDesc(typeOSAGenericStorage, bytes.data(), Size(bytes.size()), &data);
    const OSAError error = OSALoad(scripting.component(), &data, kOSAModeNull, &script);
    AEDisposeDesc(&data);
    if (error == errOSAScriptError)
        throw Failure(scripting.explained(bytes, name));
    if (error != noErr)
        throw Failure(name + ": is no script (error " + std::to_string(error) +
                      "; give source text or what 'tarvik script -o' writes)");
    source = scripting.sourceOf(script);
    return script;
}

void store(Scripting &scripting, OSAID script, const std::string &path)
{
    AEDesc data;
    if (OSAStore(scripting.component(), script, typeOSAGenericStorage, kOSAModeNull, &data) != noErr)
        throw Failure(path + ": the script could not be stored");
    const std::string bytes = taken(data);
    if (path == "-")
        return writeOutput(bytes);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), std::streamsize(bytes.size()));
    file.close();
    if (!file)
        throw Failure(path + ": could not be written (is its folder there and writable?)");
}

int run(const Arguments &arguments)
{
    const auto lines = arguments.values("execute");
    auto words = arguments.rest();
    OSASetInteractionLoader(loadWindows);
    Scripting scripting;
    if (lines.empty() && words.empty() && isatty(STDIN_FILENO) && !arguments.has("output"))
        return promptForScripts(scripting);
    std::string source, name = "-e";
    OSAID script;
    if (lines.empty()) {
        name = words.empty() ? "-" : words[0];
        if (!words.empty())
            words.erase(words.begin());
        script = loaded(scripting, readInput(name), name, source);
    } else {
        for (const std::string &line : lines)
            source += line + "\n";
        script = compiled(scripting, source, name);
    }
    if (const auto output = arguments.value("output")) {
        store(scripting, script, *output);
        return kSuccess;
    }
    if (arguments.has("check"))
        return kSuccess;
    std::signal(SIGINT, [](int) { gInterrupted = 1; });
    OSASetActiveProc(scripting.component(), stopWhenInterrupted, 0);
    OSAID value = kOSANullScript;
    if (scripting.run(script, words, value) != noErr)
        throw Failure(scripting.explained(source, name));
    if (value != kOSANullScript) {
        const auto style = arguments.value("display").value_or("people");
        if (style != "people" && style != "source" && style != "none")
            throw UsageError("--display is people, source or none");
        if (style != "none")
            std::printf("%s\n", scripting.display(value, style == "people").c_str());
    }
    return kSuccess;
}

const Registration registration({
    .name = "script",
    .summary = "run, compile and try scripts",
    .usage = "[OPTION]... [FILE [ARGUMENT]...]",
    .details =
        "Runs a script file (source text or compiled), the lines given with -e, or standard input, and "
        "prints the result. Arguments\n"
        "become the list that the script's run handler is given. Without a file at a terminal: a prompt.\n"
        "An error names the line and column where it happened; the exit status is 1 then.\n"
        "Scripts may tell other programs, show dialogs and use the clipboard, where there is a display.\n\n"
        "Examples:\n"
        "  tarvik script -e 'words of \"to be or not to be\"'\n"
        "  tarvik script --display=source report.applescript 2026\n"
        "  tarvik script -e 'tell application \"Shelf\" to activate'\n"
        "  tarvik script -e 'display dialog \"Your name?\" default answer \"\"'\n"
        "  tarvik script -o report.scpt report.applescript && tarvik script report.scpt\n"
        "  tarvik script",
    .options = {{'e', "execute", "LINE", "a line of the script (any number of times)"},
                {'o', "output", "FILE", "write the compiled script there instead of running it"},
                {'d', "display", "STYLE",
                 "how the result is printed: people (as it is read; the default), source (as a script writes "
                 "it), none"},
                {'c', "check", nullptr, "compile only"}},
    .run = run,
    .optionsEndAtFirstWord = true,
});

}  // namespace
