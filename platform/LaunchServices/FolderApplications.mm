#include "platform/Foundation/ChildProcess.h"
#include "platform/LaunchServices/private/Applications.h"
#include "platform/LaunchServices/private/FolderInformation.h"
#include "platform/LaunchServices/private/ItemFlags.h"

#import <Foundation/Foundation.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace tarvik::launch {

namespace {

/// All applications, the user's first.
std::vector<std::string> applications()
{
    std::vector<std::string> found;
    NSArray *places = NSSearchPathForDirectoriesInDomains(NSAllApplicationsDirectory, NSAllDomainsMask, YES);
    for (NSString *place : each<NSString>(places)) {
        const std::string folder = utf8(place).value_or("");
        std::vector<std::string> names;
        DIR *opened = folder.empty() ? nullptr : opendir(folder.c_str());
        while (const dirent *entry = opened ? readdir(opened) : nullptr)
            if (const std::string name = entry->d_name; name.ends_with(".app"))
                names.push_back(folder + "/" + name);
        if (opened)
            closedir(opened);
        std::sort(names.begin(), names.end());
        found.insert(found.end(), names.begin(), names.end());
    }
    return found;
}

/// The words of one of the two dialects in which applications say what they open.
struct DocumentTypes {
    NSString *list, *extensions, *role;
};
const DocumentTypes kDialects[] = {
    {@"NSTypes", @"NSUnixExtensions", @"NSRole"},
    {@"CFBundleDocumentTypes", @"CFBundleTypeExtensions", @"CFBundleTypeRole"}};

LSRolesMask rolesOf(const std::string &name)
{
    return sameText(name, "Editor")   ? LSRolesMask(kLSRolesEditor | kLSRolesViewer)
           : sameText(name, "Viewer") ? LSRolesMask(kLSRolesViewer)
           : sameText(name, "Shell")  ? LSRolesMask(kLSRolesShell)
           : sameText(name, "None")   ? LSRolesMask(kLSRolesNone)
                                      : LSRolesMask(kLSRolesAll);
}

bool opens(NSDictionary *information, std::string_view extension, LSRolesMask roles)
{
    for (const DocumentTypes &dialect : kDialects) {
        id types = [information objectForKey:dialect.list];
        if (![types isKindOfClass:[NSArray class]])
            continue;
        for (NSDictionary *type : each<NSDictionary>(types)) {
            id extensions =
                [type isKindOfClass:[NSDictionary class]] ? [type objectForKey:dialect.extensions] : nil;
            if (![extensions isKindOfClass:[NSArray class]] || !(rolesOf(textOf(type, dialect.role)) & roles))
                continue;
            for (NSString *known : each<NSString>(extensions))
                if ([known isKindOfClass:[NSString class]] && sameText(utf8(known).value_or(""), extension))
                    return true;
        }
    }
    return false;
}

template <class Wanted>
std::optional<std::string> firstApplication(Wanted &&wanted)
{
    for (const std::string &folder : applications())
        if (wanted(folder))
            return folder;
    return std::nullopt;
}

/// The program of an application; empty when there is none.
std::string programOf(const std::string &folder)
{
    const std::string name = folder.substr(folder.rfind('/') + 1);
    NSDictionary *const about = information(folder);
    for (const std::string &program : {textOf(about, @"NSExecutable"), textOf(about, @"CFBundleExecutable"),
                                       name.substr(0, name.rfind('.'))})
        if (!program.empty() && program.find('/') == program.npos)
            for (const char *place : {"/", "/Contents/Linux/", "/Contents/MacOS/"})
                if (const std::string path = folder + place + program; access(path.c_str(), X_OK) == 0)
                    return path;
    return "";
}

}  // namespace

std::optional<std::string> folderApplicationFor(std::string_view extension, LSRolesMask roles)
{
    if (extension.empty())
        return std::nullopt;
    return firstApplication(
        [&](const std::string &folder) { return opens(information(folder), extension, roles); });
}

std::optional<std::string> folderApplicationNamed(std::string_view name)
{
    const std::string wanted = std::string(name) + (name.ends_with(".app") ? "" : ".app");
    return firstApplication(
        [&](const std::string &folder) { return folder.substr(folder.rfind('/') + 1) == wanted; });
}

std::optional<std::string> folderApplicationIdentified(std::string_view bundleIdentifier)
{
    return firstApplication([&](const std::string &folder) {
        return textOf(information(folder), @"CFBundleIdentifier") == bundleIdentifier;
    });
}

std::optional<std::string> folderApplicationSigned(OSType creator)
{
    return firstApplication(
        [&](const std::string &folder) { return signatureOf(folder, information(folder)) == creator; });
}

OSStatus launchFolderApplication(const std::string &folder, const std::vector<std::string> &paths,
                                 bool prints)
{
    const std::string program = programOf(folder);
    if (program.empty())
        return kLSNotAnApplicationErr;
    // A GNUstep application opens one file on its command line; each further one is opened by a process of
    // its own, which hands it over to the first.
    for (size_t i = 0; i < std::max<size_t>(paths.size(), 1); ++i) {
        platform::SpawnPlan plan = {.path = program, .arguments = {}};
        if (!paths.empty())
            plan.arguments = {prints ? "-GSFilePrint" : "-GSFilePath", paths[i]};
        platform::ChildProcess application;  // collected when it ends
        if (application.spawn(plan) != 0)
            return kLSUnknownErr;
    }
    return noErr;
}

}  // namespace tarvik::launch
