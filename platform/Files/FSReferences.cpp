#include "platform/Files/private/Lookup.h"

#include <cstring>

using namespace tarvik::files;

OSStatus FSPathMakeRef(const UInt8 *path, FSRef *ref, Boolean *isDirectory)
{
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDefaultOptions, ref, isDirectory);
}

OSStatus FSPathMakeRefWithOptions(const UInt8 *path, OptionBits options, FSRef *ref, Boolean *isDirectory)
{
    if (!path || !ref)
        return paramErr;
    struct statx found;
    const Leaf leaf = options & kFSPathMakeRefDoNotFollowLeafSymlink ? Leaf::asIs : Leaf::follow;
    const OSErr error = makeReference(reinterpret_cast<const char *>(path), leaf, ref, &found);
    if (error == noErr && isDirectory)
        *isDirectory = S_ISDIR(found.stx_mode);
    return error;
}

OSStatus FSRefMakePath(const FSRef *ref, UInt8 *path, UInt32 maxPathSize)
{
    if (!path)
        return paramErr;
    std::string known;
    if (const OSErr error = locate(ref, known); error != noErr)
        return ref ? OSStatus(error) : OSStatus(errFSBadFSRef);
    if (known.size() >= maxPathSize)
        return pathTooLongErr;
    std::memcpy(path, known.c_str(), known.size() + 1);
    return noErr;
}

OSErr FSMakeFSRefUnicode(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name, TextEncoding,
                         FSRef *newRef)
{
    if (!newRef)
        return paramErr;
    std::string folder, bytes;
    if (const OSErr error = locateFolder(parentRef, folder); error != noErr)
        return error;
    if (const OSErr error = nameFromUnicode(name, nameLength, bytes); error != noErr)
        return error;
    return makeReference(joined(folder, existingName(folder, bytes)), Leaf::asIs, newRef);
}

OSErr FSCompareFSRefs(const FSRef *ref1, const FSRef *ref2)
{
    Identity item1, item2;
    if (!ref1 || !ref2 || identity(ref1, item1) != noErr || identity(ref2, item2) != noErr)
        return errFSBadFSRef;
    if (item1.device != item2.device)
        return diffVolErr;
    return item1 == item2 ? OSErr(noErr) : OSErr(errFSRefsDifferent);
}

Boolean FSIsFSRefValid(const FSRef *ref)
{
    std::string path;
    return locate(ref, path) == noErr;
}
