/// CFDate.h: points in time. A CFDateRef is an NSDate; absolute time is in seconds since 2001-01-01 00:00:00 UTC.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef double         CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;

CF_EXPORT const CFTimeInterval kCFAbsoluteTimeIntervalSince1970; ///< 978307200
CF_EXPORT const CFTimeInterval kCFAbsoluteTimeIntervalSince1904; ///< 3061152000

CF_EXPORT CFAbsoluteTime     CFAbsoluteTimeGetCurrent(void);
CF_EXPORT CFTypeID           CFDateGetTypeID(void);
CF_EXPORT CFDateRef          CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at);
CF_EXPORT CFAbsoluteTime     CFDateGetAbsoluteTime(CFDateRef date);
CF_EXPORT CFTimeInterval     CFDateGetTimeIntervalSinceDate(CFDateRef date, CFDateRef other);
CF_EXPORT CFComparisonResult CFDateCompare(CFDateRef date, CFDateRef other, void *context); ///< context is not used

CF_EXTERN_C_END
