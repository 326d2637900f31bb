#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <cstdio>

namespace {

struct Fact {
    const char *name;
    std::string (*value)();
};

template <wstring (*function)()>
std::string text()
{
    return Utils::wstring2utf8(function());
}

std::string versionNumber()
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "0x%X", unsigned(Utils::getOsBuildNumber()));
    return digits;
}

const Fact kFacts[] = {
    {"name", text<Utils::getOsName>},
    {"version", text<Utils::getOsVersion>},
    {"number", versionNumber},
    {"country", text<Utils::getCountry>},
    {"language", text<Utils::getLanguage>},
    {"processor", text<Utils::getProcessorType>},
    {"identifier", Utils::generateGUID},
};

int run(const Arguments &arguments)
{
    if (arguments.rest().empty()) {
        for (const Fact &fact : kFacts)
            writeOutput(std::string(fact.name).append(": ").append(fact.value()).append("\n"));
        return kSuccess;
    }
    for (const std::string &word : arguments.rest()) {
        const Fact *found = nullptr;
        for (const Fact &fact : kFacts)
            found = word == fact.name ? &fact : found;
        if (!found)
            throw UsageError("nothing is known of '" + word + "'");
        writeOutput(found->value() + "\n");
    }
    return kSuccess;
}

const Registration registration({
    .name = "sysinfo",
    .summary = "what a report says about the machine",
    .usage = "[NAME]...",
    .details =
        "Prints name, version, (packed) number, country, language, processor and identifier; or the values "
        "alone of "
        "those NAMEd.\n"
        "The identifier is new each time; its last twelve digits are the machine's hardware address.\n\n"
        "Examples:\n"
        "  tarvik sysinfo\n"
        "  tarvik sysinfo country language",
    .run = run,
});

}  // namespace
