#include "Command.h"
#include "ObjectiveC.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#include <Tarvik/support/CFOwned.h>

#include <climits>
#include <cstdio>
#include <filesystem>

namespace {

using URL = tarvik::CFOwned<CFURLRef>;

/// A file may have a name like one.
bool isURL(const std::string &word)
{
    std::error_code failed;
    if (std::filesystem::exists(std::filesystem::symlink_status(word, failed)))
        return false;
    const size_t colon = word.find(':');
    return colon != word.npos && colon > 1 &&
           word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.") ==
               colon;
}

URL urlOf(const std::string &word)
{
    const auto *bytes = reinterpret_cast<const UInt8 *>(word.data());
    URL url(isURL(word)
                ? CFURLCreateWithBytes(nullptr, bytes, CFIndex(word.size()), kCFStringEncodingUTF8, nullptr)
                : CFURLCreateFromFileSystemRepresentation(nullptr, bytes, CFIndex(word.size()), false));
    if (!url)
        throw Failure(word + ": is neither a path nor a URL");
    return url;
}

std::string pathOf(CFURLRef url)
{
    char path[PATH_MAX];
    return url && CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8 *>(path), sizeof path)
               ? path
               : "";
}

std::string reasonOf(OSStatus error)
{
    switch (error) {
    case fnfErr: return "is not there";
    case kLSApplicationNotFoundErr: return "no application opens it (--with names one)";
    case kLSNotAnApplicationErr: return "is no application";
    case bdNamErr: return "is an alias that runs in a circle";
    default: return "could not be opened (error " + std::to_string(error) + ")";
    }
}

int run(const Arguments &arguments)
{
    URL application;
    if (const auto name = arguments.value("with")) {
        CFURLRef found = nullptr;
        if (name->find('/') == name->npos)
            LSFindApplicationForInfo(kLSUnknownCreator, (CFStringRef)textOf(*name),
                                     (CFStringRef)textOf(*name), nullptr, &found);
        else
            found = urlOf(*name).release();
        if (!found)
            throw Failure(*name + ": no application of this name is known");
        application = URL(found);
    }
    for (const std::string &word : arguments.rest(1)) {
        const URL url = urlOf(word);
        if (arguments.has("which")) {
            CFURLRef found = nullptr;
            if (const OSStatus error = LSGetApplicationForURL(url.get(), kLSRolesAll, nullptr, &found))
                throw Failure(word + ": " + reasonOf(error));
            std::printf("%s\n", pathOf(URL(found).get()).c_str());
            continue;
        }
        const void *items[] = {url.get()};
        const tarvik::CFOwned<CFArrayRef> list(CFArrayCreate(nullptr, items, 1, &kCFTypeArrayCallBacks));
        const LSLaunchURLSpec spec = {application.get(), list.get(), nullptr, kLSLaunchDefaults, nullptr};
        if (const OSStatus error = LSOpenFromURLSpec(&spec, nullptr))
            throw Failure(word + ": " + reasonOf(error));
    }
    return kSuccess;
}

const Registration registration({
    .name = "open",
    .summary = "open files, folders, URLs and applications",
    .usage = "[--with=APPLICATION|--which] FILE|URL...",
    .details = "Opens each with the application that the desktop (by MIME type) or a GNUstep application "
               "names for it, and doesn't wait for it.\n\n"
               "Examples:\n"
               "  tarvik open report.pdf https://www.gnustep.org/\n"
               "  tarvik open --with=Ink.app letter.rtf\n"
               "  tarvik open --which photo.png",
    .options = {{'w', "with", "APPLICATION",
                 "a path, the name of a folder X.app, a bundle identifier, or a desktop entry"},
                {0, "which", nullptr, "only print which application would open it"}},
    .run = inPool(run),
});

}  // namespace
