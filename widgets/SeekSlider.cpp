#include "widgets/SeekSlider.h"

#include <QMouseEvent>

SeekSlider::SeekSlider(QWidget* parent) : QSlider(parent) {}

SeekSlider::SeekSlider(Qt::Orientation orientation, QWidget* parent) : QSlider(orientation, parent)
{}

int SeekSlider::valueAt(const QPoint& pos) const
{
    const qint32 span = maximum() - minimum();
    if (orientation() == Qt::Horizontal) {
        if (width() <= 0)
            return minimum();
        return minimum() + (pos.x() * span) / width();
    }
    if (height() <= 0)
        return minimum();
    return minimum() + ((height() - pos.y()) * span) / height();
}

void SeekSlider::mousePressEvent(QMouseEvent* event)
{
    setSliderDown(true);
    if (event->button() == Qt::LeftButton) {
        setValue(valueAt(event->pos()));
        event->accept();
    }
    QSlider::mousePressEvent(event);
}

void SeekSlider::mouseReleaseEvent(QMouseEvent* event)
{
    QSlider::mouseReleaseEvent(event);
    setSliderDown(false);
}
