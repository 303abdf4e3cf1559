#include "widgets/VerificationDetailsDialog.h"

#include "verify/Verification.h"
#include "verify/VerificationText.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

QTableWidget* makeTable(const QStringList& headers, QWidget* parent)
{
    auto* table = new QTableWidget(0, headers.size(), parent);
    table->setHorizontalHeaderLabels(headers);
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setWordWrap(false);
    return table;
}

void addRow(QTableWidget* table, const QStringList& cells, const QColor& colour = QColor())
{
    const int row = table->rowCount();
    table->insertRow(row);
    for (int c = 0; c < cells.size(); ++c) {
        auto* item = new QTableWidgetItem(cells[c]);
        item->setToolTip(cells[c].toHtmlEscaped());
        if (colour.isValid())
            item->setForeground(colour);
        table->setItem(row, c, item);
    }
}

QString name(const std::string& bytes)
{
    return QFile::decodeName(bytes.c_str());
}

} // namespace

VerificationDetailsDialog::VerificationDetailsDialog(const VerificationReport& report,
                                                     QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("verificationDetailsDialog"));
    setWindowTitle(tr("Checksums and disc check"));
    resize(760, 460);

    auto* layout = new QVBoxLayout(this);
    auto* summary = new QLabel(verdictLine(report), this);
    summary->setObjectName(QStringLiteral("summaryLabel"));
    summary->setTextFormat(Qt::PlainText);
    layout->addWidget(summary);

    m_files = makeTable({tr("File"), tr("Checksum file"), tr("Kind"), tr("Expected"),
                         tr("Computed"), tr("Verdict")},
                        this);
    m_files->setObjectName(QStringLiteral("filesTable"));
    const QColor bad(240, 90, 80);
    for (const ChecksumVerdict& verdict : report.verdicts) {
        const bool ok = verdict.status == ChecksumVerdict::Match;
        addRow(m_files,
               {name(verdict.name), name(verdict.checksumFile),
                verdict.algorithm == ChecksumAlgorithm::Md5 ? tr("MD5") : tr("CRC-32"),
                QString::fromStdString(verdict.expected), QString::fromStdString(verdict.computed),
                verdictWord(verdict)},
               ok ? QColor() : bad);
    }
    for (const std::string& file : report.unlisted)
        addRow(m_files, {name(file), QString(), QString(), QString(), QString(),
                         tr("not listed in any checksum file")});
    for (const std::string& file : report.unrecognisedFileNames())
        addRow(m_files, {name(file), QString(), QString(), QString(), QString(),
                         tr("checksum file of a format not recognised")});
    m_files->resizeColumnsToContents();
    layout->addWidget(m_files, 3);

    m_findings = makeTable({tr("Severity"), tr("Track"), tr("Id"), tr("Finding")}, this);
    m_findings->setObjectName(QStringLiteral("findingsTable"));
    for (const Finding& finding : report.findings)
        addRow(m_findings,
               {QString::fromLatin1(severityName(finding.severity)),
                finding.track > 0 ? QString::number(finding.track) : QString(),
                QString::fromStdString(finding.id), finding.text},
               finding.severity == Finding::Error ? bad : QColor());
    m_findings->resizeColumnsToContents();
    layout->addWidget(m_findings, 2);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}
