#include "tools/tivora-ddp/CommandSupport.h"

#include "tools/tivora-ddp/TerminalText.h"

#include "ddp/ErrorTexts.h"

#include <cstdio>

int usageError(const char* line)
{
    std::fprintf(stderr, "usage: %s\n", line);
    return 2;
}

int commandFailed(const char* command, const QString& message)
{
    const QByteArray text = QStringLiteral("tivora-ddp %1: %2\n")
                                .arg(QLatin1String(command), terminalText(message))
                                .toLocal8Bit();
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
    return 1;
}

void writeOut(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

std::optional<PathArguments> parsePathArguments(const QStringList& args)
{
    PathArguments parsed;
    for (const QString& arg : args) {
        if (arg == QLatin1String("--json"))
            parsed.json = true;
        else if (arg.startsWith(QLatin1String("--")) || !parsed.path.isEmpty())
            return std::nullopt;
        else
            parsed.path = arg;
    }
    if (parsed.path.isEmpty())
        return std::nullopt;
    return parsed;
}

QString loadErrorTitle(const LoadResult& result)
{
    QString line = errorTitle(result.kind);
    if (!result.message.empty())
        line += QStringLiteral(" (%1)").arg(QString::fromStdString(result.message));
    return line;
}

QString loadErrorLine(const LoadResult& result)
{
    const QString text = plainErrorText(result.kind).trimmed();
    QString line =
        errorTitle(result.kind) + QStringLiteral(": ") + text.left(text.indexOf(QLatin1Char('\n')));
    if (!result.message.empty())
        line += QStringLiteral(" (%1)").arg(QString::fromStdString(result.message));
    return line;
}

QString imageMissing(const LoadResult& imageError, const QString& imageName)
{
    if (imageError.kind == ErrorKind::ArchiveInvalid)
        return loadErrorLine(imageError);
    return QStringLiteral("The audio image \"%1\" is missing (%2).")
        .arg(imageName, QString::fromStdString(imageError.message));
}

std::shared_ptr<const DiscImage> loadDiscAndImage(const QString& path, InfoReport& report,
                                                  QString* error)
{
    report = makeInfoReport(path);
    if (report.result.kind != ErrorKind::NoError) {
        *error = loadErrorTitle(report.result);
        return nullptr;
    }
    if (report.model->indexList().empty()) {
        *error = QStringLiteral("The DDP has no tracks.");
        return nullptr;
    }
    LoadResult imageError;
    std::shared_ptr<const DiscImage> image = openReportImage(report, &imageError);
    if (!image)
        *error = QStringLiteral("The audio image cannot be read (%1).")
                     .arg(QString::fromStdString(imageError.message));
    return image;
}
