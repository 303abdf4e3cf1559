#include "widgets/CellDelegate.h"

#include "ddp/HiddenTrack.h"
#include "ddp/IDrawInfoProvider.h"
#include "ddp/TrackTable.h"

#include <QIcon>
#include <QPainter>
#include <QPainterPath>

#include <array>

namespace {

const QColor kCurrentBackground(43, 77, 47);
const QColor kOutsideBackground(25, 27, 28);
const QColor kMarker(17, 109, 24);
const QColor kDefaultBackground(33, 35, 37);

const std::array<QColor, 3>& backgrounds()
{
    static const std::array<QColor, 3> colours{QColor(Qt::transparent), QColor(43, 45, 47),
                                               kDefaultBackground};
    return colours;
}

const std::array<QColor, 3>& texts()
{
    static const std::array<QColor, 3> colours{QColor(Qt::darkGray), QColor(Qt::lightGray),
                                               QColor(Qt::lightGray)};
    return colours;
}

// Only kinds below the list's last entry are looked up; the last entry is
// the colour of every other kind.
template <typename List> QColor lookUp(const List& list, int kind)
{
    if (kind >= 0 && kind < int(list.size()) - 1)
        return list[std::size_t(kind)];
    return list.back();
}

} // namespace

CellDelegate::CellDelegate(std::shared_ptr<const IDrawInfoProvider> model, QObject* parent)
    : QStyledItemDelegate(parent), m_model(std::move(model))
{}

QColor CellDelegate::backgroundFor(int kind, bool inList)
{
    return inList ? lookUp(backgrounds(), kind) : kOutsideBackground;
}

QColor CellDelegate::textFor(int kind, bool inList)
{
    return inList ? lookUp(texts(), kind) : QColor(Qt::lightGray);
}

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    QStyleOptionViewItem opt(option);
    opt.palette.setColor(QPalette::Highlight, QColor(69, 79, 88));
    opt.palette.setColor(QPalette::HighlightedText, Qt::white);

    const int row = index.row();
    int kind = 0;
    bool inList = false;
    bool current = false;
    if (m_model) {
        const auto& kinds = m_model->indexList();
        inList = row >= 0 && std::size_t(row) < kinds.size();
        if (inList)
            kind = int(kinds[std::size_t(row)]);
        // A first pause that holds audio is drawn as the track it is; only
        // the first row can be one.
        if (row == 0 && inList && kind == 0 &&
            index.sibling(row, TrackTableRows::Index).data().toString() == hiddenTrackIndexText())
            kind = 1;
        current = row == m_model->currentRow();
    }

    const QColor background = current ? kCurrentBackground : backgroundFor(kind, inList);
    const QColor text = current ? QColor(Qt::white) : textFor(kind, inList);
    painter->fillRect(opt.rect, background);
    opt.palette.setColor(QPalette::Text, text);
    // A cell with a colour of its own (a true peak over the limit) keeps it
    // on the selected row too.
    const QVariant foreground = index.data(Qt::ForegroundRole);
    if (foreground.canConvert<QBrush>())
        opt.palette.setBrush(QPalette::HighlightedText, foreground.value<QBrush>());
    opt.displayAlignment |= Qt::AlignLeft;
    QStyledItemDelegate::paint(painter, opt, index);

    if (index.column() != 0 || !inList)
        return;

    const QRect r = opt.rect;
    const QIcon icon(kind >= 1 ? QStringLiteral(":track_icon") : QStringLiteral(":rest_icon"));
    QPixmap pixmap = icon.pixmap(r.size(), QIcon::Normal, QIcon::Off);

    painter->save();
    if (current) {
        const qreal w = r.width();
        const qreal h = r.height();
        QPainterPath marker;
        marker.moveTo(0, r.top());
        marker.lineTo(0.5 * w, r.top());
        marker.lineTo(0.65 * w, r.top() + 0.5 * h);
        marker.lineTo(0.5 * w, r.bottom() + 1);
        marker.lineTo(0, r.bottom() + 1);
        marker.closeSubpath();
        marker.translate(r.left(), 0);
        painter->setRenderHint(QPainter::Antialiasing);
        painter->fillPath(marker, kMarker);
        painter->setPen(Qt::lightGray);
        pixmap = icon.pixmap(r.size(), QIcon::Selected, QIcon::Off);
    }
    if (!pixmap.isNull() && pixmap.height() > 0) {
        const int targetHeight = r.height() / 2;
        const int targetWidth =
            int(pixmap.width() * (double(targetHeight) / double(pixmap.height())));
        const QRect target(r.left() + int(0.22 * r.width()), r.top() + int(0.25 * r.height()),
                           targetWidth, targetHeight);
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawPixmap(target, pixmap);
    }
    painter->restore();
}
