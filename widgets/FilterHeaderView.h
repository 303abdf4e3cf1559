#pragma once

#include <QHeaderView>

// The track table's header. "Type" and "Track" (logical 0 and 1) stay in
// front: a press on them is ignored, and a section dropped before them is
// moved straight back. The other columns can be reordered freely.
class FilterHeaderView : public QHeaderView
{
    Q_OBJECT
public:
    explicit FilterHeaderView(Qt::Orientation orientation, QWidget* parent = nullptr);

public slots:
    void onSectionMoved(int logicalIndex, int oldVisualIndex, int newVisualIndex);

protected:
    void mousePressEvent(QMouseEvent* event) override;
};
