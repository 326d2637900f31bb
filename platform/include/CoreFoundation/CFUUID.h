/// CFUUID.h: universally unique identifiers (RFC 4122). A CFUUIDRef is an NSUUID.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef struct {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
} CFUUIDBytes;

CF_EXPORT CFTypeID    CFUUIDGetTypeID(void);
CF_EXPORT CFUUIDRef   CFUUIDCreate(CFAllocatorRef allocator); ///< a random one (version 4)
CF_EXPORT CFUUIDRef   CFUUIDCreateFromString(CFAllocatorRef allocator, CFStringRef string); ///< null when it does not spell one
CF_EXPORT CFUUIDRef   CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator, CFUUIDBytes bytes);
CF_EXPORT CFStringRef CFUUIDCreateString(CFAllocatorRef allocator, CFUUIDRef uuid); ///< "68753A44-4D6F-1226-9C60-0050E4C00067"
CF_EXPORT CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);

CF_EXTERN_C_END
