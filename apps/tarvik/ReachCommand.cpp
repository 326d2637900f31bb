#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

namespace {

int run(const Arguments &arguments)
{
    if (arguments.rest().empty()) {
        const bool isUp = CommunicationLibrary::IsConnectionUp();
        writeOutput(isUp ? "connected\n" : "not connected\n");
        return isUp ? kSuccess : kFailure;
    }
    int status = kSuccess;
    for (const std::string &word : arguments.rest()) {
        const std::string url = word.find("://") == word.npos ? "http://" + word + "/" : word;
        const bool isUp = CommunicationLibrary::IsOSXConnectionUp(Utils::utf8towstring(url));
        writeOutput(word + (isUp ? ": reachable\n" : ": not reachable\n"));
        if (!isUp)
            status = kFailure;
    }
    return status;
}

const Registration registration({
    .name = "reach",
    .summary = "whether hosts can be reached",
    .usage = "[URL|HOST]...",
    .details = "A host is reachable when its name can be looked up and a route leads to it that is up. "
               "Nothing is sent "
               "to it.\n"
               "Without arguments, asks for a well-known site. Succeeds when all are reachable.\n\n"
               "Examples:\n"
               "  tarvik reach www.debian.org && tarvik post ...\n"
               "  tarvik reach https://127.0.0.1:8080/",
    .run = run,
});

}  // namespace
