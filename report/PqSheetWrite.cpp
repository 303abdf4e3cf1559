#include "report/PqSheet.h"
#include "report/PqSheetRender.h"

#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

bool writePqSheetPdfTo(const PqSheet& sheet, QIODevice* device, const QPageSize& pageSize);

bool pqSheetFormatForPath(const QString& path, PqSheetFormat* format)
{
    if (path == QLatin1String("-")) {
        *format = PqSheetFormat::Text;
        return true;
    }
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("pdf"))
        *format = PqSheetFormat::Pdf;
    else if (suffix == QLatin1String("html") || suffix == QLatin1String("htm"))
        *format = PqSheetFormat::Html;
    else if (suffix == QLatin1String("txt"))
        *format = PqSheetFormat::Text;
    else if (suffix == QLatin1String("json"))
        *format = PqSheetFormat::Json;
    else
        return false;
    return true;
}

bool writePqSheetPdf(const PqSheet& sheet, const QString& path, const QPageSize& pageSize,
                     QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    writePqSheetPdfTo(sheet, &file, pageSize);
    if (!file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

bool writePqSheet(const PqSheet& sheet, PqSheetFormat format, const QString& path, QString* error)
{
    if (format == PqSheetFormat::Pdf)
        return writePqSheetPdf(sheet, path, defaultPqSheetPageSize(), error);
    QByteArray bytes;
    switch (format) {
    case PqSheetFormat::Html:
        bytes = pqSheetHtml(sheet);
        break;
    case PqSheetFormat::Json:
        bytes = pqSheetJson(sheet);
        break;
    default:
        bytes = pqSheetText(sheet);
        break;
    }
    if (path == QLatin1String("-")) {
        const bool written = std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout) ==
                             std::size_t(bytes.size());
        std::fflush(stdout);
        if (!written && error)
            *error = QStringLiteral("cannot write to standard output");
        return written;
    }
    // Written under a temporary name and renamed over the target when
    // complete: a sheet is never half there.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}
