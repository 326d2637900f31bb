#include "platform/Files/FindFolder.h"

#include <Carbon/Files.h>
#include <Carbon/Folders.h>

OSErr FSFindFolder(SInt16 domain, OSType folderType, Boolean createFolder, FSRef *foundRef)
{
    if (!foundRef)
        return paramErr;
    std::string path;
    const OSErr error = findFolder(domain, folderType, createFolder, path);
    return error ? error
                 : OSErr(FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), foundRef, nullptr));
}
