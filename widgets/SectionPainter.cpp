#include "widgets/SectionPainter.h"

#include "widgets/Theme.h"

#include <QLinearGradient>
#include <QPainter>

void paintSection(QPainter& painter, const QRect& rect, const QColor& base, bool topEdge,
                  bool bottomEdge)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0.0, base.lighter(108));
    gradient.setColorAt(1.0, base.darker(106));
    painter.fillRect(rect, gradient);
    if (topEdge) {
        QColor edge = Theme::edgeLight();
        edge.setAlpha(140);
        painter.fillRect(QRect(rect.left(), rect.top(), rect.width(), 1), edge);
    }
    if (bottomEdge)
        painter.fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), Theme::hairline());
}
