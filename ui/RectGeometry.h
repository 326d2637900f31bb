/// \file
/// The older toolbox's Rect: top, left, bottom and right, 16 bits each, y growing downward.
///
///     Rect r = RectMake(0, 10, 20, 50);    // top, left, bottom, right
///     RectRightMoveTo(&r, 60);             // left 20, right 60: the whole rectangle moves
///     RectLeftMoveTo(&r, 0);               // left  0, right 60: the left edge alone
///
/// Sums keep their lowest 16 bits. Null: a reader answers 0, a changing function does nothing. Threads: any.
#pragma once
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

Rect RectMake(int16_t top, int16_t left, int16_t bottom, int16_t right);
Boolean RectIsEqualTo(Rect rect, Rect other);

int16_t RectRight(const Rect *rect);
int16_t RectWidth(const Rect *rect);  ///< right - left

void RectHorizontalMove(Rect *rect, int16_t distance);
void RectLeftMoveTo(Rect *rect,
                    int16_t left);  ///< the right edge stays: the width changes, unlike NSRectLeftMoveTo
void RectRightMoveTo(Rect *rect, int16_t right);       ///< the width stays
void RectRightResize(Rect *rect, int16_t difference);  ///< without a limit

#ifdef __cplusplus
}
#endif
