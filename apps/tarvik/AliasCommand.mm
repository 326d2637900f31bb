#include "Command.h"
#include "FileItems.h"
#include "ObjectiveC.h"
#include "Streams.h"

#include <Carbon/Aliases.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>

#include <climits>
#include <cstdio>
#include <memory>

namespace {

/// A path of the command line, any bytes.
NSString *pathOf(const std::string &word)
{
    return [[NSFileManager defaultManager] stringWithFileSystemRepresentation:word.c_str()
                                                                       length:word.size()];
}

struct Disposed {
    void operator()(AliasHandle alias) const { DisposeHandle(reinterpret_cast<Handle>(alias)); }
};
using Alias = std::unique_ptr<std::remove_pointer_t<AliasHandle>, Disposed>;

Alias read(const std::string &path)
{
    const std::string bytes = readInput(path);
    Handle handle = nullptr;
    if (PtrToHand(bytes.data(), &handle, Size(bytes.size())) != noErr)
        throw Failure(path + ": no memory");
    Alias alias(reinterpret_cast<AliasHandle>(handle));
    if (GetAliasSize(alias.get()) == 0)
        throw Failure(path + ": is no alias record ('tarvik alias make' writes them)");
    return alias;
}

void write(const std::string &path, std::string_view bytes)
{
    if (path == "-")
        return writeOutput(bytes);
    const NSData *data = tarvik::nsdata(bytes);
    if (![data writeToFile:pathOf(path) atomically:YES])
        throw Failure(path + ": could not be written (is its folder there and writable?)");
}

const char *reasonOf(OSStatus error)
{
    switch (error) {
    case fnfErr: return "the item is gone, or too far away to be found";
    case dirNFErr: return "neither the item nor its folder is to be found";
    case nsvErr: return "its volume is not mounted";
    case paramErr: return "the record is damaged";
    case afpAccessDenied: return "a folder on the way may not be searched";
    default: return "it could not be looked up";
    }
}

int make(const Arguments &arguments)
{
    const auto &words = arguments.rest(2, 2);
    FSRef target, from;
    if (![pathOf(words[0]) getFSRef:&target])
        throw Failure(words[0] + ": is not there");
    const auto start = arguments.value("relative-to");
    if (start && ![pathOf(*start) getFSRef:&from])
        throw Failure(*start + ": is not there");
    AliasHandle made = nullptr;
    if (FSNewAlias(start ? &from : nullptr, &target, &made) != noErr)
        throw Failure(words[0] + ": no alias could be made of it");
    const Alias alias(made);
    write(words[1], {reinterpret_cast<const char *>(*made), size_t(GetAliasSize(made))});
    return kSuccess;
}

int resolve(const Arguments &arguments)
{
    FSRef from;
    const auto start = arguments.value("relative-to");
    if (start && ![pathOf(*start) getFSRef:&from])
        throw Failure(*start + ": is not there");
    for (const std::string &file : arguments.rest(1)) {
        const Alias alias = read(file);
        FSRef target;
        Boolean wasChanged;
        const OSErr error = FSResolveAlias(start ? &from : nullptr, alias.get(), &target, &wasChanged);
        const std::string path = error ? "" : pathOfItem(target);
        if (path.empty())
            throw Failure(file + ": " + reasonOf(error));
        std::printf("%s\n", path.c_str());
        if (wasChanged && arguments.has("update") && file != "-")
            write(file, {reinterpret_cast<const char *>(*alias.get()), size_t(GetAliasSize(alias.get()))});
    }
    return kSuccess;
}

int show(const Arguments &arguments)
{
    for (const std::string &word : arguments.rest(1)) {
        FSRef ref;
        Boolean isAlias = false, isFolder = false;
        std::vector<char> path(PATH_MAX);
        if (FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(word.c_str()),
                                     kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr) != noErr)
            throw Failure(word + ": is not there");
        FSIsAliasFile(&ref, &isAlias, &isFolder);
        const OSErr error = isAlias ? FSResolveAliasFile(&ref, true, &isFolder, &isAlias) : OSErr(noErr);
        const std::string end = error == noErr && FSRefMakePath(&ref, reinterpret_cast<UInt8 *>(path.data()),
                                                                UInt32(path.size())) == noErr
                                    ? path.data()
                                : error == bdNamErr ? "(runs in a circle)"
                                                    : "(leads nowhere)";
        if (isAlias)
            std::printf("%s -> %s\n", word.c_str(), end.c_str());
        else
            std::printf("%s: no alias file\n", word.c_str());
    }
    return kSuccess;
}

const Registration registration({
    .name = "alias",
    .summary = "records that find a file again after a rename or a move",
    .details = "A record is found by path, then by the file's identity, then by name near its old place.\n\n"
               "Examples:\n"
               "  tarvik alias make report.txt report.alias\n"
               "  mv report.txt ~/Archive/report-2026.txt\n"
               "  tarvik alias resolve report.alias\n"
               "  tarvik alias show /etc/alternatives/*",
    .subcommands =
        {
            {.name = "make",
             .summary = "write the record of a file or folder",
             .usage = "[--relative-to=FILE] TARGET RECORD",
             .options = {{'r', "relative-to", "FILE", "keep the way from this file, too"}},
             .run = inPool(make)},
            {.name = "resolve",
             .summary = "print where the target is now",
             .usage = "[--update] [--relative-to=FILE] RECORD...",
             .options = {{'u', "update", nullptr, "write the new place into the record"},
                         {'r', "relative-to", "FILE", "try the way from this file first"}},
             .run = inPool(resolve)},
            {.name = "show",
             .summary = "where alias files (links, desktop entries of type Link) lead",
             .usage = "FILE...",
             .run = inPool(show)},
        },
});

}  // namespace
