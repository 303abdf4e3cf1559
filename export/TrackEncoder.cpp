#include "export/TrackEncoder.h"

#include "export/FlacEncoder.h"
#include "export/Mp3Encoder.h"
#include "export/WavEncoder.h"

QString formatExtension(ExportFormat format)
{
    switch (format) {
    case ExportFormat::Flac:
        return QStringLiteral(".flac");
    case ExportFormat::Mp3:
        return QStringLiteral(".mp3");
    case ExportFormat::Wav:
        break;
    }
    return QStringLiteral(".wav");
}

QString formatName(ExportFormat format)
{
    return formatExtension(format).mid(1).toUpper();
}

std::optional<ExportFormat> formatFromText(const QString& text)
{
    for (ExportFormat format : {ExportFormat::Wav, ExportFormat::Flac, ExportFormat::Mp3}) {
        const QString extension = formatExtension(format);
        if (text.compare(extension.mid(1), Qt::CaseInsensitive) == 0 ||
            text.endsWith(extension, Qt::CaseInsensitive))
            return format;
    }
    return std::nullopt;
}

std::unique_ptr<TrackEncoder> makeTrackEncoder(ExportFormat format)
{
    switch (format) {
    case ExportFormat::Flac:
        return std::make_unique<FlacEncoder>();
    case ExportFormat::Mp3:
        return std::make_unique<Mp3Encoder>();
    case ExportFormat::Wav:
        break;
    }
    return std::make_unique<WavEncoder>();
}
