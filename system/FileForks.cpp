#include "FileForks.h"

#include "FileReferences.h"

#include <Tarvik/support/CFOwned.h>
#include <Tarvik/text/EncodingConversion.h>

#include <utility>

using tarvik::CFOwned;

namespace {

constexpr FSIORefNum kNoFork = 0;

/// An open fork, closed at the end of its life at the latest.
class ForkFile {
public:
    ForkFile(const FSRef *file, const HFSUniStr255 *name, SInt8 permission)
    {
        if (FSOpenFork(file, name->length, name->unicode, permission, &number_) != noErr)
            number_ = kNoFork;
    }
    ~ForkFile() { close(); }
    ForkFile(const ForkFile &) = delete;
    ForkFile &operator=(const ForkFile &) = delete;

    explicit operator bool() const { return number_ != kNoFork; }
    FSIORefNum number() const { return number_; }
    /// False when what was written could not be put in place.
    bool close() { return number_ == kNoFork || FSCloseFork(std::exchange(number_, kNoFork)) == noErr; }
    /// False for a fork whose length needs more than 32 bits.
    bool getSize(UInt32 &size) const
    {
        SInt64 whole = 0;
        if (FSGetForkSize(number_, &whole) != noErr || whole < 0 || whole > SInt64{UINT32_MAX})
            return false;
        size = UInt32(whole);
        return true;
    }

private:
    FSIORefNum number_ = kNoFork;
};

/// Whether an empty fork is in place of the old one.
bool renewFork(const FSRef *file, const HFSUniStr255 *name)
{
    FSDeleteFork(file, name->length, name->unicode);
    return FSCreateFork(file, name->length, name->unicode) == noErr;
}

/// A new copy: writable and unlocked while its forks are written, and with its original's dates in the end.
class CopyInProgress {
public:
    CopyInProgress(const FSRef *source, const FSRef *copy) : copy_(copy)
    {
        isKnown_ = FSGetCatalogInfo(source, kKept, &info_, nullptr, nullptr, nullptr) == noErr;
        const bool isProtected =
            info_.nodeFlags & kFSNodeLockedMask || !(info_.permissions.mode & kOwnerMayWrite);
        if (!isKnown_ || !isProtected)
            return;
        FSCatalogInfo open = info_;
        open.nodeFlags = 0;
        open.permissions.mode |= kOwnerMayWrite;
        FSSetCatalogInfo(copy_, kFSCatInfoNodeFlags | kFSCatInfoPermissions, &open);
    }
    ~CopyInProgress()
    {
        if (isKnown_)
            FSSetCatalogInfo(copy_, kKept, &info_);
    }
    CopyInProgress(const CopyInProgress &) = delete;
    CopyInProgress &operator=(const CopyInProgress &) = delete;

private:
    static constexpr UInt16 kOwnerMayWrite = 0200;
    static constexpr FSCatalogInfoBitmap kKept =
        kFSCatInfoNodeFlags | kFSCatInfoPermissions | kFSCatInfoContentMod | kFSCatInfoAccessDate;

    const FSRef *copy_;
    FSCatalogInfo info_{};
    bool isKnown_;
};

constexpr UInt32 kMachOMagics[] = {0xCAFEBABE, 0xBEBAFECA, 0xFEEDFACE, 0xCEFAEDFE, 0xFEEDFACF, 0xCFFAEDFE, 0};

}  // namespace

Boolean FSCreateFile(const FSRef *parent, CFStringRef name, const FSRef *templateFile, FSRef *file)
{
    HFSUniStr255 record;
    if (!parent || !CFStringGetHFSUniStr255(name, &record))
        return false;
    FSCatalogInfo info;
    const bool hasInfo = templateFile && FSGetCatalogInfo(templateFile, kFSCatInfoGettableInfo, &info,
                                                          nullptr, nullptr, nullptr) == noErr;
    return FSCreateFileUnicode(parent, record.length, record.unicode,
                               hasInfo ? kFSCatInfoSettableInfo : kFSCatInfoNone, hasInfo ? &info : nullptr,
                               file, nullptr) == noErr;
}

CFMutableDataRef FSReadFileFork(const FSRef *file, const HFSUniStr255 *forkName)
{
    if (!file || !forkName)
        return nullptr;
    const ForkFile fork(file, forkName, fsRdPerm);
    UInt32 size;
    if (!fork || !fork.getSize(size))
        return nullptr;
    CFOwned<CFMutableDataRef> data(CFDataCreateMutable(nullptr, 0));
    if (!data)
        return nullptr;
    CFDataSetLength(data.get(), size);
    if (CFDataGetLength(data.get()) != CFIndex(size))
        return nullptr;
    ByteCount count = 0;
    if (size > 0 && (FSReadFork(fork.number(), fsFromStart, 0, size, CFDataGetMutableBytePtr(data.get()),
                                &count) != noErr ||
                     count != size))
        return nullptr;
    return data.release();
}

Boolean FSWriteFileFork(const FSRef *file, const HFSUniStr255 *forkName, CFDataRef data)
{
    if (!file || !forkName || !data || CFDataGetLength(data) > CFIndex(UINT32_MAX) ||
        !renewFork(file, forkName))
        return false;
    ForkFile fork(file, forkName, fsWrPerm);
    if (!fork)
        return false;
    const auto size = ByteCount(CFDataGetLength(data));
    return (size == 0 ||
            FSWriteFork(fork.number(), fsFromStart, 0, size, CFDataGetBytePtr(data), nullptr) == noErr) &&
           fork.close();
}

Boolean FSCopyFileFork(const FSRef *source, const FSRef *destination, const HFSUniStr255 *forkName)
{
    if (!source || !destination || !forkName)
        return false;
    const ForkFile from(source, forkName, fsRdPerm);
    UInt32 size;
    if (!from || !from.getSize(size))
        return false;
    if (FSCompareFSRefs(source, destination) == noErr)
        return true;  // what is read would be written back
    if (!renewFork(destination, forkName))
        return false;
    ForkFile to(destination, forkName, fsWrPerm);
    return to && (size == 0 || FSCopyForkContents(from.number(), to.number()) == noErr) && to.close();
}

Boolean FSCopyFile(const FSRef *source, const FSRef *folder, CFStringRef name, FSRef *copy)
{
    HFSUniStr255 dataFork, resourceFork;
    if (!source || !folder || !name || FSGetDataForkName(&dataFork) != noErr ||
        FSGetResourceForkName(&resourceFork) != noErr)
        return false;
    FSRef file;
    if (FSGetChild(folder, &file, name)) {
        if (FSCompareFSRefs(source, &file) == noErr)
            return false;
        FSDeleteObject(&file);
    }
    if (!FSCreateFile(folder, name, source, &file))
        return false;
    bool hasData, hasResources;
    {
        const CopyInProgress unprotected(source, &file);
        hasData = FSCopyFileFork(source, &file, &dataFork);
        hasResources = FSCopyFileFork(source, &file, &resourceFork);
    }
    if (copy)
        *copy = file;
    return hasData && hasResources;
}

Boolean FSIsMachOBinary(const FSRef *file)
{
    HFSUniStr255 dataFork;
    if (!file || FSGetDataForkName(&dataFork) != noErr)
        return false;
    const ForkFile fork(file, &dataFork, fsRdPerm);
    UInt32 start = 0;
    ByteCount count = 0;
    if (!fork || FSReadFork(fork.number(), fsFromStart, 0, sizeof start, &start, &count) != noErr ||
        count != sizeof start)
        return false;
    for (const UInt32 *magic = kMachOMagics; *magic != 0; ++magic)
        if (start == *magic)
            return true;
    return false;
}

Boolean FSBundleGetExecutableFSRef(CFBundleRef bundle, FSRef *executable)
{
    const CFOwned<CFURLRef> url(bundle ? CFBundleCopyExecutableURL(bundle) : nullptr);
    return url && CFURLGetFSRef(url.get(), executable);
}
