#include "platform/CoreFoundation/private/Bridging.h"

using namespace tarvik::cf;

const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200;
const CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000;

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void) { return [NSDate timeIntervalSinceReferenceDate]; }

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime at)
{
    return made<CFDateRef>([&] { return [[NSDate alloc] initWithTimeIntervalSinceReferenceDate:at]; });
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date)
{
    return date ? [ns(date) timeIntervalSinceReferenceDate] : 0;
}

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef date, CFDateRef other)
{
    return CFDateGetAbsoluteTime(date) - CFDateGetAbsoluteTime(other);
}

CFComparisonResult CFDateCompare(CFDateRef date, CFDateRef other, void *)
{
    const CFTimeInterval difference = CFDateGetTimeIntervalSinceDate(date, other);
    return difference < 0 ? kCFCompareLessThan : difference > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
}
