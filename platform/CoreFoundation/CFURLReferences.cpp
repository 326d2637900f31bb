#include <Carbon/Files.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <Tarvik/support/CFOwned.h>

#include <climits>
#include <cstring>
#include <sys/stat.h>

/// No other scheme's: its path is another machine's.
static bool isFileURL(CFURLRef url)
{
    const tarvik::CFOwned<CFURLRef> absolute(CFURLCopyAbsoluteURL(url));
    const tarvik::CFOwned<CFStringRef> scheme(absolute ? CFURLCopyScheme(absolute.get()) : nullptr);
    return !scheme ||
           CFStringCompare(scheme.get(), CFSTR("file"), kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef *ref)
{
    UInt8 path[PATH_MAX];
    return url && ref && isFileURL(url) && CFURLGetFileSystemRepresentation(url, true, path, sizeof path) &&
           FSPathMakeRef(path, ref, nullptr) == noErr;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef *ref)
{
    UInt8 path[PATH_MAX];
    if (!ref || FSRefMakePath(ref, path, sizeof path) != noErr)
        return nullptr;
    const char *bytes = reinterpret_cast<const char *>(path);
    struct stat status;
    const bool isFolder = stat(bytes, &status) == 0 && S_ISDIR(status.st_mode);
    return CFURLCreateFromFileSystemRepresentation(allocator, path, CFIndex(std::strlen(bytes)), isFolder);
}
