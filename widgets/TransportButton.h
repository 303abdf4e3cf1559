#pragma once

#include <QToolButton>

// A tool button whose icon is always drawn at 16 × 16, whatever its size;
// the application style draws the rest.
class TransportButton : public QToolButton
{
    Q_OBJECT
public:
    explicit TransportButton(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
