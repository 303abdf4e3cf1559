#pragma once

#include <QWidget>

// The main window's central widget: the window's dark surface with a thin
// outline, since the frameless window has no border of its own.
class CentralWidget : public QWidget
{
    Q_OBJECT
public:
    explicit CentralWidget(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
