#include "Command.h"

#include <Tarvik/Tarvik.h>

namespace {

int run(const Arguments &arguments)
{
    std::string message;
    for (const std::string &word : arguments.rest(1))
        message += (message.empty() ? "" : " ") + word;
    const auto priority = arguments.number("priority", INT32_MIN, INT32_MAX);
    if (priority)
        LogSetPriority(int32_t(*priority));
    const std::string function = arguments.value("function").value_or("tarvik log");
    LogString(function.c_str(),
              static_cast<unsigned long>(arguments.number("line", 0, INT64_MAX).value_or(0)),
              message.c_str());
    return kSuccess;
}

const Registration registration({
    .name = "log",
    .summary = "write a message to the system log, as a host's failure path does",
    .usage = "[OPTION]... MESSAGE...",
    .details =
        "The record reads FUNCTION:LINE: MESSAGE. It is lost, as every record is, where no system log "
        "runs.\n\n"
        "Example:\n  tarvik log --priority=6 --function=\"-[Importer run]\" --line=12 \"3 files skipped\"",
    .options = {{'p', "priority", "NUMBER", "priority word of the record (3: error, 6: information, ...)"},
                {'f', "function", "NAME", "the function named in the record"},
                {'l', "line", "NUMBER", "the line named in the record"}},
    .run = run,
});

}  // namespace
