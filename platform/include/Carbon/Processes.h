/// Processes.h: the Process Manager: which processes there are, what they were started from, which one is in front.
///
///     ProcessSerialNumber number = {0, kNoProcess};
///     FSRef location;
///     while (GetNextProcess(&number) == noErr)
///         if (GetProcessBundleLocation(&number, &location) == noErr) ...
///
/// A process is here when it lives and this user may read what it executes: the user's own processes, for root all but the kernel's.
/// Its number is made of its process id and the moment of its start. So every program knows it by the same number, from its start to its
/// end, through exec too, and no other process ever has it while the machine runs.
/// Errors: paramErr for a null pointer, procNotFound for a process that has ended, is another user's, or never was. Thread: any.
#pragma once

#include <Carbon/Files.h>
#include <Carbon/MacTypes.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Numbers that no process has, all with 0 in their high half. kCurrentProcess stands for the caller wherever a number is asked for.
enum { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

/// The caller's own number.
OSErr GetCurrentProcess(ProcessSerialNumber *pPSN);
/// The process that follows a number in the order of the starts; after {0, kNoProcess} the one that has been running longest. procNotFound,
/// and {0, kNoProcess}, after the last. The number it follows need not live any more. A walk sees the processes that there were when it began.
OSErr GetNextProcess(ProcessSerialNumber *pPSN);
/// Whether two numbers mean the same process; neither has to live.
OSErr SameProcess(const ProcessSerialNumber *pPSN1, const ProcessSerialNumber *pPSN2, Boolean *pResult);

/// Between numbers and process ids. An ended process has no id, even while its parent has yet to wait for it; threads have no number.
OSStatus GetProcessPID(const ProcessSerialNumber *psn, pid_t *pid);
OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber *psn);

/// The item that stands for the process: the innermost folder X.app that holds its executable, else the executable. fnfErr when that has
/// been deleted, or lies where this process sees other files. Within a walk, what the walk has just read is believed.
OSStatus GetProcessBundleLocation(const ProcessSerialNumber *psn, FSRef *location);
/// What users call it: an application's name, else the executable's. The caller releases it; null on failure.
OSStatus CopyProcessName(const ProcessSerialNumber *psn, CFStringRef *name);

enum { kProcessDictionaryIncludeAllInformationMask = (int)0xFFFFFFFF };
/// What is known of a process; the caller releases it. Null when there is none. The mask is not used.
///   "PSN", "ParentPSN"     both halves as one number         "pid"
///   "BundlePath"           where its item is                 "CFBundleExecutable"  the path of what it executes
///   "CFBundleName"         as CopyProcessName has it         "CFBundleIdentifier", "FileCreator"  of applications that have one
CFDictionaryRef ProcessInformationCopyDictionary(const ProcessSerialNumber *psn, UInt32 infoToReturn);

/// The process whose window is the active one, by the window manager (EWMH). procNotFound, and {0, kNoProcess}, when no window is, it is
/// another machine's or says no process id, there is no display ($DISPLAY), or no such window manager. Connects for the one question.
OSErr GetFrontProcess(ProcessSerialNumber *pPSN);
/// Asks the window manager to raise the process's windows, in the order in which they lie, and to activate the topmost; it does so in its own
/// time, for other programs' processes too. appIsDaemon: it has no window; connectionInvalid: no display or no such window manager.
OSErr SetFrontProcess(const ProcessSerialNumber *pPSN);

#ifdef __cplusplus
}
#endif
