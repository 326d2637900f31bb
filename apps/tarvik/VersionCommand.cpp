#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

namespace {

bool holds(const std::string &relation, int order)
{
    const std::map<std::string, bool> relations = {{"lt", order < 0},  {"le", order <= 0}, {"eq", order == 0},
                                                   {"ne", order != 0}, {"ge", order >= 0}, {"gt", order > 0}};
    const auto found = relations.find(relation);
    if (found == relations.end())
        throw UsageError("'" + relation + "' is no relation (one of lt, le, eq, ne, ge, gt)");
    return found->second;
}

int compare(const Arguments &arguments)
{
    const auto &versions = arguments.rest(2, 2);
    const int order =
        Utils::compare_version(Utils::utf8towstring(versions[0]), Utils::utf8towstring(versions[1]));
    if (const auto relation = arguments.value("test"))
        return holds(*relation, order) ? kSuccess : kFailure;
    writeOutput(std::to_string(order) + "\n");
    return kSuccess;
}

const Registration registration({
    .name = "version",
    .summary = "dotted version numbers",
    .subcommands = {{
        .name = "compare",
        .summary = "compare two versions: -1, 0 or 1 as A is older than B, the same or newer",
        .usage = "[OPTION]... A B",
        .details = "Components are compared as numbers, so that 10.4.10 is newer than 10.4.9; of 1.2 and "
                   "1.2.0, the longer one\n"
                   "is the newer. Letters end a component: 3rc1 counts as 3.\n\n"
                   "Examples:\n  tarvik version compare 10.4.10 10.4.9\n"
                   "  if tarvik version compare --test=ge \"$installed\" 2.1; then ...",
        .options = {{'t', "test", "RELATION", "show nothing; succeed when A is lt, le, eq, ne, ge or gt B"}},
        .run = compare,
    }},
});

}  // namespace
