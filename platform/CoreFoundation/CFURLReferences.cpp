#include <Carbon/Files.h>
#include <CoreFoundation/CFURL.h>

#include <climits>
#include <cstring>
#include <sys/stat.h>

Boolean CFURLGetFSRef(CFURLRef url, FSRef *ref)
{
    UInt8 path[PATH_MAX];
    return url && ref && CFURLGetFileSystemRepresentation(url, true, path, sizeof path) &&
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
