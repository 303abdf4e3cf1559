#include "widgets/CentralWidget.h"

#include "widgets/Theme.h"

#include <QPainter>

CentralWidget::CentralWidget(QWidget* parent) : QWidget(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("centralWidget"));
}

void CentralWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), Theme::window());
    p.setPen(Theme::hairline());
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    p.setPen(Theme::edgeLight());
    p.drawLine(1, 1, width() - 2, 1);
}
