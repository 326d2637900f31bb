#include "FileItems.h"
#include "ObjectiveC.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>

#include <cstdio>

namespace {

LSRolesMask roleOf(const std::string &name)
{
    if (name == "viewer")
        return kLSRolesViewer;
    if (name == "editor")
        return kLSRolesEditor;
    if (name == "all")
        return kLSRolesAll;
    throw UsageError("--role is viewer, editor or all");
}

/// The path of an application that is known by its name, creator code or identifier.
std::string applicationNamed(const std::string &word, OSType creator, NSString *identifier, NSString *name)
{
    FSRef found;
    if (LSFindApplicationForInfo(creator, (CFStringRef)identifier, (CFStringRef)name, &found, nullptr) !=
        noErr)
        throw Failure(word + ": no application of that name, creator or identifier is known");
    return pathOfItem(found);
}

int run(const Arguments &arguments)
{
    std::vector<std::string> paths;
    if (const auto code = arguments.value("creator"); code) {
        const OSType creator = [textOf(*code) OSType];
        if (!creator)
            throw UsageError("--creator takes four characters");
        paths.push_back(applicationNamed(*code, creator, nil, nil));
    }
    if (const auto identifier = arguments.value("identifier"); identifier)
        paths.push_back(applicationNamed(*identifier, kLSUnknownCreator, textOf(*identifier), nil));
    for (const std::string &word : arguments.rest(paths.empty() ? 1 : 0)) {
        const bool isApplicationName =
            word.find('/') == word.npos && (word.ends_with(".app") || word.ends_with(".desktop"));
        paths.push_back(isApplicationName && ![[NSFileManager defaultManager] fileExistsAtPath:textOf(word)]
                            ? applicationNamed(word, kLSUnknownCreator, nil, textOf(word))
                            : pathOfItem(itemAt(word)));
    }
    const LSLaunchFlags flags = kLSLaunchDefaults |
                                (arguments.has("new") ? LSLaunchFlags(kLSLaunchNewInstance) : 0) |
                                (arguments.has("background") ? LSLaunchFlags(kLSLaunchDontSwitch) : 0) |
                                (arguments.has("print") ? LSLaunchFlags(kLSLaunchAndPrint) : 0);
    const LSRolesMask role = roleOf(arguments.value("role").value_or("all"));
    int status = kSuccess;
    for (const std::string &path : paths) {
        NSString *const item = textOf(path);
        if (arguments.has("which")) {
            NSString *const application = [item applicationOfRole:role];
            if (application)
                writeOutput(utf8Of(application) + "\n");
            else
                std::fprintf(stderr, "tarvik launch: %s: no application opens it in that role\n",
                             path.c_str()),
                    status = kFailure;
        } else if (![item launchWithLaunchFlags:flags]) {
            std::fprintf(stderr,
                         "tarvik launch: %s: could not be launched (no application opens it, or its program "
                         "can't be run)\n",
                         path.c_str());
            status = kFailure;
        }
    }
    return status;
}

const Registration registration({
    .name = "launch",
    .summary = "launch applications by path, name, creator or identifier",
    .usage = "[OPTION]... [APPLICATION|FILE]...",
    .details = "An application that runs already is brought to the front; a file is opened with its default "
               "application. Nothing is waited for.\n\n"
               "Examples:\n"
               "  tarvik launch Ink.app\n"
               "  tarvik launch --new --background /usr/lib/GNUstep/Applications/Ink.app\n"
               "  tarvik launch --which --role=editor notes.txt",
    .options = {{'n', "new", nullptr, "start it also when it runs already"},
                {'b', "background", nullptr, "leave a running application where it is"},
                {'p', "print", nullptr, "print the files"},
                {'c', "creator", "CODE", "the application of a creator code"},
                {'i', "identifier", "ID", "the application of a bundle identifier"},
                {'r', "role", "ROLE", "viewer, editor or all: for --which"},
                {'w', "which", nullptr, "only print which application would open it"}},
    .run = inPool(run),
});

}  // namespace
