#pragma once

#include <QObject>

// Swallows context-menu events. Installed on the attributes menu, so a right
// click on its check boxes does not open a second menu over it.
class ContextMenuEventFilter : public QObject
{
    Q_OBJECT
public:
    explicit ContextMenuEventFilter(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
