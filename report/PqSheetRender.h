#pragma once

#include <QByteArray>
#include <QPageSize>
#include <QString>

struct PqSheet;

// The PQ sheet's four forms, each from the same PqSheet. Columns that no row
// fills (CD-Text on a disc without it, loudness before an analysis) are left
// out of the text, HTML and PDF; the JSON has every value.

// Fixed columns for e-mail, UTF-8.
QByteArray pqSheetText(const PqSheet& sheet);
// One self-contained HTML file (styles inline, nothing fetched).
QByteArray pqSheetHtml(const PqSheet& sheet);
// Every value, machine-readable.
QByteArray pqSheetJson(const PqSheet& sheet);
// A PDF on pages of `pageSize`, landscape, fonts embedded, the table's
// header repeated on every page. Needs a QGuiApplication (for fonts). False,
// with `error` saying why, when the file cannot be written.
bool writePqSheetPdf(const PqSheet& sheet, const QString& path, const QPageSize& pageSize,
                     QString* error = nullptr);
// A4, or Letter where the locale measures in inches.
QPageSize defaultPqSheetPageSize();

enum class PqSheetFormat
{
    Pdf,
    Html,
    Text,
    Json,
};
// The format a file name asks for by its extension (.pdf, .html/.htm,
// .txt, .json; any case); "-" is text. Nothing for another extension.
bool pqSheetFormatForPath(const QString& path, PqSheetFormat* format);
// Writes the sheet in `format` to `path` ("-": standard output), through a
// temporary file renamed over the target when complete.
bool writePqSheet(const PqSheet& sheet, PqSheetFormat format, const QString& path,
                  QString* error = nullptr);
