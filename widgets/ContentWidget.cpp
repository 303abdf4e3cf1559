#include "widgets/ContentWidget.h"

#include "widgets/Theme.h"

#include <QPainter>

ContentWidget::ContentWidget(QWidget* parent) : QWidget(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("contentWidget"));
    setContentsMargins(1, 1, 1, 1);
}

void ContentWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), Theme::tableBase());
    p.setPen(Theme::hairline());
    p.drawRect(rect().adjusted(0, 0, -1, -1));
}
