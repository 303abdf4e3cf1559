#include "widgets/AttributesMenu.h"

#include <QCheckBox>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QTableView>
#include <QWidgetAction>

namespace {
constexpr int kFirstOptionalColumn = 2;
}

AttributesMenu::AttributesMenu(const QStringList& columnNames, QTableView* view, QWidget* parent)
    : QMenu(parent), m_view(view)
{
    if (columnNames.size() < 3)
        return;
    for (int i = kFirstOptionalColumn; i < columnNames.size(); ++i) {
        auto* action = new QWidgetAction(this);
        auto* box = new QCheckBox(columnNames.at(i), this);
        QFont f = box->font();
        f.setBold(false);
        f.setFamily(QStringLiteral("Arial"));
        box->setFont(f);
        box->setCheckable(true);
        box->setChecked(m_view && !m_view->isColumnHidden(i));
        // Room after the longest name, so the text does not end at the edge.
        box->setMinimumWidth(box->sizeHint().width() + 16);
        action->setDefaultWidget(box);
        addAction(action);
        m_boxes.append(box);
        connect(box, &QCheckBox::toggled, this, [this, i](bool checked) { onToggled(i, checked); });
    }
}

QCheckBox* AttributesMenu::checkBox(int column) const
{
    const int slot = column - kFirstOptionalColumn;
    return slot >= 0 && slot < m_boxes.size() ? m_boxes.at(slot) : nullptr;
}

void AttributesMenu::synchronize()
{
    for (int i = 0; i < m_boxes.size(); ++i) {
        const QSignalBlocker blocker(m_boxes.at(i));
        m_boxes.at(i)->setChecked(m_view && !m_view->isColumnHidden(i + kFirstOptionalColumn));
    }
}

void AttributesMenu::onToggled(int column, bool checked)
{
    if (!m_view)
        return;
    if (checked) {
        m_view->showColumn(column);
        // The column before the shown one is fitted; that has always been so.
        m_view->resizeColumnToContents(column - 1);
    } else {
        m_view->hideColumn(column);
    }
}

void AttributesMenu::mouseReleaseEvent(QMouseEvent* event)
{
    QAction* action = activeAction();
    auto* widgetAction = qobject_cast<QWidgetAction*>(action);
    auto* box = widgetAction ? qobject_cast<QCheckBox*>(widgetAction->defaultWidget()) : nullptr;
    if (!action || !action->isEnabled() || !box) {
        QMenu::mouseReleaseEvent(event);
        return;
    }
    box->setChecked(!box->isChecked());
    // A disabled action does not close the menu when it is released on.
    action->setEnabled(false);
    const bool wasBlocked = action->blockSignals(true);
    QMenu::mouseReleaseEvent(event);
    action->blockSignals(wasBlocked);
    action->setEnabled(true);
}
