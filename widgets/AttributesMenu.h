#pragma once

#include <QMenu>
#include <QStringList>

class QCheckBox;
class QTableView;

// One check box per optional column (from the third on) that shows or hides
// it. Ticking a box keeps the menu open, so several columns can be chosen in
// one go.
class AttributesMenu : public QMenu
{
    Q_OBJECT
public:
    AttributesMenu(const QStringList& columnNames, QTableView* view, QWidget* parent = nullptr);

    // The box of a column, or null for "Type", "Track" and unknown columns.
    QCheckBox* checkBox(int column) const;
    // Ticks each box whose column is visible, without touching the columns.
    void synchronize();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void onToggled(int column, bool checked);

    QTableView* m_view;
    QList<QCheckBox*> m_boxes; // [i] is column i + 2
};
