#include "widgets/ClickableLabel.h"

#include <QMouseEvent>

ClickableLabel::ClickableLabel(QWidget* parent) : QLabel(parent)
{
    setCursor(Qt::PointingHandCursor);
}

void ClickableLabel::mousePressEvent(QMouseEvent* event)
{
    // Not passed on: QLabel would start a text selection or a link press.
    event->accept();
    emit clicked();
}
