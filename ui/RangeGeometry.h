/// \file
/// The ends of a CFRange: [location, location + length).
///
///     CFRange r = CFRangeMake(3, 5);       // 3 .. 7, the right end is 8
///     CFRangeResizeLeft(&r, 10);           // (0, 8): stops at 0, the right end stays
///     CFRangeResizeRight(&r, 10, 12);      // (0, 12): stops at the limit
///
/// Null: nothing is done. A limit to the left of a range makes its length negative, as the arithmetic has it. Threads: any.
#pragma once
#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

// Move: the length stays.
void CFRangeMove(CFRange *range, CFIndex distance);  ///< not below 0
Boolean CFRangeMoveLeftTo(
    CFRange *range,
    CFIndex
        location);  ///< false, nothing changed, below 0; for null too it says whether the location is 0 or more
void CFRangeMoveRightTo(CFRange *range, CFIndex end);  ///< not below 0

// Resize: one end moves, the other stays. A positive difference grows the range.
void CFRangeResizeLeft(CFRange *range, CFIndex difference);  ///< not below 0, not beyond the right end
void CFRangeResizeLeftTo(CFRange *range, CFIndex location);  ///< likewise
void CFRangeResizeRight(
    CFRange *range, CFIndex difference,
    CFIndex limit);  ///< down to length 0; the right end not beyond the limit; a negative limit is none
void CFRangeResizeRightTo(CFRange *range, CFIndex end);  ///< length 0 when the end lies before the location

#ifdef __cplusplus
}
#endif
