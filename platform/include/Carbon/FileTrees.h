/// FileTrees.h: additions of this platform: what a folder holds and what a whole tree of files takes up, at about the price of a listing.
#pragma once

#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The logical sizes of both forks of the item at a path or, of a folder, of everything below it, added up, as their catalog
/// information has them: a link counts as the file that it leads to, one to a folder or to nothing as nothing; a companion only as what it
/// holds of its item's fork; what can't be looked at, or has a damaged companion, as nothing. Receivers may be null. fnfErr, ...
OSErr FSGetForkSizes(const UInt8 *path, UInt64 *dataLogicalSize, UInt64 *rsrcLogicalSize);

/// What a listing tells of an entry without a look at it.
typedef UInt8 FSEntryKind;
enum { kFSEntryIsOther = 0, kFSEntryIsFolder = 1, kFSEntryIsSymlink = 2, kFSEntryIsUnknown = 3 /**< this file system doesn't say */ };
/// Called for each entry: its name, ended by a zero. False ends the visit.
typedef Boolean (*FSEntryVisitorProc)(const char *name, size_t length, FSEntryKind kind, void *context);
/// What the folder at a path, or at the end of a link there, holds directly: everything, in the file system's order. The folder is read
/// before the first call and isn't open any more: the visitor may change it. errFSNotAFolder, fnfErr, ...
OSErr FSVisitFolder(const UInt8 *path, FSEntryVisitorProc visitor, void *context);

#ifdef __cplusplus
}
#endif
