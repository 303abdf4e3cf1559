#pragma once

#include <QColor>
#include <QStyledItemDelegate>

#include <memory>
#include <vector>

class IDrawInfoProvider;

// Paints every cell of the track table: the row colour by kind (1 track,
// 0 rest), the current row in green with an arrow in the "Type" column, and
// the track or rest icon there.
class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit CellDelegate(std::shared_ptr<const IDrawInfoProvider> model,
                          QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    // The colours of a row that is not the current one. `inList` tells
    // whether the row has a kind at all (the summary row has none).
    static QColor backgroundFor(int kind, bool inList);
    static QColor textFor(int kind, bool inList);

private:
    std::shared_ptr<const IDrawInfoProvider> m_model;
};
