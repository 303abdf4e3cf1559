#include "widgets/TransportButton.h"

#include <QStyleOptionToolButton>
#include <QStylePainter>

TransportButton::TransportButton(QWidget* parent) : QToolButton(parent) {}

void TransportButton::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    option.iconSize = QSize(16, 16);
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
}
