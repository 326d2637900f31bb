/// CFURL.h: URLs, and paths as file URLs. A CFURLRef is an NSURL.
///
/// Path styles: POSIX ("/usr/bin/env"), and HFS: the volume's name first, colons between the parts, a slash within a name where
/// the POSIX name has a colon ("Disk:usr:bin:env"; a leading colon makes a path relative). The volume at "/" is named
/// by its label, or "Disk"; another volume by the last part of its mount point.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFURLPathStyle;
enum { kCFURLPOSIXPathStyle = 0, kCFURLHFSPathStyle = 1, kCFURLWindowsPathStyle = 2 };

CF_EXPORT CFTypeID CFURLGetTypeID(void);

// Making URLs.
CF_EXPORT CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef string, CFURLRef baseURL); ///< null when it is no URL
CF_EXPORT CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex length, CFStringEncoding encoding, CFURLRef baseURL);
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style, Boolean isDirectory); ///< a relative path: to the working directory
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style, Boolean isDirectory, CFURLRef baseURL);
CF_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8 *path, CFIndex length, Boolean isDirectory); ///< byte-exact
CF_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(CFAllocatorRef allocator, const UInt8 *path, CFIndex length, Boolean isDirectory, CFURLRef baseURL);
CF_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component, Boolean isDirectory);
CF_EXPORT CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url); ///< the result is a directory
CF_EXPORT CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef allocator, CFURLRef url, CFStringRef extension);
CF_EXPORT CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url);
CF_EXPORT CFURLRef CFURLCopyAbsoluteURL(CFURLRef url);

// Reading URLs.
CF_EXPORT CFStringRef CFURLGetString(CFURLRef url); ///< as it was made: relative to its base
CF_EXPORT CFURLRef    CFURLGetBaseURL(CFURLRef url);
CF_EXPORT Boolean     CFURLCanBeDecomposed(CFURLRef url);
CF_EXPORT CFStringRef CFURLCopyScheme(CFURLRef url);
CF_EXPORT CFStringRef CFURLCopyNetLocation(CFURLRef url);
CF_EXPORT CFStringRef CFURLCopyHostName(CFURLRef url);
CF_EXPORT SInt32      CFURLGetPortNumber(CFURLRef url); ///< -1 without one
CF_EXPORT CFStringRef CFURLCopyUserName(CFURLRef url);
CF_EXPORT CFStringRef CFURLCopyPassword(CFURLRef url);
CF_EXPORT CFStringRef CFURLCopyPath(CFURLRef url); ///< as it is spelled in the URL, escapes and trailing slash included
CF_EXPORT CFStringRef CFURLCopyQueryString(CFURLRef url, CFStringRef charactersToLeaveEscaped);
CF_EXPORT CFStringRef CFURLCopyFragment(CFURLRef url, CFStringRef charactersToLeaveEscaped);
CF_EXPORT CFStringRef CFURLCopyLastPathComponent(CFURLRef url); ///< unescaped
CF_EXPORT CFStringRef CFURLCopyPathExtension(CFURLRef url);     ///< null without one
CF_EXPORT Boolean     CFURLHasDirectoryPath(CFURLRef url);      ///< the path ends in a slash

/// The path in a style, without a slash at the end ("/" and an HFS volume apart). Of a relative URL it is relative.
/// Null for a URL without a path and for a file name that is not UTF-8.
CF_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);
/// The bytes of the path, ended by a zero byte; false when they do not fit.
CF_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8 *buffer, CFIndex maxBufLen);

/// The item that a file URL leads to, which must exist, and back.
struct FSRef;
CF_EXPORT Boolean  CFURLGetFSRef(CFURLRef url, struct FSRef *ref);
CF_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const struct FSRef *ref); ///< null for an item that is gone

// Percent escapes.
/// Null characters: nothing is replaced. The empty string: everything is. Otherwise escapes of these characters are left.
CF_EXPORT CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef string, CFStringRef charactersToLeaveEscaped);
CF_EXPORT CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator, CFStringRef string, CFStringRef charactersToLeaveUnescaped,
                                                              CFStringRef legalURLCharactersToBeEscaped, CFStringEncoding encoding);

CF_EXTERN_C_END
