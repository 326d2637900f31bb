#include "platform/Files/private/Dates.h"

#include <algorithm>

namespace tarvik::files {

constexpr int64_t kSeconds1904To1970 = 2082844800, kSeconds1970To2000 = 946684800;

UTCDateTime dateFromTime(int64_t seconds, uint32_t nanoseconds)
{
    const int64_t since = std::clamp<int64_t>(seconds + kSeconds1904To1970, 0, (int64_t(1) << 48) - 1);
    return {UInt16(since >> 32), UInt32(since), UInt16((uint64_t(nanoseconds) << 16) / 1000000000)};
}

timespec timeFromDate(const UTCDateTime &date)
{
    const int64_t since = int64_t(date.highSeconds) << 32 | date.lowSeconds;
    // Rounded up, so that a date that was read and is written back stays the same one.
    return {since - kSeconds1904To1970, long((uint64_t(date.fraction) * 1000000000 + 65535) >> 16)};
}

UTCDateTime dateFromAppleDouble(int32_t seconds)
{
    return seconds == kUnknownDate ? UTCDateTime{0, 0, 0} : dateFromTime(seconds + kSeconds1970To2000, 0);
}

int32_t appleDoubleFromDate(const UTCDateTime &date)
{
    if (isNever(date))
        return kUnknownDate;
    return int32_t(
        std::clamp<int64_t>(timeFromDate(date).tv_sec - kSeconds1970To2000, INT32_MIN + 1, INT32_MAX));
}

}  // namespace tarvik::files
