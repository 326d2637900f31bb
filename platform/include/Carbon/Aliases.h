/// Aliases.h: the Alias Manager: records that find a file or folder again, after it was renamed or moved.
///
///     AliasHandle alias;
///     FSNewAlias(NULL, &report, &alias);                  // keep GetAliasSize(alias) bytes of *alias, say in the preferences
///     ... the report is renamed, its folder is moved ...
///     FSResolveAlias(NULL, alias, &report, &wasChanged);  // noErr; wasChanged: the record knows the new place now
///
/// A record is looked up, in this order:
/// 1. from the starting file, for a relative alias;
/// 2. by path: what stands there is the target, also when it is another file by now (an editor's save replaces files so);
/// 3. by the path within the volume, wherever the volume is mounted;
/// 4. by the item's identity (inode and birth time): directly where the system allows (root), in the folder where it was, in that
///    folder wherever it went, then on the volume around its old place, within bounds;
/// 5. by name: in its old folder, wherever that went; then around its old place, for a file of the same size and date.
///
/// Records are bytes that may be stored and moved between processes; bytes from outside are not trusted. Thread: any, one at a
/// time for each record.
#pragma once

#include <Carbon/Files.h>
#include <Carbon/MacMemory.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The head of a record; what follows is the Alias Manager's own.
struct AliasRecord {
    OSType userType;          ///< the application's; 0 in a new record
    unsigned short aliasSize; ///< of the whole record
};
typedef struct AliasRecord AliasRecord;
typedef AliasRecord *AliasPtr;
typedef AliasPtr *AliasHandle; ///< a Handle: DisposeHandle((Handle)alias)

enum { kResolveAliasFileNoUI = 0x00000001, kResolveAliasTryFileIDFirst = 0x00000002 };

// Records. fromFile, the starting point of a relative alias, may be null everywhere.

/// A record of the target. A relative path is kept when both lie on one volume. fnfErr when the target is gone.
OSErr FSNewAlias(const FSRef *fromFile, const FSRef *target, AliasHandle *inAlias);
/// A shorter record, without what searches further away than by path and in the old folder.
OSErr FSNewAliasMinimal(const FSRef *target, AliasHandle *inAlias);
/// Makes the record one of this target; wasChanged tells whether that changed it. The user type stays.
OSErr FSUpdateAlias(const FSRef *fromFile, const FSRef *target, AliasHandle alias, Boolean *wasChanged);
/// The target. When it was found elsewhere, or another item stands in its place, the record is updated and wasChanged is true.
/// fnfErr: not there; dirNFErr: neither is its folder; nsvErr: the volume isn't mounted; paramErr: no record, or a damaged one;
/// afpAccessDenied: a folder on the way may not be searched.
OSErr FSResolveAlias(const FSRef *fromFile, AliasHandle alias, FSRef *target, Boolean *wasChanged);
/// The same. No volume is ever mounted and nobody is asked; kResolveAliasTryFileIDFirst looks for the identity before the path.
OSErr FSResolveAliasWithMountFlags(const FSRef *fromFile, AliasHandle inAlias, FSRef *target,
                                   Boolean *wasChanged, unsigned long mountFlags);
/// The record's length in bytes; 0 for null.
Size GetAliasSize(AliasHandle alias);

// Alias files: symbolic links, and desktop entries of type Link with a file URL.

/// Whether it is an alias file; folderFlag: whether it is a folder (an alias file never is).
OSErr FSIsAliasFile(const FSRef *fileRef, Boolean *aliasFileFlag, Boolean *folderFlag);
/// Replaces the reference by its target's: of one step, or with resolveAliasChains through all of them. What is no alias file
/// stays, with wasAliased false. fnfErr: the target is missing; bdNamErr: the chain runs in a circle. The reference stays on failure.
OSErr FSResolveAliasFile(FSRef *theRef, Boolean resolveAliasChains, Boolean *targetIsFolder,
                         Boolean *wasAliased);
OSErr FSResolveAliasFileWithMountFlags(FSRef *theRef, Boolean resolveAliasChains, Boolean *targetIsFolder,
                                       Boolean *wasAliased, unsigned long mountFlags);

#ifdef __cplusplus
}
#endif
