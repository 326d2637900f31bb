#include "Command.h"
#include "Streams.h"

#include <Carbon/Folders.h>
#include <Tarvik/Tarvik.h>

namespace {

struct Folder {
    const char *name;
    OSType type;
    SInt16 domain;
};

constexpr Folder kFolders[] = {
    {"temporary", kTemporaryFolderType, kUserDomain},
    {"documents", kDocumentsFolderType, kUserDomain},
    {"desktop", kDesktopFolderType, kUserDomain},
    {"home", kCurrentUserFolderType, kUserDomain},
    {"preferences", kPreferencesFolderType, kUserDomain},
    {"support", kApplicationSupportFolderType, kUserDomain},
    {"local-preferences", kPreferencesFolderType, kLocalDomain},
    {"local-support", kApplicationSupportFolderType, kLocalDomain},
};

/// Its path; empty when it is missing.
std::string pathOf(const Folder &folder, bool creating)
{
    char path[4096];
    FSFindFolderPath(folder.domain, folder.type, creating, path, sizeof path);
    return path;
}

int run(const Arguments &arguments)
{
    const bool creating = arguments.has("create");
    if (arguments.rest().empty()) {
        for (const Folder &folder : kFolders) {
            const std::string path = pathOf(folder, creating);
            std::string line = folder.name;
            line.resize(19, ' ');
            writeOutput(line.append(path.empty() ? "(missing)" : path).append("\n"));
        }
        return kSuccess;
    }
    for (const std::string &word : arguments.rest()) {
        const Folder *found = nullptr;
        for (const Folder &folder : kFolders)
            found = word == folder.name ? &folder : found;
        if (!found)
            throw UsageError("no folder '" + word + "' (without arguments all are listed)");
        const std::string path = pathOf(*found, creating);
        if (path.empty())
            throw Failure(word + ": is missing" + (creating ? " and can't be made" : " (--create makes it)"));
        writeOutput(path + "\n");
    }
    return kSuccess;
}

const Registration registration({
    .name = "where",
    .summary = "where the well-known folders are",
    .usage = "[--create] [NAME]...",
    .details = "Lists the temporary, documents, desktop, home, preferences and support folders of the user "
               "and those of "
               "the whole\n"
               "machine (local-...); or prints the paths alone of those NAMEd.\n\n"
               "Examples:\n"
               "  tarvik where\n"
               "  cp report.pdf \"$(tarvik where documents)\"",
    .options = {{'c', "create", nullptr, "make folders that are missing"}},
    .run = run,
});

}  // namespace
