#pragma once

#include <QPoint>
#include <QSize>

// Where a point of the frameless main window lets the user drag or resize it.
enum class FrameHit
{
    None, // not ours: the widget under the point keeps the click
    Caption,
    Left,
    Right,
    Top,
    Bottom,
    TopLeft,
    TopRight,
    BottomLeft,
    BottomRight,
};

// What lies under the cursor in the 40-pixel band below the drag strip.
enum class DragAreaUnderCursor
{
    NotRegistered, // the window has no drag-area widget: the band drags
    DragArea,      // the bare drag-area widget: drags
    Other,         // one of its children (a button): keeps its click
};

// The window's hit test. `pos` and `size` are in device pixels relative to
// the window's top-left corner; `ratio` is the integer device pixel ratio.
// Resize margins are 5 pixels, the drag strip at the top 11, the drag band 40,
// all times the ratio.
FrameHit frameHitTest(QPoint pos, QSize size, int ratio, DragAreaUnderCursor underCursor);

inline constexpr int kFrameMinimumWidth = 466;
inline constexpr int kFrameMinimumHeight = 400;
