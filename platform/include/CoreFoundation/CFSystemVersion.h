/// CFSystemVersion.h: what the system calls itself.
///
///     "ProductName"          "Debian GNU/Linux"
///     "ProductVersion"       "12"
///     "ProductBuildVersion"  "6.1.0-25-amd64"
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// The system's version file as a dictionary of strings: the property list
/// /System/Library/CoreServices/SystemVersion.plist where there is one, else the release file (/etc/os-release, else
/// /usr/lib/os-release): NAME, VERSION_ID and BUILD_ID, the latter being the kernel's release when missing. A field
/// that the file lacks is absent. Null when there is no version file at all. Read afresh at every call. Any thread.
CF_EXPORT CFDictionaryRef CFCopySystemVersionDictionary(void);

CF_EXTERN_C_END
