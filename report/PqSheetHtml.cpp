#include "report/PqSheet.h"
#include "report/PqSheetRender.h"

namespace {

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

// Plain styles, so that any mail client or browser shows the sheet alike.
const char* const kStyle = R"(
body { font-family: 'Liberation Sans', 'DejaVu Sans', Arial, sans-serif; font-size: 8pt; color: #000; }
h1 { font-size: 14pt; margin: 0 0 6pt 0; }
h2 { font-size: 10pt; margin: 10pt 0 4pt 0; }
table { border-collapse: collapse; }
th { background-color: #e4e4e4; text-align: left; font-weight: bold; }
td, th { border: 1px solid #999; padding: 2px 4px; vertical-align: top; }
table.header td { border: none; padding: 1px 12px 1px 0; }
td.time { font-family: 'Liberation Mono', 'DejaVu Sans Mono', monospace; white-space: nowrap; }
tr.pause td { color: #555; }
td.over { color: #b00000; font-weight: bold; }
td.error { color: #b00000; font-weight: bold; }
td.warning { color: #9a5b00; }
)";

} // namespace

QByteArray pqSheetHtml(const PqSheet& sheet)
{
    QString html;
    html += QStringLiteral("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\">\n<title>");
    html +=
        escaped(QStringLiteral("PQ Sheet: %1")
                    .arg(sheet.albumTitle.isEmpty() ? sheet.imageFiles.join(QStringLiteral(", "))
                                                    : sheet.albumTitle));
    html += QStringLiteral("</title>\n<style>") + QString::fromLatin1(kStyle) +
            QStringLiteral("</style></head>\n<body>\n<h1>PQ Sheet</h1>\n");

    html += QStringLiteral("<table class=\"header\">\n");
    for (const auto& field : sheet.headerFields())
        html += QStringLiteral("<tr><td><b>%1</b></td><td>%2</td></tr>\n")
                    .arg(escaped(field.first), escaped(field.second));
    html += QStringLiteral("</table>\n");

    const QStringList names = PqSheet::columnNames();
    const std::vector<int> shown = sheet.shownColumns();
    constexpr int kFirstTime = 2, kLastTime = 4, kTruePeak = 14;
    html += QStringLiteral("<h2>Tracks</h2>\n<table width=\"100%\" cellspacing=\"0\" "
                           "cellpadding=\"2\" border=\"1\">\n<thead><tr>");
    for (int column : shown)
        html += QStringLiteral("<th>%1</th>").arg(escaped(names.at(column)));
    html += QStringLiteral("</tr></thead>\n<tbody>\n");
    for (const PqSheetRow& row : sheet.rows) {
        const QStringList cells = sheet.cells(row);
        html += row.index == 0 && !row.leadOut ? QStringLiteral("<tr class=\"pause\">")
                                               : QStringLiteral("<tr>");
        for (int column : shown) {
            QString cls;
            if (column >= kFirstTime && column <= kLastTime)
                cls = QStringLiteral(" class=\"time\"");
            else if (column == kTruePeak && row.truePeakNeedsLook())
                cls = QStringLiteral(" class=\"over\"");
            html += QStringLiteral("<td%1>%2</td>").arg(cls, escaped(cells.at(column)));
        }
        html += QStringLiteral("</tr>\n");
    }
    html += QStringLiteral("</tbody></table>\n");

    if (!sheet.findings.empty()) {
        html += QStringLiteral("<h2>Disc check</h2>\n<table cellspacing=\"0\" cellpadding=\"2\" "
                               "border=\"1\">\n<thead><tr><th>Severity</th><th>Track</th>"
                               "<th>Id</th><th>Finding</th></tr></thead>\n<tbody>\n");
        for (const Finding& finding : sheet.findings) {
            const QString severity = QString::fromLatin1(severityName(finding.severity));
            html += QStringLiteral("<tr><td class=\"%1\">%1</td><td>%2</td><td>%3</td>"
                                   "<td>%4</td></tr>\n")
                        .arg(severity,
                             finding.track > 0 ? QString::number(finding.track)
                                               : QStringLiteral("disc"),
                             escaped(QString::fromStdString(finding.id)), escaped(finding.text));
        }
        html += QStringLiteral("</tbody></table>\n");
    }
    if (!sheet.files.empty()) {
        html += QStringLiteral("<h2>Files</h2>\n<table cellspacing=\"0\" cellpadding=\"2\" "
                               "border=\"1\">\n<thead><tr><th>File</th><th>Bytes</th>"
                               "<th>MD5</th></tr></thead>\n<tbody>\n");
        for (const PqSheetFile& file : sheet.files)
            html += QStringLiteral("<tr><td>%1</td><td align=\"right\">%2</td>"
                                   "<td class=\"time\">%3</td></tr>\n")
                        .arg(escaped(file.name), QString::number(file.size),
                             file.md5.isEmpty() ? QStringLiteral("-") : file.md5);
        html += QStringLiteral("</tbody></table>\n");
    }
    html += QStringLiteral("</body></html>\n");
    return html.toUtf8();
}
