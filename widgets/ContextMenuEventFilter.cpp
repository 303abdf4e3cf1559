#include "widgets/ContextMenuEventFilter.h"

#include <QEvent>

ContextMenuEventFilter::ContextMenuEventFilter(QObject* parent) : QObject(parent) {}

bool ContextMenuEventFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ContextMenu)
        return true;
    return QObject::eventFilter(watched, event);
}
