#include "widgets/ToolTipWidget.h"

#include "ddp/DDPModel.h"
#include "ddp/PqTime.h"
#include "widgets/FontTable.h"
#include "widgets/LoudnessColumns.h"
#include "widgets/Theme.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

ToolTipWidget::Rows ToolTipWidget::frameTimeRows(const DDPModel& model, int row)
{
    const std::vector<PqEntry>& entries = model.entries();
    const std::size_t entry = model.firstTrackNumber() + static_cast<std::size_t>(row);
    // Rows past the last entry before the lead-out (the total) have no times.
    if (row < 0 || entry + leadOutEntryCount(entries) >= entries.size())
        return {};
    const std::optional<EntryFrameTimes> times = entryFrameTimes(entries, entry);
    if (!times)
        return {};
    return {{tr("Start (MM:SS:FF)"), QString::fromStdString(frameTimeText(times->start))},
            {tr("Duration (MM:SS:FF)"), QString::fromStdString(frameTimeText(times->duration))}};
}

ToolTipWidget::ToolTipWidget(const QAbstractItemModel* model, int row, QWidget* parent,
                             QAbstractButton* anchor, const Rows& extraRows)
    : QFrame(parent, Qt::Popup | Qt::FramelessWindowHint), m_anchor(anchor)
{
    setObjectName(QStringLiteral("toolTipWidget"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(12, 10, 14, 10);
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(3);

    if (model && row >= 0 && row < model->rowCount()) {
        for (int c = 0; c < model->columnCount(); ++c) {
            const QString name = model->headerData(c, Qt::Horizontal).toString();
            const QString value = model->index(row, c).data().toString().trimmed();
            // The "Type" column only carries the icon.
            if (c == 0 && value.isEmpty())
                continue;
            m_rows.append({name, value.isEmpty() ? QStringLiteral("-") : value});
            // Figures behind the cell (the loudness measurement's), a line each.
            const QVariantList more =
                model->index(row, c).data(LoudnessColumns::kPopupLinesRole).toList();
            for (const QVariant& line : more) {
                const QStringList pair = line.toStringList();
                if (pair.size() == 2)
                    m_rows.append({pair.at(0), pair.at(1)});
            }
        }
        m_rows.append(extraRows);
    }

    QPalette captionPalette = palette();
    captionPalette.setColor(QPalette::WindowText, Theme::caption());
    QPalette valuePalette = palette();
    valuePalette.setColor(QPalette::WindowText, Theme::brightText());
    QPalette missingPalette = palette();
    missingPalette.setColor(QPalette::WindowText, Theme::dimText());

    for (int i = 0; i < m_rows.size(); ++i) {
        auto* caption = new QLabel(m_rows.at(i).first.toUpper(), this);
        caption->setFont(FontTable::font(0, true));
        caption->setPalette(captionPalette);
        caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* value = new QLabel(m_rows.at(i).second, this);
        value->setFont(FontTable::font(2));
        value->setTextFormat(Qt::PlainText);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setPalette(m_rows.at(i).second == QLatin1String("-") ? missingPalette
                                                                    : valuePalette);
        grid->addWidget(caption, i, 0);
        grid->addWidget(value, i, 1);
    }
    grid->setColumnStretch(1, 1);
    adjustSize();
}

void ToolTipWidget::showAt(const QPoint& globalPos)
{
    QPoint pos = globalPos;
    if (QScreen* screen = QGuiApplication::screenAt(globalPos)) {
        const QRect area = screen->availableGeometry();
        pos.setX(qMax(area.left(), qMin(pos.x(), area.right() - width())));
        pos.setY(qMax(area.top(), qMin(pos.y(), area.bottom() - height())));
    }
    move(pos);
    show();
}

void ToolTipWidget::hideEvent(QHideEvent* event)
{
    if (m_anchor)
        m_anchor->setChecked(false);
    QFrame::hideEvent(event);
}

void ToolTipWidget::mousePressEvent(QMouseEvent* event)
{
    // A click on the info button that opened the popup only closes it; were
    // the press passed on, the button would open it again at once.
    if (m_anchor && !rect().contains(event->pos()) &&
        QRect(m_anchor->mapToGlobal(QPoint(0, 0)), m_anchor->size()).contains(event->globalPos()))
        setAttribute(Qt::WA_NoMouseReplay);
    QFrame::mousePressEvent(event);
}

void ToolTipWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), QColor(48, 51, 54));
    p.fillRect(QRect(0, 0, 3, height()), Theme::accentBlueDark());
    p.setPen(Theme::hairline());
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    p.setPen(Theme::edgeLight());
    p.drawLine(3, 1, width() - 2, 1);
}
