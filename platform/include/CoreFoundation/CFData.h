/// CFData.h: bytes. A CFDataRef is an NSData, a CFMutableDataRef an NSMutableData.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

CF_EXPORT CFTypeID         CFDataGetTypeID(void);
CF_EXPORT CFDataRef        CFDataCreate(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex length);
CF_EXPORT CFDataRef        CFDataCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex length, CFAllocatorRef bytesDeallocator);
CF_EXPORT CFDataRef        CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef data);
CF_EXPORT CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity); ///< the capacity is a hint
CF_EXPORT CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFDataRef data);

CF_EXPORT CFIndex      CFDataGetLength(CFDataRef data);
CF_EXPORT const UInt8 *CFDataGetBytePtr(CFDataRef data);
CF_EXPORT UInt8       *CFDataGetMutableBytePtr(CFMutableDataRef data);
CF_EXPORT void         CFDataGetBytes(CFDataRef data, CFRange range, UInt8 *buffer); ///< a range beyond the end copies nothing

CF_EXPORT void CFDataSetLength(CFMutableDataRef data, CFIndex length);      ///< new bytes are zero
CF_EXPORT void CFDataIncreaseLength(CFMutableDataRef data, CFIndex extra);  ///< new bytes are zero
CF_EXPORT void CFDataAppendBytes(CFMutableDataRef data, const UInt8 *bytes, CFIndex length);
CF_EXPORT void CFDataReplaceBytes(CFMutableDataRef data, CFRange range, const UInt8 *bytes, CFIndex length);
CF_EXPORT void CFDataDeleteBytes(CFMutableDataRef data, CFRange range);

CF_EXTERN_C_END
