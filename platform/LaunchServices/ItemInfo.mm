#include "platform/Aliases/private/AliasFile.h"
#include "platform/Aliases/private/ReferencePath.h"
#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/URLPath.h"
#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/TreeWalk.h"
#include "platform/LaunchServices/private/ItemFlags.h"

#import <Tarvik/support/Bridge.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

using namespace tarvik;

namespace tarvik::launch {

namespace {

// Folders that stand for one thing, by extension, in alphabetical order.
constexpr std::string_view kPackages[] = {
    "app",  "bundle", "component", "dictionary", "gmodel", "gorm",   "kext",     "mdimporter", "mpkg",
    "nib",  "pbproj", "pcproj",    "pkg",        "plugin", "pmodel", "prefpane", "prefs",      "qlgenerator",
    "rtfd", "saver",  "scptd",     "service",    "theme",  "wdgt",   "workflow", "xcodeproj",  "xpc"};

std::string_view extensionOf(std::string_view name)
{
    const size_t dot = name.rfind('.');
    return dot == name.npos || dot == 0 || dot + 1 == name.size() ? std::string_view() : name.substr(dot + 1);
}

}  // namespace

bool sameText(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool isPackageName(std::string_view name)
{
    const std::string_view extension = extensionOf(name);
    return !extension.empty() &&
           std::any_of(std::begin(kPackages), std::end(kPackages),
                       [&](std::string_view known) { return sameText(known, extension); });
}

bool isApplicationName(std::string_view name) { return sameText(extensionOf(name), "app"); }

LSItemInfoFlags folderFlags(std::string_view name, bool isMountPoint, UInt16 finderFlags)
{
    if (isMountPoint)
        return kLSItemInfoIsContainer | kLSItemInfoIsVolume;
    if (isApplicationName(name))
        return kLSItemInfoIsContainer | kLSItemInfoIsPackage | kLSItemInfoIsApplication |
               kLSItemInfoIsNativeApp;
    return kLSItemInfoIsContainer | (isPackageName(name) || finderFlags & 0x2000 ? kLSItemInfoIsPackage : 0);
}

LSItemInfoFlags fileFlags(const std::string &path)
{
    std::string url;
    const std::string type = aliases::desktopEntryTypeOfFile(path, &url);
    if (type == "Application")
        return kLSItemInfoIsPlainFile | kLSItemInfoIsApplication | kLSItemInfoIsNativeApp;
    return kLSItemInfoIsPlainFile |
           (type == "Link" && aliases::pathOfFileURL(url) ? kLSItemInfoIsAliasFile : 0);
}

bool isMountPoint(int descriptor, const char *path)
{
    struct statx about;
    return statx(descriptor < 0 ? AT_FDCWD : descriptor, descriptor < 0 ? path : "",
                 (descriptor < 0 ? 0 : AT_EMPTY_PATH) | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_TYPE,
                 &about) == 0 &&
           about.stx_attributes & STATX_ATTR_MOUNT_ROOT;
}

FinderInformation finderInformation(const std::string &path)
{
    files::Companion companion;
    if (files::Companion::open(path, companion) != noErr ||
        companion.state() != files::Companion::State::good)
        return {};
    const files::FinderInfo &bytes = companion.finderInfo();
    const auto code = [&](size_t at) {
        return OSType(bytes[at]) << 24 | OSType(bytes[at + 1]) << 16 | OSType(bytes[at + 2]) << 8 |
               bytes[at + 3];
    };
    return {code(0), code(4), UInt16(bytes[8] << 8 | bytes[9])};
}

namespace {

/// The parts of the record that are asked for.
OSStatus itemInfo(const std::string &path, LSRequestedInfo wanted, LSItemInfoRecord *record)
{
    *record = {};
    struct stat about;
    if (lstat(path.c_str(), &about) != 0)
        return files::fileError(errno);
    std::string whole = path;
    while (whole.size() > 1 && whole.ends_with('/'))
        whole.pop_back();
    const std::string name = whole.substr(whole.rfind('/') + 1);
    if (wanted &
        (kLSRequestTypeCreator | kLSRequestBasicFlagsOnly | kLSRequestAppTypeFlags | kLSRequestAllFlags)) {
        const FinderInformation finder = finderInformation(whole);
        if (wanted & kLSRequestTypeCreator && S_ISREG(about.st_mode)) {
            record->filetype = finder.type;
            record->creator = finder.creator;
        }
        if (wanted & (kLSRequestBasicFlagsOnly | kLSRequestAppTypeFlags | kLSRequestAllFlags)) {
            const ItemFacts facts = {name, static_cast<unsigned char>(IFTODT(about.st_mode)),
                                     S_ISDIR(about.st_mode) && isMountPoint(-1, whole.c_str()), finder.flags};
            record->flags = itemFlags(facts, [&] { return whole; });
        }
    }
    if (const std::string_view extension = extensionOf(name);
        wanted & kLSRequestExtension && !extension.empty())
        record->extension = cf::owned<CFStringRef>([&] { return nsstring(extension); });
    return noErr;
}

class FlagWalk : public files::TreeWalk {
public:
    FlagWalk(LSItemVisitorProc visitor, void *context) : visitor_(visitor), context_(context) {}

protected:
    bool visit(const files::WalkedItem &item) override
    {
        const ItemFacts facts = {{item.name(), item.length - item.nameAt},
                                 item.kind,
                                 item.kind == DT_DIR &&
                                     (item.descriptor >= 0 ? isMountPoint(item.descriptor, "")
                                                           : isMountPoint(-1, path(item).c_str())),
                                 item.hasCompanion ? finderInformation(path(item)).flags : UInt16(0)};
        return visitor_(item.subpath, item.length, itemFlags(facts, [&] { return path(item); }), context_);
    }

private:
    LSItemVisitorProc visitor_;
    void *context_;
};

}  // namespace

}  // namespace tarvik::launch

OSStatus LSCopyItemInfoForRef(const FSRef *inItemRef, LSRequestedInfo inWhichInfo,
                              LSItemInfoRecord *outItemInfo)
{
    if (!inItemRef || !outItemInfo)
        return paramErr;
    *outItemInfo = {};
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        std::string path;
        const OSErr error = aliases::pathOf(inItemRef, path);
        return error ? error : launch::itemInfo(path, inWhichInfo, outItemInfo);
    });
}

OSStatus LSCopyItemInfoForURL(CFURLRef inURL, LSRequestedInfo inWhichInfo, LSItemInfoRecord *outItemInfo)
{
    if (!inURL || !outItemInfo)
        return paramErr;
    *outItemInfo = {};
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        const auto path = [cf::ns(inURL) isFileURL] ? cf::urlPath(inURL) : std::nullopt;
        return path ? launch::itemInfo(*path, inWhichInfo, outItemInfo) : OSStatus(kLSDataUnavailableErr);
    });
}

OSStatus LSVisitItemsBelow(CFURLRef folder, LSItemVisitorProc visit, void *context)
{
    if (!folder || !visit)
        return paramErr;
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        const auto path = [cf::ns(folder) isFileURL] ? cf::urlPath(folder) : std::nullopt;
        return path ? launch::FlagWalk(visit, context).run(*path, false) : OSErr(kLSDataUnavailableErr);
    });
}
