/// \file
/// Points in time: the system's, the interface's (since 1904) and AppleDouble's (since 2000).
#pragma once
#include <Carbon/Files.h>
#include <sys/stat.h>
#include <time.h>

namespace tarvik::files {

UTCDateTime dateFromTime(int64_t seconds, uint32_t nanoseconds);
timespec timeFromDate(const UTCDateTime &date);
inline bool isNever(const UTCDateTime &date)
{
    return date.highSeconds == 0 && date.lowSeconds == 0 && date.fraction == 0;
}

/// Seconds since 2000-01-01 UTC; INT32_MIN stands for "unknown".
constexpr int32_t kUnknownDate = INT32_MIN;
UTCDateTime dateFromAppleDouble(int32_t seconds);
int32_t appleDoubleFromDate(const UTCDateTime &date);

}  // namespace tarvik::files
