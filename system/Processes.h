/// \file
/// Running processes, found by the file of their application: the folder X.app, or the executable of a process that has none.
///
///     FSRef ink;
///     FSMakeFromPosixPath(CFSTR("/usr/lib/GNUstep/Applications/Ink.app"), &ink);
///     if (FSIsRunningProcess(&ink)) FSSetFrontProcess(&ink);
///
/// Where several processes have the same bundle, the one that was started first is meant. Booleans are false on any failure, and for null.
/// Thread: any.
#pragma once
#include <Carbon/Files.h>
#include <Carbon/LSOpen.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

/// False ends the walk.
typedef Boolean (*EnumerateAllProcessCallback)(const ProcessSerialNumber *number, void *context);
/// Calls for each process, in the order of their starts. True when the walk came to its end, false when the callback ended it or is missing.
Boolean EnumerateAllProcess(EnumerateAllProcessCallback callback, void *context);

/// The bundle of the calling, or the frontmost, process.
Boolean FSGetCurrentProcess(FSRef *ref);
Boolean FSGetFrontProcess(FSRef *ref);
CFURLRef CFURLCopyCurrentProcess(void);  ///< the caller releases it
/// Its name. The caller releases it.
CFStringRef CFStringCopyCurrentProcessName(void);
CFStringRef CFStringCopyFrontProcessName(void);

/// The bundles of all processes, one FSRef after the other; those that can't be had are left out. The caller releases it.
CFMutableDataRef FSCopyAllProcess(void);
/// The callback that appends a process's bundle to a CFMutableDataRef, its context; goes on.
Boolean FSCopyAllProcessEnumeration(const ProcessSerialNumber *number, void *context);

/// Whether some process has that bundle; whether the frontmost one has.
Boolean FSIsRunningProcess(const FSRef *ref);
Boolean CFURLIsRunningProcess(CFURLRef url);
Boolean FSIsFrontProcess(const FSRef *ref);

/// The first process of a bundle; {0, 0} when there is none.
Boolean FSGetProcessSerialNumber(const FSRef *ref, ProcessSerialNumber *number);
Boolean CFURLGetProcessSerialNumber(CFURLRef url, ProcessSerialNumber *number);
/// The callback that looks for it: sets number and found at the first process of that bundle, and goes on until then.
struct ProcessEnumerationContext {
    const FSRef *ref;
    UInt32 found;
    ProcessSerialNumber *number;
};
typedef struct ProcessEnumerationContext ProcessEnumerationContext;
Boolean FSGetProcessSerialNumberEnumeration(const ProcessSerialNumber *number, void *context);

/// Brings the calling process, or the first one of a bundle, to the front.
Boolean ProcessActivate(void);
Boolean FSSetFrontProcess(const FSRef *ref);

/// Launches the application of that URL, without documents.
Boolean LSLaunchURLWithLaunchFlags(CFURLRef url, LSLaunchFlags flags);

#ifdef __cplusplus
}
#endif
