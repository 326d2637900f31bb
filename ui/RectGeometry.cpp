#include <Tarvik/ui/RectGeometry.h>

Rect RectMake(int16_t top, int16_t left, int16_t bottom, int16_t right) { return {top, left, bottom, right}; }

Boolean RectIsEqualTo(Rect rect, Rect other)
{
    return rect.top == other.top && rect.left == other.left && rect.bottom == other.bottom &&
           rect.right == other.right;
}

int16_t RectRight(const Rect *rect) { return rect ? rect->right : 0; }
int16_t RectWidth(const Rect *rect) { return rect ? int16_t(rect->right - rect->left) : 0; }

void RectHorizontalMove(Rect *rect, int16_t distance)
{
    if (!rect)
        return;
    rect->left = int16_t(rect->left + distance);
    rect->right = int16_t(rect->right + distance);
}

void RectLeftMoveTo(Rect *rect, int16_t left)
{
    if (rect)
        rect->left = left;
}

void RectRightMoveTo(Rect *rect, int16_t right)
{
    if (rect)
        RectHorizontalMove(rect, int16_t(right - rect->right));
}

void RectRightResize(Rect *rect, int16_t difference)
{
    if (rect)
        rect->right = int16_t(rect->right + difference);
}
