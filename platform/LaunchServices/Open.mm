#include "platform/Aliases/private/AliasFile.h"
#include "platform/Aliases/private/ReferencePath.h"
#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/URLPath.h"
#include "platform/LaunchServices/private/Applications.h"
#include "platform/LaunchServices/private/ItemFlags.h"

#include <Carbon/Processes.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

using namespace tarvik;
using namespace tarvik::launch;

namespace {

/// What is to be opened: a file by its path, or another URL.
struct Item {
    std::string path;  ///< empty: not a file
    std::string url;
};

OSStatus itemAt(std::string path, Item &item)
{
    bool wasAliased = false;
    if (const OSErr error = aliases::followAliasFiles(path, true, wasAliased))
        return error;
    item = {path, fileURL(path)};
    return noErr;
}

OSStatus itemOf(CFURLRef url, Item &item)
{
    if (!url)
        return paramErr;
    if (![cf::ns(url) isFileURL]) {
        item = {"", cf::absoluteURLText(url)};
        return noErr;
    }
    const auto path = cf::urlPath(url);
    return path ? itemAt(*path, item) : OSStatus(paramErr);
}

bool isFolderApplication(const std::string &path)
{
    struct stat about;
    return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode) &&
           isApplicationName(path.substr(path.rfind('/') + 1));
}
bool isApplication(const std::string &path)
{
    return isFolderApplication(path) || aliases::desktopEntryTypeOfFile(path) == "Application";
}

std::string extensionOf(const std::string &path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    const size_t dot = name.rfind('.');
    return dot == name.npos || dot == 0 ? "" : name.substr(dot + 1);
}

/// The user's choice on the desktop first; then a GNUstep application that says it opens such files.
std::optional<std::string> applicationFor(const Item &item, LSRolesMask roles = kLSRolesAll)
{
    if (!item.path.empty() && isApplication(item.path))
        return item.path;
    if (auto found = desktopApplicationFor(item.url, !item.path.empty(), roles))
        return found;
    return item.path.empty() ? std::nullopt : folderApplicationFor(extensionOf(item.path), roles);
}

/// An application that runs is brought to the front, not started again. False when it doesn't run.
bool switchTo(const std::string &application, LSLaunchFlags flags)
{
    FSRef wanted, location;
    if (flags & kLSLaunchNewInstance || aliases::referenceTo(application, &wanted) != noErr)
        return false;
    ProcessSerialNumber number = {0, kNoProcess};
    while (GetNextProcess(&number) == noErr)
        if (GetProcessBundleLocation(&number, &location) == noErr &&
            FSCompareFSRefs(&location, &wanted) == noErr) {
            if (!(flags & kLSLaunchDontSwitch))
                SetFrontProcess(&number);  // one without windows runs all the same
            return true;
        }
    return false;
}

OSStatus launch(const std::string &application, const std::vector<Item> &items, LSLaunchFlags flags)
{
    std::vector<std::string> words;
    const bool isFolder = isFolderApplication(application);
    if (isFolder && items.empty() && switchTo(application, flags))
        return noErr;
    for (const Item &item : items)
        words.push_back(isFolder && !item.path.empty() ? item.path : item.url);
    return isFolder ? launchFolderApplication(application, words, flags & kLSLaunchAndPrint)
                    : launchDesktopApplication(application, words);
}

OSStatus open(const std::string &chosen, const std::vector<Item> &items, LSLaunchFlags flags,
              std::string &launched)
{
    if (!chosen.empty()) {
        if (!isApplication(chosen))
            return kLSNotAnApplicationErr;
        launched = chosen;
        return launch(chosen, items, flags);
    }
    if (items.empty())
        return paramErr;
    // All items of one application are opened by one launch, and nothing is when one item has none.
    std::vector<std::pair<std::string, std::vector<Item>>> groups;
    for (const Item &item : items) {
        const auto application = applicationFor(item);
        if (!application)
            return kLSApplicationNotFoundErr;
        const bool itself = *application == item.path;
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const auto &known) { return known.first == *application; });
        if (group == groups.end())
            group = groups.insert(group, {*application, {}});
        if (!itself)
            group->second.push_back(item);
        launched = *application;
    }
    for (const auto &[application, files] : groups)
        if (const OSStatus error = launch(application, files, flags))
            return error;
    return noErr;
}

CFURLRef newURL(const std::string &path)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.data()),
                                                   CFIndex(path.size()), isFolderApplication(path));
}

OSStatus hand(const std::optional<std::string> &application, FSRef *ref, CFURLRef *url)
{
    if (!application)
        return kLSApplicationNotFoundErr;
    if (ref)
        if (const OSErr error = aliases::referenceTo(*application, ref))
            return error;
    if (url)
        *url = newURL(*application);
    return noErr;
}

}  // namespace

OSStatus LSOpenFromURLSpec(const LSLaunchURLSpec *inLaunchSpec, CFURLRef *outLaunchedURL)
{
    if (outLaunchedURL)
        *outLaunchedURL = nullptr;
    if (!inLaunchSpec)
        return paramErr;
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        std::vector<Item> items;
        Item application;
        if (inLaunchSpec->appURL)
            if (const OSStatus error = itemOf(inLaunchSpec->appURL, application))
                return error;
        for (NSURL *url : each<NSURL>(cf::ns(inLaunchSpec->itemURLs))) {
            items.emplace_back();
            if (const OSStatus error = itemOf(cf::cf<CFURLRef>(url), items.back()))
                return error;
        }
        std::string launched;
        const OSStatus error = open(application.path, items, inLaunchSpec->launchFlags, launched);
        if (!error && outLaunchedURL)
            *outLaunchedURL = newURL(launched);
        return error;
    });
}

OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec *inLaunchSpec, FSRef *outLaunchedRef)
{
    if (!inLaunchSpec || (inLaunchSpec->numDocs && !inLaunchSpec->itemRefs))
        return paramErr;
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        std::vector<Item> items(inLaunchSpec->numDocs);
        std::string application, path;
        if (const OSErr error = aliases::pathOf(inLaunchSpec->appRef, application))
            return error;
        for (ItemCount i = 0; i < inLaunchSpec->numDocs; ++i) {
            OSStatus error = aliases::pathOf(&inLaunchSpec->itemRefs[i], path);
            if (!error)
                error = itemAt(path, items[i]);
            if (error)
                return error;
        }
        std::string launched;
        const OSStatus error = open(application, items, inLaunchSpec->launchFlags, launched);
        return error ? error : hand(launched, outLaunchedRef, nullptr);
    });
}

OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef *outLaunchedURL)
{
    if (outLaunchedURL)
        *outLaunchedURL = nullptr;
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        Item item;
        std::string launched;
        OSStatus error = itemOf(inURL, item);
        if (!error)
            error = open("", {item}, kLSLaunchDefaults, launched);
        if (!error && outLaunchedURL)
            *outLaunchedURL = newURL(launched);
        return error;
    });
}

OSStatus LSOpenFSRef(const FSRef *inRef, FSRef *outLaunchedRef)
{
    const LSLaunchFSRefSpec spec = {nullptr, 1, inRef, nullptr, kLSLaunchDefaults, nullptr};
    return LSOpenFromRefSpec(&spec, outLaunchedRef);
}

OSStatus LSGetApplicationForURL(CFURLRef inURL, LSRolesMask inRoleMask, FSRef *outAppRef, CFURLRef *outAppURL)
{
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        Item item;
        const OSStatus error = itemOf(inURL, item);
        return error ? error : hand(applicationFor(item, inRoleMask), outAppRef, outAppURL);
    });
}

OSStatus LSGetApplicationForItem(const FSRef *inItemRef, LSRolesMask inRoleMask, FSRef *outAppRef,
                                 CFURLRef *outAppURL)
{
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        Item item;
        std::string path;
        OSStatus error = inItemRef ? aliases::pathOf(inItemRef, path) : OSErr(paramErr);
        if (!error)
            error = itemAt(path, item);
        return error ? error : hand(applicationFor(item, inRoleMask), outAppRef, outAppURL);
    });
}

OSStatus LSFindApplicationForInfo(OSType inCreator, CFStringRef inBundleID, CFStringRef inName,
                                  FSRef *outAppRef, CFURLRef *outAppURL)
{
    if (inCreator == kLSUnknownCreator && !inBundleID && !inName)
        return paramErr;
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        std::optional<std::string> found;
        if (const auto identifier = utf8(cf::ns(inBundleID)); identifier && !identifier->empty()) {
            found = folderApplicationIdentified(*identifier);
            if (!found)
                found = desktopApplicationNamed(*identifier);
        }
        if (!found && inCreator != kLSUnknownCreator)
            found = folderApplicationSigned(inCreator);
        if (const auto name = found ? std::nullopt : utf8(cf::ns(inName));
            name && !name->empty() && name->find('/') == name->npos) {
            found = name->ends_with(".desktop") ? std::nullopt : folderApplicationNamed(*name);
            if (!found && !name->ends_with(".app"))
                found = desktopApplicationNamed(*name);
        }
        return hand(found, outAppRef, outAppURL);
    });
}
