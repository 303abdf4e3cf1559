#include "widgets/SeekSlider.h"

#include <QMouseEvent>

namespace {

// Near the ends the handle cannot sit centred under the click, so QSlider
// sees a press beside it and would page on from the value just set. With no
// page step that paging leaves the value where the click put it.
void keepClicksExact(QSlider& slider)
{
    slider.setPageStep(0);
}

} // namespace

SeekSlider::SeekSlider(QWidget* parent) : QSlider(parent)
{
    keepClicksExact(*this);
}

SeekSlider::SeekSlider(Qt::Orientation orientation, QWidget* parent) : QSlider(orientation, parent)
{
    keepClicksExact(*this);
}

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
