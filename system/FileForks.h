/// \file
/// Files made, and their forks read, written and copied whole.
///
///     HFSUniStr255 fork;
///     FSGetResourceForkName(&fork);
///     CFMutableDataRef resources = FSReadFileFork(&file, &fork);      // empty for a file without resources
///     FSCopyFile(&file, &folder, CFSTR("copy"), NULL);                // both forks, dates, type, label, permissions
///
/// False or null for a null argument and on any failure; what is told here about a failure half-way is all there is. Thread: any.
#pragma once
#include <Carbon/Files.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A new, empty file. With a template whose catalog information can be read it gets that one's dates, Finder information and
/// permissions. A null `file` is allowed.
Boolean FSCreateFile(const FSRef *parent, CFStringRef name, const FSRef *templateFile, FSRef *file);

/// The whole fork, owned by the caller; null for one of 4 GiB or more.
CFMutableDataRef FSReadFileFork(const FSRef *file, const HFSUniStr255 *forkName);
/// Replaces the fork: the old one is deleted first. Empty data leaves it empty.
Boolean FSWriteFileFork(const FSRef *file, const HFSUniStr255 *forkName, CFDataRef data);
/// Reads, then writes, as the two above do (so forks of 4 GiB or more fail); the bytes go from file to file by the shortest way that
/// the file system has.
Boolean FSCopyFileFork(const FSRef *source, const FSRef *destination, const HFSUniStr255 *forkName);
/// A copy of both forks under a name in a folder, an item of that name being deleted first. Both forks are tried: after a failure the
/// new file may hold one of them. A file is not copied onto itself. A null `copy` is allowed.
Boolean FSCopyFile(const FSRef *source, const FSRef *folder, CFStringRef name, FSRef *copy);

/// Whether the data fork begins with one of Mach-O's magic numbers, of either byte order.
Boolean FSIsMachOBinary(const FSRef *file);
Boolean FSBundleGetExecutableFSRef(CFBundleRef bundle, FSRef *executable);

#ifdef __cplusplus
}
#endif
