/// FileOperations.h: the File Manager's copies of whole items: files of any size, links, folders with all they hold.
///
///     FSCopyObjectSync(&film, &folder, NULL, NULL, kFSFileOperationOverwrite);
///
///     FSFileOperationRef copy = FSFileOperationCreate(NULL);
///     FSFileOperationScheduleWithRunLoop(copy, CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
///     FSCopyObjectAsync(copy, &film, &folder, NULL, 0, showStatus, 0.5, NULL);      // showStatus is called by the run loop
///     ...
///     CFRelease(copy);
///
/// A copy has both forks, Finder information, permissions and dates of each item; of the item itself also whether it is locked.
/// It is made beside its place and moved there when it is whole: a copy that fails, or is cancelled, leaves nothing, and what
/// it was to replace as it was. Holes stay holes; data are shared with the original, or copied by the kernel, where the file
/// system can. Links are copied as links. Sockets, pipes and devices can't be: notAFileErr.
#pragma once

#include <Carbon/Files.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    kFSFileOperationDefaultOptions             = 0,
    kFSFileOperationOverwrite                  = 0x01, ///< what has the name is replaced, a folder with all it holds
    kFSFileOperationSkipSourcePermissionErrors = 0x02, ///< what may not be read below a folder is left out
    kFSFileOperationDoNotMoveAcrossVolumes     = 0x04, ///< of no meaning to a copy
    kFSFileOperationSkipPreflight              = 0x08  ///< no totals are made up first
};

/// Copies an item into a folder and returns when that is done.
/// \param destName the copy's name; null: the source's
/// \param target receives a reference to the copy; may be null
/// \return dupFNErr for a name that is taken, and for what is the item itself or holds it; badMovErr for a folder into itself; errFSNotAFolder;
///         dskFulErr, afpAccessDenied, ... of the item that could not be copied. Thread: any.
OSStatus FSCopyObjectSync(const FSRef *source, const FSRef *destDir, CFStringRef destName, FSRef *target, OptionBits options);

/// A copy that is made on a thread of its own; released with CFRelease, which doesn't end it.
typedef struct __FSFileOperation *FSFileOperationRef;

typedef UInt32 FSFileOperationStage;
enum {
    kFSOperationStageUndefined    = 0, ///< not begun
    kFSOperationStagePreflighting = 1, ///< sizes are being added up
    kFSOperationStageRunning      = 2,
    kFSOperationStageComplete     = 3  ///< done, failed or cancelled
};

// The status: CFNumbers. Objects are files, links and folders. Totals are 0 until they are known.
CF_EXPORT const CFStringRef kFSOperationTotalBytesKey;
CF_EXPORT const CFStringRef kFSOperationBytesCompleteKey;
CF_EXPORT const CFStringRef kFSOperationBytesRemainingKey;
CF_EXPORT const CFStringRef kFSOperationTotalObjectsKey;
CF_EXPORT const CFStringRef kFSOperationObjectsCompleteKey;
CF_EXPORT const CFStringRef kFSOperationObjectsRemainingKey;
CF_EXPORT const CFStringRef kFSOperationThroughputKey; ///< bytes a second so far

/// Called by the run loop: while the copy is made, and once more when it is complete, with the error it ended with.
/// \param currentItem what is being copied, at the end the copy; no valid reference when there is none
typedef void (*FSFileOperationStatusProcPtr)(FSFileOperationRef fileOp, const FSRef *currentItem, FSFileOperationStage stage,
                                             OSStatus error, CFDictionaryRef statusDictionary, void *info);
struct FSFileOperationClientContext {
    CFIndex version; ///< 0
    void *info;
    const void *(*retain)(const void *info); ///< may be null, as the two below
    void (*release)(const void *info);
    CFStringRef (*copyDescription)(const void *info);
};
typedef struct FSFileOperationClientContext FSFileOperationClientContext;

/// The allocator is ignored. The caller releases it.
FSFileOperationRef FSFileOperationCreate(CFAllocatorRef allocator);
/// The loops that call the status function, each in its mode: without one it isn't called. From the loop's own thread.
OSStatus FSFileOperationScheduleWithRunLoop(FSFileOperationRef fileOp, CFRunLoopRef runLoop, CFStringRef runLoopMode);
OSStatus FSFileOperationUnscheduleFromRunLoop(FSFileOperationRef fileOp, CFRunLoopRef runLoop, CFStringRef runLoopMode);
/// Begins the copy. One operation makes one.
/// \param statusChangeInterval the least time between two calls of `callback`, in seconds
/// \return paramErr for null and for an operation that has begun; what goes wrong later, `callback` is told
OSStatus FSCopyObjectAsync(FSFileOperationRef fileOp, const FSRef *source, const FSRef *destDir, CFStringRef destName,
                           OptionBits flags, FSFileOperationStatusProcPtr callback, CFTimeInterval statusChangeInterval,
                           const FSFileOperationClientContext *clientContext);
/// Ends it with userCanceledErr as soon as the piece that is being copied is through (16 MiB at most). Thread: any.
OSStatus FSFileOperationCancel(FSFileOperationRef fileOp);
/// Receivers may be null. The caller releases the dictionary. Thread: any.
OSStatus FSFileOperationCopyStatus(FSFileOperationRef fileOp, FSRef *currentItem, FSFileOperationStage *stage, OSStatus *error,
                                   CFDictionaryRef *statusDictionary, void **info);

#ifdef __cplusplus
}
#endif
