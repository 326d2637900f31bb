#include <Tarvik/ui/RangeGeometry.h>

#include <algorithm>

void CFRangeMove(CFRange *range, CFIndex distance)
{
    if (range)
        range->location = std::max<CFIndex>(range->location + distance, 0);
}

Boolean CFRangeMoveLeftTo(CFRange *range, CFIndex location)
{
    if (range && location >= 0)
        range->location = location;
    return location >= 0;
}

void CFRangeMoveRightTo(CFRange *range, CFIndex end)
{
    if (range)
        range->location = std::max<CFIndex>(end - range->length, 0);
}

void CFRangeResizeLeft(CFRange *range, CFIndex difference)
{
    if (!range)
        return;
    if (difference > 0)
        difference = std::min(difference, range->location);
    else if (difference < 0)
        difference = std::max(difference, -range->length);
    range->location -= difference;
    range->length += difference;
}

void CFRangeResizeLeftTo(CFRange *range, CFIndex location)
{
    if (!range)
        return;
    const CFIndex start = location < 0 ? 0 : std::min(location, range->location + range->length);
    range->length = range->location - start + range->length;
    range->location = start;
}

void CFRangeResizeRight(CFRange *range, CFIndex difference, CFIndex limit)
{
    if (!range)
        return;
    range->length += difference < 0 ? std::max(difference, -range->length) : difference;
    if (limit >= 0 && range->location + range->length > limit)
        range->length = limit - range->location;
}

void CFRangeResizeRightTo(CFRange *range, CFIndex end)
{
    if (range)
        range->length = range->location <= end ? end - range->location : 0;
}
