#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Dates.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Lookup.h"
#include "platform/Files/private/Specs.h"
#include "platform/Files/private/Volumes.h"

#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

using namespace tarvik::files;

namespace {

constexpr FSCatalogInfoBitmap kKnown = kFSCatInfoGettableInfo | kFSCatInfoUserAccess | kFSCatInfoSetOwnership;
constexpr FSCatalogInfoBitmap kOfCompanion = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo |
                                             kFSCatInfoRsrcSizes | kFSCatInfoCreateDate |
                                             kFSCatInfoBackupDate;
constexpr size_t kPage = 4096;
static_assert(sizeof(FSRef) == 80 && sizeof(FSCatalogInfo) == 144 && sizeof(HFSUniStr255) == 512 &&
              sizeof(UTCDateTime) == 8);
enum { creationDate = 0, backupDate = 2 };  // places in the companion's dates

UTCDateTime date(const statx_timestamp &time) { return dateFromTime(time.tv_sec, time.tv_nsec); }

uint32_t valence(const std::string &folder)
{
    uint32_t count = 0;
    if (DIR *open = opendir(folder.c_str())) {
        while (const dirent *entry = readdir(open))
            count += std::strncmp(entry->d_name, "._", 2) != 0 && std::strcmp(entry->d_name, ".") != 0 &&
                     std::strcmp(entry->d_name, "..") != 0;
        closedir(open);
    }
    return count;
}

UInt8 userAccess(const std::string &path)
{
    const auto may = [&](int mode) { return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0; };
    return UInt8((may(R_OK) ? 4 : 0) | (may(W_OK) ? 2 : 0) | (may(X_OK) ? 1 : 0));
}

OSErr readCompanion(const std::string &path, FSCatalogInfoBitmap which, FSCatalogInfo &info)
{
    Companion companion;
    OSErr error = Companion::open(path, companion);
    // What can't be opened for reading is as good as foreign: the item's own facts are known all the same.
    if (error != noErr && error != afpAccessDenied && error != permErr)
        return error;
    if (companion.state() == Companion::State::broken)
        return which & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo | kFSCatInfoRsrcSizes) ? OSErr(ioErr)
                                                                                            : OSErr(noErr);
    std::memcpy(info.finderInfo, companion.finderInfo().data(), sizeof info.finderInfo);
    std::memcpy(info.extFinderInfo, companion.finderInfo().data() + sizeof info.finderInfo,
                sizeof info.extFinderInfo);
    if (!(info.nodeFlags & kFSNodeIsDirectoryMask)) {
        info.rsrcLogicalSize = companion.resourceLength();
        info.rsrcPhysicalSize = (info.rsrcLogicalSize + kPage - 1) / kPage * kPage;
    }
    if (companion.dates()[creationDate] != kUnknownDate)
        info.createDate = dateFromAppleDouble(companion.dates()[creationDate]);
    info.backupDate = dateFromAppleDouble(companion.dates()[backupDate]);
    return noErr;
}

OSErr fill(const std::string &path, const struct statx &item, FSCatalogInfoBitmap which, FSCatalogInfo &info)
{
    const bool isFolder = S_ISDIR(item.stx_mode), isRoot = isVolumeRoot(path, item);
    info.nodeFlags = UInt16((isFolder             ? kFSNodeIsDirectoryMask
                             : item.stx_nlink > 1 ? kFSNodeHardLinkMask
                                                  : 0) |
                            (item.stx_attributes & STATX_ATTR_IMMUTABLE ? kFSNodeLockedMask : 0));
    info.volume = volumeOf(identityOf(item).device);
    info.nodeID = numberOf(item, isRoot);
    struct statx folder;
    if (isRoot)
        info.parentDirID = fsRtParID;
    else if (which & kFSCatInfoParentDirID && status(AT_FDCWD, folderOf(path).c_str(), folder) == 0)
        info.parentDirID = numberOf(folder, isVolumeRoot(folderOf(path), folder));
    info.contentModDate = date(item.stx_mtime);
    info.attributeModDate = date(item.stx_ctime);
    info.accessDate = date(item.stx_atime);
    info.createDate = item.stx_mask & STATX_BTIME ? date(item.stx_btime) : info.contentModDate;
    info.permissions = {item.stx_uid, item.stx_gid, 0, 0, item.stx_mode, 0};
    if (which & (kFSCatInfoPermissions | kFSCatInfoUserAccess))
        info.permissions.userAccess = userAccess(path);
    if (!isFolder) {
        info.dataLogicalSize = item.stx_size;
        info.dataPhysicalSize = item.stx_blocks * 512;
    } else if (which & kFSCatInfoValence) {
        info.valence = valence(path);
    }
    return which & kOfCompanion ? readCompanion(path, which, info) : OSErr(noErr);
}

OSErr setLocked(const std::string &path, bool isLocked)
{
    const tarvik::FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    int flags = 0;
    if (!file || ioctl(file.get(), FS_IOC_GETFLAGS, &flags) != 0)
        return fileError(errno);
    flags = isLocked ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    return ioctl(file.get(), FS_IOC_SETFLAGS, &flags) == 0 ? OSErr(noErr) : fileError(errno);
}

OSErr setPermissions(const std::string &path, const struct statx &item, FSCatalogInfoBitmap which,
                     const FSPermissionInfo &permissions)
{
    if (which & kFSCatInfoSetOwnership &&
        (permissions.userID != item.stx_uid || permissions.groupID != item.stx_gid) &&
        lchown(path.c_str(), permissions.userID, permissions.groupID) != 0)
        return fileError(errno);
    if (S_ISLNK(item.stx_mode))
        return noErr;
    // Another owner's programs do not become programs that run as this one's.
    const bool isOwners = which & kFSCatInfoSetOwnership || permissions.userID == item.stx_uid;
    const mode_t mode = permissions.mode & (isOwners ? 07777 : 01777);
    return mode == (item.stx_mode & 07777) || chmod(path.c_str(), mode) == 0 ? OSErr(noErr)
                                                                             : fileError(errno);
}

OSErr setCompanion(const std::string &path, const struct statx &item, FSCatalogInfoBitmap which,
                   const FSCatalogInfo &info)
{
    Companion companion;
    if (const OSErr error = Companion::open(path, companion); error != noErr)
        return error;
    if (!(which & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo)) &&
        companion.state() != Companion::State::good &&
        (!(which & kFSCatInfoBackupDate) || isNever(info.backupDate)))
        return noErr;  // a creation date alone makes no companion
    if (const OSErr error = companion.writable(); error != noErr)
        return error;
    Companion::Changes changes;
    FinderInfo finder = companion.finderInfo();
    if (which & kFSCatInfoFinderInfo)
        std::memcpy(finder.data(), info.finderInfo, sizeof info.finderInfo);
    if (which & kFSCatInfoFinderXInfo)
        std::memcpy(finder.data() + sizeof info.finderInfo, info.extFinderInfo, sizeof info.extFinderInfo);
    auto dates = companion.dates();
    if (which & kFSCatInfoCreateDate)
        dates[creationDate] = appleDoubleFromDate(info.createDate);
    if (which & kFSCatInfoBackupDate)
        dates[backupDate] = appleDoubleFromDate(info.backupDate);
    if (finder == companion.finderInfo() && dates == companion.dates())
        return noErr;
    changes.finderInfo = finder;
    if (dates != companion.dates())
        changes.dates = dates;
    return companion.replace(path, item, changes);
}

}  // namespace

OSErr FSGetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo *catalogInfo,
                       HFSUniStr255 *outName, FSSpec *fsSpec, FSRef *parentRef)
{
    if (whichInfo & ~kKnown)
        return errFSBadInfoBitmap;
    std::string path;
    struct statx item;
    if (const OSErr error = locate(ref, path, &item); error != noErr)
        return error;
    if (catalogInfo && whichInfo != kFSCatInfoNone) {
        FSCatalogInfo info{};
        if (const OSErr error = fill(path, item, whichInfo, info); error != noErr)
            return error;
        *catalogInfo = info;
    }
    if (outName)
        unicodeFromName(isVolumeRoot(path, item) ? volumeName(path) : nameOf(path), *outName);
    if (fsSpec)
        if (const OSErr error = makeSpec(path, item, fsSpec); error != noErr)
            return error;
    if (parentRef) {
        std::memset(parentRef, 0, sizeof *parentRef);
        if (path != "/")
            return makeReference(folderOf(path), Leaf::asIs, parentRef);
    }
    return noErr;
}

OSErr FSSetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo)
{
    if (whichInfo & ~FSCatalogInfoBitmap(kFSCatInfoSettableInfo | kFSCatInfoSetOwnership))
        return errFSBadInfoBitmap;
    std::string path;
    struct statx item;
    if (const OSErr error = locate(ref, path, &item); error != noErr)
        return error;
    if (whichInfo == kFSCatInfoNone)
        return noErr;
    if (!catalogInfo)
        return paramErr;
    const bool isLocked = item.stx_attributes & STATX_ATTR_IMMUTABLE,
               lock = catalogInfo->nodeFlags & kFSNodeLockedMask;
    const bool changesLock = whichInfo & kFSCatInfoNodeFlags && lock != isLocked;
    OSErr error =
        changesLock && !lock ? setLocked(path, false) : OSErr(noErr);  // unlocked first, locked last
    if (error == noErr && whichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo | kFSCatInfoCreateDate |
                                       kFSCatInfoBackupDate))
        error = setCompanion(path, item, whichInfo, *catalogInfo);
    if (error == noErr && whichInfo & kFSCatInfoPermissions)
        error = setPermissions(path, item, whichInfo, catalogInfo->permissions);
    if (error == noErr && whichInfo & (kFSCatInfoContentMod | kFSCatInfoAccessDate)) {
        timespec times[2] = {{0, UTIME_OMIT}, {0, UTIME_OMIT}};
        if (whichInfo & kFSCatInfoAccessDate)
            times[0] = timeFromDate(catalogInfo->accessDate);
        if (whichInfo & kFSCatInfoContentMod)
            times[1] = timeFromDate(catalogInfo->contentModDate);
        if (utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
            error = fileError(errno);
    }
    return error == noErr && changesLock && lock ? setLocked(path, true) : error;
}
