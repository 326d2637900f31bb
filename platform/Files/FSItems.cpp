#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Lookup.h"
#include "platform/Files/private/Specs.h"

#include <Tarvik/support/Handle.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>

using namespace tarvik::files;

namespace {

OSErr lastError() { return fileError(errno); }

/// Renames onto a free name. 0 or errno.
int renameNew(const std::string &from, const std::string &to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // EINVAL: a folder into itself, or a file system that can't refuse by itself.
    struct statx there;
    if (status(AT_FDCWD, to.c_str(), there) == 0)
        return EEXIST;
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

/// Whether both names are of one item: a rename to another case or normal form, where the file system sees no
/// difference.
bool isSameItem(const std::string &path, const std::string &other)
{
    struct statx item, otherItem;
    return status(AT_FDCWD, path.c_str(), item) == 0 && status(AT_FDCWD, other.c_str(), otherItem) == 0 &&
           identityOf(item) == identityOf(otherItem) && item.stx_nlink == 1;
}

/// Item and companion, or neither of them.
OSErr carry(const FSRef *ref, const std::string &from, const std::string &to, FSRef *newRef)
{
    if (from != to) {
        const std::string companion = companionPath(from), newCompanion = companionPath(to);
        const bool carries = hasCompanion(from);
        if (carries && newCompanion.empty())
            return errFSNameTooLong;
        if (carries)
            if (const int error = renameNew(companion, newCompanion); error != 0)
                return fileError(error);
        int error = renameNew(from, to);
        if (error == EEXIST && isSameItem(from, to))
            error = rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
        if (error != 0) {
            if (carries)
                renameNew(newCompanion, companion);
            return error == EINVAL ? OSErr(badMovErr) : fileError(error);
        }
        noteMove(ref, to);
    }
    return newRef ? makeReference(to, Leaf::asIs, newRef) : OSErr(noErr);
}

OSErr place(const FSRef *parent, UniCharCount nameLength, const UniChar *name, std::string &path)
{
    std::string folder, bytes;
    if (const OSErr error = locateFolder(parent, folder); error != noErr)
        return error;
    if (const OSErr error = nameFromUnicode(name, nameLength, bytes); error != noErr)
        return error;
    path = joined(folder, bytes);
    return existingName(folder, bytes) == bytes ? OSErr(noErr)
                                                : OSErr(dupFNErr);  // there in another normal form
}

template <class Undo>
OSErr finish(const std::string &path, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo,
             FSRef *newRef, FSSpec *newSpec, Undo &&undo)
{
    FSRef ref;
    struct statx item;
    OSErr error = makeReference(path, Leaf::asIs, &ref, &item);
    if (error == noErr && catalogInfo && whichInfo != kFSCatInfoNone)
        error = FSSetCatalogInfo(&ref, whichInfo, catalogInfo);
    if (error == noErr && newSpec)
        error = makeSpec(path, item, newSpec);
    if (error != noErr)
        undo();
    else if (newRef)
        *newRef = ref;
    return error;
}

}  // namespace

OSErr FSCreateFileUnicode(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo, FSRef *newRef,
                          FSSpec *newSpec)
{
    std::string path;
    if (const OSErr error = place(parentRef, nameLength, name, path); error != noErr)
        return error;
    const tarvik::FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file)
        return lastError();
    return finish(path, whichInfo, catalogInfo, newRef, newSpec, [&] { unlink(path.c_str()); });
}

OSErr FSCreateDirectoryUnicode(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                               FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo, FSRef *newRef,
                               FSSpec *newSpec, UInt32 *newDirID)
{
    std::string path;
    if (const OSErr error = place(parentRef, nameLength, name, path); error != noErr)
        return error;
    if (mkdir(path.c_str(), 0777) != 0)
        return lastError();
    const OSErr error = finish(path, whichInfo, catalogInfo, newRef, newSpec, [&] { rmdir(path.c_str()); });
    struct statx item;
    if (error == noErr && newDirID && status(AT_FDCWD, path.c_str(), item) == 0)
        *newDirID = numberOf(item, false);
    return error;
}

OSErr FSDeleteObject(const FSRef *ref)
{
    std::string path;
    struct statx item;
    if (const OSErr error = locate(ref, path, &item); error != noErr)
        return error;
    if (item.stx_attributes & STATX_ATTR_IMMUTABLE)
        return fLckdErr;
    const CarriedCompanion companion(path);
    // The item first: a companion without its item does no harm, an item without its companion has lost
    // something.
    if ((S_ISDIR(item.stx_mode) ? rmdir(path.c_str()) : unlink(path.c_str())) != 0)
        return errno == EEXIST ? OSErr(fBsyErr) : lastError();
    noteRemoval(ref);
    return companion.remove();
}

OSErr FSMoveObject(const FSRef *ref, const FSRef *destDirectory, FSRef *newRef)
{
    std::string path, folder;
    struct statx item, folderItem;
    if (const OSErr error = locate(ref, path, &item); error != noErr)
        return error;
    if (const OSErr error = locateFolder(destDirectory, folder, &folderItem); error != noErr)
        return error;
    if (identityOf(item).device != identityOf(folderItem).device)
        return diffVolErr;
    if (folder == path || folder.starts_with(path + "/"))
        return badMovErr;
    return carry(ref, path, joined(folder, nameOf(path)), newRef);
}

OSErr FSRenameUnicode(const FSRef *ref, UniCharCount nameLength, const UniChar *name, TextEncoding,
                      FSRef *newRef)
{
    std::string path, bytes;
    if (const OSErr error = locate(ref, path); error != noErr)
        return error;
    if (const OSErr error = nameFromUnicode(name, nameLength, bytes); error != noErr)
        return error;
    return carry(ref, path, joined(folderOf(path), bytes), newRef);
}
