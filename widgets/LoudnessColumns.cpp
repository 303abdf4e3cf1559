#include "widgets/LoudnessColumns.h"

#include "analysis/LoudnessText.h"
#include "analysis/ProgrammeParts.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/Theme.h"

#include <QLabel>
#include <QStandardItemModel>

LoudnessColumns::LoudnessColumns(QStandardItemModel* table, InfoBoxWidget* infoBox, QObject* parent)
    : QObject(parent), m_table(table), m_infoBox(infoBox)
{
    connect(&m_analyzer, &LoudnessAnalyzer::progressed, this, &LoudnessColumns::onProgress);
    connect(&m_analyzer, &LoudnessAnalyzer::finished, this, &LoudnessColumns::onFinished);
}

QStringList LoudnessColumns::tableColumnNames()
{
    return trackTableHeaderNames() << QStringLiteral("Loudness") << QStringLiteral("True Peak");
}

void LoudnessColumns::addColumns()
{
    const QStringList names = tableColumnNames();
    m_table->setColumnCount(names.size());
    m_table->setHorizontalHeaderLabels(names);
}

void LoudnessColumns::start(const std::shared_ptr<DDPModel>& model,
                            std::shared_ptr<const DiscImage> image)
{
    cancel();
    if (!model || !image)
        return;
    QString error;
    std::optional<DiscProgramme> programme = discProgramme(*model, &error);
    if (!programme) {
        // Not measured: the info area's "-" says why when hovered.
        if (m_infoBox)
            m_infoBox->loudnessLabel()->setToolTip(error);
        return;
    }
    if (programme->trackEntries.empty())
        return;
    for (std::size_t entry : programme->trackEntries)
        m_rows.push_back(int(entry) - int(model->firstTrackNumber()));
    if (m_infoBox)
        m_infoBox->loudnessLabel()->setText(tr("measuring…"));
    m_analyzer.start(std::move(image), std::move(programme->parts));
}

void LoudnessColumns::cancel()
{
    m_analyzer.cancel();
    m_result.reset();
    m_rows.clear();
    if (m_infoBox) {
        m_infoBox->loudnessLabel()->setText(QStringLiteral("-"));
        m_infoBox->loudnessLabel()->setToolTip(QString());
    }
}

void LoudnessColumns::onProgress(int percent)
{
    if (!m_infoBox)
        return;
    m_infoBox->loudnessLabel()->setText(tr("measuring… %1 %").arg(percent));
}

void LoudnessColumns::fillRow(int row, const LoudnessResult& result)
{
    if (row < 0 || row >= m_table->rowCount())
        return;
    auto* loudness = new QStandardItem(lufsText(result.integrated));
    QVariantList more;
    for (const auto& line : loudnessLines(result)) {
        if (line.first != QLatin1String("Loudness") && line.first != QLatin1String("True Peak"))
            more.append(QStringList{line.first, line.second});
    }
    loudness->setData(more, kPopupLinesRole);
    auto* truePeak = new QStandardItem(dbtpText(result.truePeak));
    if (truePeakNeedsLook(result.truePeak)) {
        truePeak->setForeground(Theme::warning());
        truePeak->setToolTip(tr("Over -1.0 dBTP: may clip a converter or an encoder"));
    }
    m_table->setItem(row, kLoudnessColumn, loudness);
    m_table->setItem(row, kTruePeakColumn, truePeak);
}

void LoudnessColumns::onFinished(const DiscLoudness& result)
{
    m_result = result;
    if (m_table->columnCount() <= kTruePeakColumn)
        addColumns();
    for (std::size_t i = 0; i < m_rows.size() && i < result.tracks.size(); ++i)
        fillRow(m_rows[i], result.tracks[i]);
    // The summary row holds the disc's figures.
    fillRow(m_table->rowCount() - 1, result.disc);

    if (m_infoBox) {
        QLabel* label = m_infoBox->loudnessLabel();
        label->setText(QStringLiteral("%1 · %2").arg(lufsText(result.disc.integrated),
                                                     dbtpText(result.disc.truePeak)));
        QStringList tip;
        for (const auto& line : loudnessLines(result.disc))
            tip << QStringLiteral("%1: %2").arg(line.first, line.second);
        label->setToolTip(tip.join(QLatin1Char('\n')));
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, truePeakNeedsLook(result.disc.truePeak)
                                                   ? Theme::warning()
                                                   : Theme::brightText());
        label->setPalette(palette);
    }
    m_rows.clear();
    emit shown();
}
