#include "FileReferences.h"

#include <Tarvik/support/CFOwned.h>
#include <Tarvik/text/CStringConversion.h>
#include <Tarvik/text/EncodingConversion.h>

#include <cstdlib>
#include <cstring>
#include <limits.h>

using tarvik::CFOwned;

namespace {

constexpr size_t kPathBuffer = 1025;
constexpr TextEncoding kUnknownEncoding = 0xFFFF;

char *allocCString(const CFOwned<CFStringRef> &text, CFStringEncoding encoding)
{
    return text ? CFStringAllocCString(text.get(), encoding) : nullptr;
}

}  // namespace

CFStringRef FSCopyNameString(const FSRef *ref)
{
    HFSUniStr255 name;
    if (!ref || FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr) != noErr)
        return nullptr;
    return CFStringCreateWithCharacters(nullptr, name.unicode, name.length);
}

char *FSAllocNameCString(const FSRef *ref, CFStringEncoding encoding)
{
    return allocCString(CFOwned<CFStringRef>(FSCopyNameString(ref)), encoding);
}

CFStringRef FSCopyPathString(const FSRef *ref)
{
    UInt8 path[PATH_MAX];
    if (!ref || FSRefMakePath(ref, path, sizeof path) != noErr)
        return nullptr;
    return CFStringCreateWithCString(nullptr, reinterpret_cast<const char *>(path), kCFStringEncodingUTF8);
}

CFStringRef FSCopyPathStringOfStyle(const FSRef *ref, CFURLPathStyle style)
{
    const CFOwned<CFURLRef> url(CFURLCreateFromFSRef(nullptr, ref));
    return url ? CFURLCopyFileSystemPath(url.get(), style) : nullptr;
}

char *FSAllocPathCString(const FSRef *ref, CFStringEncoding encoding)
{
    return allocCString(CFOwned<CFStringRef>(FSCopyPathString(ref)), encoding);
}

char *FSAllocPathCStringOfStyle(const FSRef *ref, CFURLPathStyle style, CFStringEncoding encoding)
{
    return allocCString(CFOwned<CFStringRef>(FSCopyPathStringOfStyle(ref, style)), encoding);
}

char *FSAllocPathUTF8String(const FSRef *ref)
{
    auto *path = static_cast<char *>(std::calloc(kPathBuffer, 1));
    if (path && ref && FSRefMakePath(ref, reinterpret_cast<UInt8 *>(path), kPathBuffer) == noErr)
        return path;
    std::free(path);
    return nullptr;
}

Boolean FSMakeFromPosixPath(CFStringRef path, FSRef *ref)
{
    char bytes[PATH_MAX];
    return path && ref && CFStringGetCString(path, bytes, sizeof bytes, kCFStringEncodingUTF8) &&
           FSPathMakeRef(reinterpret_cast<const UInt8 *>(bytes), ref, nullptr) == noErr;
}

Boolean FSMakeFromPathString(CFStringRef path, CFURLPathStyle style, Boolean isDirectory, FSRef *ref)
{
    const CFOwned<CFURLRef> url(path ? CFURLCreateWithFileSystemPath(nullptr, path, style, isDirectory)
                                     : nullptr);
    return url && CFURLGetFSRef(url.get(), ref);
}

Boolean FSGetChild(const FSRef *parent, FSRef *child, CFStringRef name)
{
    HFSUniStr255 record;
    return parent && child && CFStringGetHFSUniStr255(name, &record) &&
           FSMakeFSRefUnicode(parent, record.length, record.unicode, kUnknownEncoding, child) == noErr;
}
