#pragma once

#include <QPointer>
#include <QWidget>

// The main window's central widget: the window's dark surface with a thin
// outline, since the frameless window has no border of its own.
class CentralWidget : public QWidget
{
    Q_OBJECT
public:
    explicit CentralWidget(QWidget* parent = nullptr);

    // A widget kept over the bottom-right corner (the size grip), outside
    // the layout, so that it costs no row of its own.
    void setCornerWidget(QWidget* widget);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeCornerWidget();

    QPointer<QWidget> m_corner;
};
