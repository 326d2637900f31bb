#include "platform/Aliases/private/ReferencePath.h"

#include <climits>

namespace tarvik::aliases {

OSErr pathOf(const FSRef *ref, std::string &path)
{
    path.clear();
    if (!ref)
        return noErr;
    UInt8 room[PATH_MAX + 1];
    const OSStatus error = FSRefMakePath(ref, room, sizeof room);
    if (error == noErr)
        path = reinterpret_cast<const char *>(room);
    return OSErr(error);
}

OSErr referenceTo(const std::string &path, FSRef *ref, bool *isFolder)
{
    Boolean folder = false;
    const OSStatus error = FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()),
                                                    kFSPathMakeRefDoNotFollowLeafSymlink, ref, &folder);
    if (isFolder)
        *isFolder = folder;
    return OSErr(error);
}

}  // namespace tarvik::aliases
