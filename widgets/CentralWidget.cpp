#include "widgets/CentralWidget.h"

#include "widgets/Theme.h"

#include <QPainter>

CentralWidget::CentralWidget(QWidget* parent) : QWidget(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("centralWidget"));
}

void CentralWidget::setCornerWidget(QWidget* widget)
{
    m_corner = widget;
    if (!m_corner)
        return;
    m_corner->setParent(this);
    m_corner->resize(m_corner->sizeHint());
    m_corner->raise();
    placeCornerWidget();
}

void CentralWidget::placeCornerWidget()
{
    if (m_corner)
        m_corner->move(width() - m_corner->width() - 1, height() - m_corner->height() - 1);
}

void CentralWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeCornerWidget();
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
