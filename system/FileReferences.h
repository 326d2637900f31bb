/// \file
/// Names and paths of file-system references, and references of paths.
///
///     FSRef ref;
///     if (FSMakeFromPosixPath(CFSTR("/etc/hosts"), &ref)) {
///         CFStringRef name = FSCopyNameString(&ref);                                // "hosts"
///         CFStringRef path = FSCopyPathStringOfStyle(&ref, kCFURLHFSPathStyle);     // "Disk:etc:hosts"
///     }
///
/// Results are the caller's: strings are released, C strings (of CStringConversion.h's kind) freed. Null or false for a null
/// reference, for an item that is gone, and for a text that the encoding can't hold. Thread: any.
#pragma once
#include <Carbon/Files.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The name as the catalog has it: a slash stands for the path's colon.
CFStringRef FSCopyNameString(const FSRef *ref);
char *FSAllocNameCString(const FSRef *ref, CFStringEncoding encoding);

CFStringRef FSCopyPathString(const FSRef *ref);
CFStringRef FSCopyPathStringOfStyle(const FSRef *ref, CFURLPathStyle style);
char *FSAllocPathCString(const FSRef *ref, CFStringEncoding encoding);
char *FSAllocPathCStringOfStyle(const FSRef *ref, CFURLPathStyle style, CFStringEncoding encoding);
/// In a zero-filled buffer of 1025 bytes; null for a longer path.
char *FSAllocPathUTF8String(const FSRef *ref);

Boolean FSMakeFromPosixPath(CFStringRef path, FSRef *ref);
Boolean FSMakeFromPathString(CFStringRef path, CFURLPathStyle style, Boolean isDirectory, FSRef *ref);
/// The item of that name in a folder; a link itself.
Boolean FSGetChild(const FSRef *parent, FSRef *child, CFStringRef name);

#ifdef __cplusplus
}
#endif
