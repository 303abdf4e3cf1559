#include "widgets/InfoBoxWidget.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscTexts.h"
#include "ddp/ErrorTexts.h"
#include "widgets/FontTable.h"
#include "widgets/Theme.h"
#include "widgets/VerificationLine.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStringList>
#include <QTextDocument>

namespace {

const QString kMissing = QStringLiteral("-");

QString orMissing(const QString& text)
{
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? kMissing : trimmed;
}

// A value too wide for its column ends in "…" rather than being cut in the
// middle of a character; one that fits is an ordinary label (selectable).
class ElidingLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        const QRect area = contentsRect();
        if (fontMetrics().horizontalAdvance(text()) <= area.width()) {
            QLabel::paintEvent(event);
            return;
        }
        QPainter painter(this);
        painter.setPen(palette().color(foregroundRole()));
        painter.drawText(area, int(alignment()),
                         fontMetrics().elidedText(text(), Qt::ElideRight, area.width()));
    }
};

QLabel* makeLabel(const char* name, QWidget* parent)
{
    auto* label = new ElidingLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    // Disc text is shown as it is, never read as markup.
    label->setTextFormat(Qt::PlainText);
    return label;
}

// The notes about the disc, one line each and never wrapped, so that they
// take a known height from the table: a note wider than the window is cut
// with "…", and past two notes the second line counts the rest. text() keeps
// every note whole; the tool tip shows them all.
class StatusLabel : public QLabel
{
public:
    using QLabel::QLabel;
    // Two lines, or one while the verification line takes the other.
    int maxLines = 2;

    QStringList shownLines() const
    {
        QStringList lines = text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        if (lines.size() > maxLines) {
            const int more = int(lines.size()) - (maxLines - 1);
            lines = lines.mid(0, maxLines - 1);
            lines << (maxLines > 1 ? QStringLiteral("%1 more notes about this disc: point here to "
                                                    "read them all.")
                                   : QStringLiteral("%1 notes about this disc: point here to read "
                                                    "them all."))
                         .arg(more);
        }
        return lines;
    }
    QSize sizeHint() const override
    {
        const QMargins m = contentsMargins();
        return {0, int(shownLines().size()) * fontMetrics().lineSpacing() + m.top() + m.bottom()};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::WindowText));
        const QRect area = contentsRect();
        const QFontMetrics metrics = fontMetrics();
        int y = area.top();
        for (const QString& line : shownLines()) {
            const QString shown = metrics.elidedText(line, Qt::ElideRight, area.width());
            painter.drawText(QRect(area.left(), y, area.width(), metrics.lineSpacing()),
                             Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
            y += metrics.lineSpacing();
        }
    }
};

} // namespace

InfoBoxWidget::InfoBoxWidget(QWidget* parent) : QWidget(parent)
{
    setupUi();
}

void InfoBoxWidget::setupUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("InfoBoxWidget"));
    resize(478, 59);
    m_mainInfoLayout = new QHBoxLayout(this);
    m_mainInfoLayout->setObjectName(QStringLiteral("mainInfoLayout"));
    // Tight above and below: with the verdict line under the notes, every
    // pixel here is one the table loses at the smallest window.
    m_mainInfoLayout->setContentsMargins(0, 2, 0, 0);
    m_gridLayout = new QGridLayout();
    m_gridLayout->setObjectName(QStringLiteral("gridLayout"));
    m_gridLayout->setContentsMargins(9, 0, 0, 0);
    m_gridLayout->setVerticalSpacing(1);

    m_upcEanCaptionLabel = makeLabel("upcEanCaptionLabel", this);
    m_artistCaptionLabel = makeLabel("artistCaptionLabel", this);
    m_albumCaptionLabel = makeLabel("albumCaptionLabel", this);
    m_upcEanLabel = makeLabel("upcEanLabel", this);
    m_artistLabel = makeLabel("artistLabel", this);
    m_albumLabel = makeLabel("albumLabel", this);
    m_loudnessCaptionLabel = makeLabel("loudnessCaptionLabel", this);
    m_loudnessLabel = makeLabel("loudnessLabel", this);
    for (QLabel* value : {m_upcEanLabel, m_artistLabel, m_albumLabel, m_loudnessLabel}) {
        value->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        // Long CD-Text must not widen the window.
        value->setMinimumWidth(0);
        value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }
    m_gridLayout->addWidget(m_upcEanCaptionLabel, 0, 0);
    m_gridLayout->addWidget(m_artistCaptionLabel, 0, 1);
    m_gridLayout->addWidget(m_albumCaptionLabel, 0, 2);
    // The code is never longer than 13 digits: it keeps its room beside the
    // loudness.
    m_upcEanLabel->setMinimumWidth(
        QFontMetrics(FontTable::font(2, true)).horizontalAdvance(QStringLiteral("0000000000000")));
    m_gridLayout->addWidget(m_upcEanLabel, 1, 0);
    m_gridLayout->addWidget(m_artistLabel, 1, 1);
    m_gridLayout->addWidget(m_albumLabel, 1, 2);
    // In the same two rows as the album, so that the table loses no height.
    m_gridLayout->addWidget(m_loudnessCaptionLabel, 0, 3);
    m_gridLayout->addWidget(m_loudnessLabel, 1, 3);
    m_statusLabel = new StatusLabel(this);
    m_statusLabel->setObjectName(QStringLiteral("statusLabel"));
    m_statusLabel->setTextFormat(Qt::PlainText);
    m_statusLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    QPalette palette = m_statusLabel->palette();
    palette.setColor(QPalette::WindowText, Theme::warning());
    m_statusLabel->setPalette(palette);
    m_gridLayout->addWidget(m_statusLabel, 2, 0, 1, 4);
    m_gridLayout->setColumnStretch(0, 2);
    m_gridLayout->setColumnStretch(1, 3);
    m_gridLayout->setColumnStretch(2, 3);
    m_gridLayout->setColumnStretch(3, 3);
    m_mainInfoLayout->addLayout(m_gridLayout);
    m_verificationLine = new VerificationLine(this);
    m_gridLayout->addWidget(m_verificationLine, 3, 0, 1, -1);
    // The notes and the verdict take two lines between them, so that the
    // smallest window keeps its table rows.
    connect(m_verificationLine, &VerificationLine::visibilityChanged, this, [this](bool visible) {
        auto* status = static_cast<StatusLabel*>(m_statusLabel);
        status->maxLines = visible ? 1 : 2;
        status->updateGeometry();
        status->update();
    });

    retranslateUi();
    clear();
    QMetaObject::connectSlotsByName(this);
}

void InfoBoxWidget::retranslateUi()
{
    m_upcEanCaptionLabel->setText(tr("UPC/EAN"));
    m_artistCaptionLabel->setText(tr("ARTIST"));
    m_albumCaptionLabel->setText(tr("ALBUM"));
    m_loudnessCaptionLabel->setText(tr("LOUDNESS"));
}

void InfoBoxWidget::clear()
{
    for (QLabel* value : {m_upcEanLabel, m_artistLabel, m_albumLabel, m_loudnessLabel}) {
        value->setText(kMissing);
        value->setToolTip(QString());
    }
    m_loudnessLabel->setPalette(m_albumLabel->palette());
    m_statusLabel->clear();
    m_statusLabel->setToolTip(QString());
    m_statusLabel->hide();
}

void InfoBoxWidget::setModel(const DDPModel& model)
{
    clear();
    m_upcEanLabel->setText(orMissing(discUpcEan(model)));
    // Measured in the font the style has given the label by now: a code cut
    // short would be a wrong code.
    m_upcEanLabel->setMinimumWidth(
        m_upcEanLabel->fontMetrics().horizontalAdvance(m_upcEanLabel->text()) + 2);
    if (model.hasCdText()) {
        m_artistLabel->setText(orMissing(albumText(model, CdTextRecord::Performer)));
        m_albumLabel->setText(orMissing(albumText(model, CdTextRecord::Title)));
    }
    // The full text stays reachable when a long title is cut.
    for (QLabel* value : {m_upcEanLabel, m_artistLabel, m_albumLabel})
        value->setToolTip(value->text() == kMissing ? QString() : value->text().toHtmlEscaped());
    // One line for each thing the engineer must know about the disc.
    QStringList status;
    if (model.imageShortBy() > 0)
        status << imageShortText(model.imageShortBy());
    if (model.hasCdText() && !model.cdText().fitsLeadIn())
        status << QString::fromStdString(model.cdText().leadInWarning());
    for (const SkippedStream& stream : model.imageLayout().skipped)
        status << skippedStreamText(stream);
    if (!status.isEmpty()) {
        m_statusLabel->setText(status.join(QLatin1Char('\n')));
        m_statusLabel->setToolTip(
            Qt::convertFromPlainText(m_statusLabel->text(), Qt::WhiteSpaceNormal));
        m_statusLabel->updateGeometry();
        m_statusLabel->show();
    }
}
