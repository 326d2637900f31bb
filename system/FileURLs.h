/// \file
/// What a file URL names: whether it is there, its path, its record; special folders; permissions and owner.
///
///     CFURLRef url = CFURLCreateWithFindFolder(kUserDomain, kPreferencesFolderType, true, CFSTR("Shelf"), true);
///     CFURLSetFilePOSIXMode(url, 0700);
///
/// Results of Copy and Create are the caller's to release. Null or false for a null argument and on any failure. Thread: any.
#pragma once
#include <Carbon/Files.h>
#include <Carbon/Folders.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Whether there is an item, links followed.
Boolean CFURLIsExist(CFURLRef url);
/// The path of the item, links followed; null when there is none.
CFStringRef CFURLCopyPosixPath(CFURLRef url);

CFURLRef CFURLCreateFromFSSpec(const FSSpec *spec);
Boolean CFURLGetFSSpec(CFURLRef url, FSSpec *spec);

/// A special folder, made if it is missing and the flag is set; with a component, which need not exist, appended.
CFURLRef CFURLCreateWithFindFolder(SInt16 domain, OSType folderType, Boolean createFolder,
                                   CFStringRef component, Boolean isDirectory);
/// The bundle of a name in a special folder; null for a null name.
CFBundleRef CFBundleCreateWithFindFolder(SInt16 domain, OSType folderType, CFStringRef bundleName);

Boolean CFURLSetFilePOSIXMode(CFURLRef url, UInt16 mode);
Boolean CFURLSetFileOwnerID(CFURLRef url, UInt32 ownerID);

#ifdef __cplusplus
}
#endif
