/// CFNumber.h: numbers and the two booleans. A CFNumberRef is an NSNumber, a CFBooleanRef one of NSNumber's booleans.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFNumberType;
enum {
    kCFNumberSInt8Type     = 1,
    kCFNumberSInt16Type    = 2,
    kCFNumberSInt32Type    = 3,
    kCFNumberSInt64Type    = 4,
    kCFNumberFloat32Type   = 5,
    kCFNumberFloat64Type   = 6,
    kCFNumberCharType      = 7,
    kCFNumberShortType     = 8,
    kCFNumberIntType       = 9,
    kCFNumberLongType      = 10, ///< 64 bits in this process
    kCFNumberLongLongType  = 11,
    kCFNumberFloatType     = 12,
    kCFNumberDoubleType    = 13,
    kCFNumberCFIndexType   = 14,
    kCFNumberNSIntegerType = 15,
    kCFNumberCGFloatType   = 16,
    kCFNumberMaxType       = 16
};

CF_EXPORT const CFBooleanRef kCFBooleanTrue;
CF_EXPORT const CFBooleanRef kCFBooleanFalse;
CF_EXPORT CFTypeID CFBooleanGetTypeID(void);
CF_EXPORT Boolean  CFBooleanGetValue(CFBooleanRef boolean);

CF_EXPORT CFTypeID     CFNumberGetTypeID(void);
CF_EXPORT CFNumberRef  CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void *value);
CF_EXPORT CFNumberType CFNumberGetType(CFNumberRef number); ///< one of the fixed-width types
CF_EXPORT CFIndex      CFNumberGetByteSize(CFNumberRef number);
CF_EXPORT Boolean      CFNumberIsFloatType(CFNumberRef number);
/// Writes the number as the type. False when it does not fit whole; the value is then the nearest that the type holds
/// (a fraction cut off, a number out of range at the end of the range).
CF_EXPORT Boolean            CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value);
CF_EXPORT CFComparisonResult CFNumberCompare(CFNumberRef number, CFNumberRef other, void *context); ///< context is not used

CF_EXTERN_C_END
