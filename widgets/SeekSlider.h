#pragma once

#include <QSlider>

// A slider whose handle jumps to the click instead of paging towards it. It
// is "down" from press to release, so its owner can tell a user's drag from
// its own updates with isSliderDown().
class SeekSlider : public QSlider
{
    Q_OBJECT
public:
    explicit SeekSlider(QWidget* parent = nullptr);
    explicit SeekSlider(Qt::Orientation orientation, QWidget* parent = nullptr);

    // The value a left click at `pos` selects (32-bit arithmetic, the product
    // first, the division truncating; the owner keeps the range small enough).
    int valueAt(const QPoint& pos) const;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};
