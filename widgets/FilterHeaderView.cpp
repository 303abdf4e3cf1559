#include "widgets/FilterHeaderView.h"

#include <QMouseEvent>

FilterHeaderView::FilterHeaderView(Qt::Orientation orientation, QWidget* parent)
    : QHeaderView(orientation, parent)
{}

void FilterHeaderView::mousePressEvent(QMouseEvent* event)
{
    const int logical = logicalIndexAt(event->pos());
    if (logical == 0 || logical == 1) {
        event->ignore();
        return;
    }
    QHeaderView::mousePressEvent(event);
}

void FilterHeaderView::onSectionMoved(int, int oldVisualIndex, int newVisualIndex)
{
    if (newVisualIndex == 0 || newVisualIndex == 1)
        moveSection(newVisualIndex, oldVisualIndex);
}
