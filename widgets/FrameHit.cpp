#include "widgets/FrameHit.h"

FrameHit frameHitTest(QPoint pos, QSize size, int ratio, DragAreaUnderCursor underCursor)
{
    const int m = 5 * ratio;
    const int dx = pos.x();
    const int dy = pos.y();
    const int width = size.width();
    const int height = size.height();

    if (dx >= m && dx <= width - m && dy >= m) {
        if (dy <= 11 * ratio)
            return FrameHit::Caption;
        if (dy <= 40 * ratio)
            return underCursor == DragAreaUnderCursor::Other ? FrameHit::None : FrameHit::Caption;
    }

    const bool left = dx >= 0 && dx < m;
    const bool right = dx >= width - m && dx < width;
    const bool top = dy >= 0 && dy < m;
    const bool bottom = dy >= height - m && dy < height;
    if (left && bottom)
        return FrameHit::BottomLeft;
    if (right && bottom)
        return FrameHit::BottomRight;
    if (left && top)
        return FrameHit::TopLeft;
    if (right && top)
        return FrameHit::TopRight;
    if (left)
        return FrameHit::Left;
    if (right)
        return FrameHit::Right;
    if (bottom)
        return FrameHit::Bottom;
    if (top)
        return FrameHit::Top;
    return FrameHit::None;
}
