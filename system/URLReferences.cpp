#include "private/URLReferences.h"

#include <cstring>
#include <limits.h>

namespace tarvik::files {

bool referenceOfURL(CFURLRef url, FSRef *ref)
{
    UInt8 path[PATH_MAX];
    return url && ref && CFURLGetFileSystemRepresentation(url, true, path, sizeof path) && FSPathMakeRef(path, ref, nullptr) == noErr;
}

CFURLRef copyURLOfReference(const FSRef *ref)
{
    UInt8 path[PATH_MAX];
    FSCatalogInfo info;
    if (!ref || FSRefMakePath(ref, path, sizeof path) != noErr || FSGetCatalogInfo(ref, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr) != noErr)
        return nullptr;
    const auto length = CFIndex(std::strlen(reinterpret_cast<const char *>(path)));
    return CFURLCreateFromFileSystemRepresentation(nullptr, path, length, (info.nodeFlags & kFSNodeIsDirectoryMask) != 0);
}

}  // namespace tarvik::files
