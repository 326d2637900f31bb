/// CFURLAccess.h: reading and writing what a URL names, at once.
///
/// File URLs are read and written directly; a file is replaced whole or not at all, keeps its permissions, and is written
/// through a symbolic link. Other schemes are read through the platform's URL loading and can't be written.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

CF_EXTERN_C_BEGIN

// Error codes; 0 is success.
typedef CFIndex CFURLError;
enum {
    kCFURLUnknownError                 = -10,
    kCFURLUnknownSchemeError           = -11,
    kCFURLResourceNotFoundError        = -12,
    kCFURLResourceAccessViolationError = -13,
    kCFURLRemoteHostUnavailableError   = -14,
    kCFURLImproperArgumentsError       = -15,
    kCFURLUnknownPropertyKeyError      = -16,
    kCFURLPropertyKeyUnavailableError  = -17,
    kCFURLTimeoutError                 = -18
};

// Properties of a file URL.
CF_EXPORT const CFStringRef kCFURLFileExists;               ///< boolean
CF_EXPORT const CFStringRef kCFURLFileDirectoryContents;    ///< array of URLs; of a directory
CF_EXPORT const CFStringRef kCFURLFileLength;               ///< number, in bytes
CF_EXPORT const CFStringRef kCFURLFileLastModificationTime; ///< date; can be written
CF_EXPORT const CFStringRef kCFURLFilePOSIXMode;            ///< number; its permission bits can be written
CF_EXPORT const CFStringRef kCFURLFileOwnerID;              ///< number; can be written, as the system allows
// Properties of an http URL.
CF_EXPORT const CFStringRef kCFURLHTTPStatusCode; ///< number
CF_EXPORT const CFStringRef kCFURLHTTPStatusLine; ///< string

/// Reads the resource. `resourceData` and `properties` receive owned objects and may be null when not wanted;
/// `desiredProperties` null asks for all. False when the resource can't be read; a property that can't be had is left out.
CF_EXPORT Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef allocator, CFURLRef url, CFDataRef *resourceData, CFDictionaryRef *properties,
                                                           CFArrayRef desiredProperties, SInt32 *errorCode);
/// Writes the data (null: leaves the contents alone), then the properties (null: none).
/// A directory URL is made a folder, the data being empty then.
CF_EXPORT Boolean   CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef dataToWrite, CFDictionaryRef propertiesToWrite, SInt32 *errorCode);
CF_EXPORT Boolean   CFURLDestroyResource(CFURLRef url, SInt32 *errorCode); ///< a file, a link itself, or an empty folder
CF_EXPORT CFTypeRef CFURLCreatePropertyFromResource(CFAllocatorRef allocator, CFURLRef url, CFStringRef property, SInt32 *errorCode);

CF_EXTERN_C_END
