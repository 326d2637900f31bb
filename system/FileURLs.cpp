#include "FileURLs.h"

#include "FileReferences.h"

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFURLAccess.h>
#include <Tarvik/support/CFOwned.h>

#include <cstring>
#include <limits.h>

using tarvik::CFOwned;

namespace {

bool writeProperty(CFURLRef url, CFStringRef name, const CFOwned<CFNumberRef> &value)
{
    if (!url || !value)
        return false;
    const void *keys[] = {name}, *values[] = {value.get()};
    const CFOwned<CFDictionaryRef> properties(CFDictionaryCreate(
        nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    SInt32 error = 0;
    return properties && CFURLWriteDataAndPropertiesToResource(url, nullptr, properties.get(), &error) &&
           error == 0;
}

}  // namespace

Boolean CFURLIsExist(CFURLRef url)
{
    FSRef ref;
    return CFURLGetFSRef(url, &ref);
}

CFStringRef CFURLCopyPosixPath(CFURLRef url)
{
    FSRef ref;
    return CFURLGetFSRef(url, &ref) ? FSCopyPathString(&ref) : nullptr;
}

CFURLRef CFURLCreateFromFSSpec(const FSSpec *spec)
{
    FSRef ref;
    return spec && FSpMakeFSRef(spec, &ref) == noErr ? CFURLCreateFromFSRef(nullptr, &ref) : nullptr;
}

Boolean CFURLGetFSSpec(CFURLRef url, FSSpec *spec)
{
    FSRef ref;
    return spec && CFURLGetFSRef(url, &ref) &&
           FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, spec, nullptr) == noErr;
}

CFURLRef CFURLCreateWithFindFolder(SInt16 domain, OSType folderType, Boolean createFolder,
                                   CFStringRef component, Boolean isDirectory)
{
    char path[PATH_MAX];
    if (FSFindFolderPath(domain, folderType, createFolder, path, sizeof path) != noErr)
        return nullptr;
    CFOwned<CFURLRef> folder(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8 *>(path), CFIndex(std::strlen(path)), true));
    if (!folder || !component)
        return folder.release();
    return CFURLCreateCopyAppendingPathComponent(nullptr, folder.get(), component, isDirectory);
}

CFBundleRef CFBundleCreateWithFindFolder(SInt16 domain, OSType folderType, CFStringRef bundleName)
{
    const CFOwned<CFURLRef> url(
        bundleName ? CFURLCreateWithFindFolder(domain, folderType, false, bundleName, true) : nullptr);
    return url ? CFBundleCreate(nullptr, url.get()) : nullptr;
}

Boolean CFURLSetFilePOSIXMode(CFURLRef url, UInt16 mode)
{
    const SInt32 number = mode;
    return writeProperty(url, kCFURLFilePOSIXMode,
                         CFOwned<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberSInt32Type, &number)));
}

Boolean CFURLSetFileOwnerID(CFURLRef url, UInt32 ownerID)
{
    const long number = ownerID;
    return writeProperty(url, kCFURLFileOwnerID,
                         CFOwned<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberLongType, &number)));
}
