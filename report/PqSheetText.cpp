#include "report/PqSheet.h"
#include "report/PqSheetRender.h"

#include "verify/DiscCheck.h"

#include <algorithm>

namespace {

// Wide CD-Text is cut here, so that a line still fits a mail reader.
constexpr int kMaxColumnWidth = 32;

QString fitted(const QString& text, int width)
{
    if (text.size() <= width)
        return text.leftJustified(width);
    return text.left(width - 1) + QChar(0x2026);
}

} // namespace

QByteArray pqSheetText(const PqSheet& sheet)
{
    QString out = QStringLiteral("PQ SHEET\n\n");
    for (const auto& field : sheet.headerFields())
        out +=
            (field.first + QLatin1Char(':')).leftJustified(12) + field.second + QLatin1Char('\n');
    out += QLatin1Char('\n');

    const QStringList names = PqSheet::columnNames();
    const std::vector<int> shown = sheet.shownColumns();
    std::vector<QStringList> rows;
    rows.reserve(sheet.rows.size());
    for (const PqSheetRow& row : sheet.rows)
        rows.push_back(sheet.cells(row));
    std::vector<int> widths;
    for (int column : shown) {
        int width = names.at(column).size();
        for (const QStringList& cells : rows)
            width = std::max(width, int(cells.at(column).size()));
        widths.push_back(std::min(width, kMaxColumnWidth));
    }
    auto tableLine = [&](const QStringList& cells) {
        QString text;
        for (std::size_t i = 0; i < shown.size(); ++i)
            text += fitted(cells.at(shown[i]), widths[i]) + QStringLiteral("  ");
        out += text.trimmed() + QLatin1Char('\n');
    };
    tableLine(names);
    for (const QStringList& cells : rows)
        tableLine(cells);

    if (!sheet.findings.empty()) {
        out += QStringLiteral("\nDisc check\n");
        for (const Finding& finding : sheet.findings) {
            const QString where = finding.track > 0 ? QStringLiteral("track %1").arg(finding.track)
                                                    : QStringLiteral("disc");
            out +=
                QStringLiteral("%1  %2  %3  %4\n")
                    .arg(QString::fromLatin1(severityName(finding.severity)).leftJustified(7),
                         where.leftJustified(8), QString::fromStdString(finding.id), finding.text);
        }
    }
    if (!sheet.files.empty()) {
        out += QStringLiteral("\nFiles\n");
        int width = 4;
        for (const PqSheetFile& file : sheet.files)
            width = std::max(width, int(file.name.size()));
        for (const PqSheetFile& file : sheet.files)
            out += QStringLiteral("%1  %2  %3\n")
                       .arg(file.name.leftJustified(width),
                            QString::number(file.size).rightJustified(11),
                            file.md5.isEmpty() ? QStringLiteral("-") : file.md5);
    }
    return out.toUtf8();
}
