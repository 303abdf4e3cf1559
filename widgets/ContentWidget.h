#pragma once

#include <QWidget>

// The well that holds the track table: the table's base colour, sunk into
// the window by a dark outline.
class ContentWidget : public QWidget
{
    Q_OBJECT
public:
    explicit ContentWidget(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
