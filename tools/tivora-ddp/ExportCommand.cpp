// tivora-ddp export PATH OUTDIR [--track N] [--format wav|flac|mp3]: the
// window's export from the command line, with the same workers and file
// names. Without --track every track is written as "Export as WAV" writes
// them; with it, the track whose number is N. FLAC and MP3 tracks are encoded
// in parallel, tagged from the CD-Text and the PQ entries.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/ExportProgressLine.h"
#include "tools/tivora-ddp/TerminalText.h"

#include "ddp/DdpFileLookup.h"
#include "ddp/ImageLayout.h"
#include "ddp/TrackRange.h"
#include "export/EncodeWriter.h"
#include "export/ExportFileName.h"
#include "export/FileWriterAllTracks.h"
#include "export/FileWriterOneTrack.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <exception>
#include <memory>
#include <optional>

#include <unistd.h>

namespace {

int fail(const QString& message)
{
    return commandFailed("export", message);
}

struct Arguments
{
    QString path;
    QString outDir;
    std::optional<int> track;
    ExportFormat format = ExportFormat::Wav;
};

std::optional<Arguments> parse(const QStringList& args)
{
    Arguments parsed;
    QStringList positional;
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--track")) {
            bool ok = false;
            const int number = i + 1 < args.size() ? args[i + 1].toInt(&ok) : 0;
            if (!ok || parsed.track)
                return std::nullopt;
            parsed.track = number;
            ++i;
        } else if (args[i] == QLatin1String("--format") && i + 1 < args.size()) {
            const std::optional<ExportFormat> format = formatFromText(args[++i]);
            if (!format || args[i].contains(QLatin1Char('.')))
                return std::nullopt;
            parsed.format = *format;
        } else if (args[i].startsWith(QLatin1String("--"))) {
            return std::nullopt;
        } else {
            positional.append(args[i]);
        }
    }
    if (positional.size() != 2)
        return std::nullopt;
    parsed.path = positional[0];
    parsed.outDir = positional[1];
    return parsed;
}

// One line of the file list on standard output. The path holds names from
// the disc and from the command line: control characters are escaped.
void printListLine(const QString& text)
{
    const QByteArray line = terminalText(QDir::toNativeSeparators(text)).toLocal8Bit() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}

// The index-1 entry of track `number`, if the disc has one.
std::optional<std::size_t> trackEntry(const DDPModel& model, int number)
{
    for (std::size_t entry : exportedTrackEntries(model)) {
        try {
            if (model.entries()[entry].trackNumber() == number)
                return entry;
        } catch (const std::exception&) {
        }
    }
    return std::nullopt;
}

} // namespace

int runExport(const QStringList& args)
{
    const std::optional<Arguments> arguments = parse(args);
    if (!arguments)
        return usageError("tivora-ddp export PATH OUTDIR [--track N] [--format wav|flac|mp3]");

    const InfoReport report = makeInfoReport(arguments->path);
    if (report.result.kind != ErrorKind::NoError)
        return fail(loadErrorLine(report.result));
    DDPModel& model = *report.model;
    if (model.indexList().empty())
        return fail(QStringLiteral("The DDP has no tracks."));

    const QString image = ddpFileNameFromBytes(model.imageFileName());
    LoadResult imageError;
    // Compressed audio in an archive is unpacked first; a line on the
    // terminal counts it up.
    const bool terminal = isatty(fileno(stderr)) != 0;
    int shownPercent = -1;
    const std::shared_ptr<const DiscImage> disc =
        openReportImage(report, &imageError, [&](std::uint64_t done, std::uint64_t total) {
            const int percent = total > 0 ? static_cast<int>(done * 100 / total) : 100;
            if (!terminal || percent == shownPercent)
                return;
            shownPercent = percent;
            std::fprintf(stderr, "\runpacking %d%%", percent);
            std::fflush(stderr);
        });
    if (shownPercent >= 0)
        std::fputs("\n", stderr);
    if (!disc)
        return fail(imageMissing(imageError, image));
    const QString outDir = QFileInfo(arguments->outDir).absoluteFilePath();
    if (!QDir().mkpath(outDir))
        return fail(QStringLiteral("Could not create the folder \"%1\".").arg(outDir));

    std::unique_ptr<FileWriter> worker;
    ExportProgressLine progress(stderr);
    int ordinal = 1;
    int count = 1;
    if (arguments->track) {
        const std::optional<std::size_t> entry = trackEntry(model, *arguments->track);
        if (!entry)
            return fail(QStringLiteral("The DDP has no track %1.").arg(*arguments->track));
        TrackRange range;
        try {
            range = trackRange(model.entries(), *entry);
        } catch (const std::exception& e) {
            return fail(QStringLiteral("The end of track %1 is not in the PQ descriptor (%2).")
                            .arg(*arguments->track)
                            .arg(QString::fromStdString(e.what())));
        }
        QString output = QDir(outDir).filePath(defaultFileName(model, *entry));
        if (arguments->format == ExportFormat::Wav) {
            worker = std::make_unique<FileWriterOneTrack>(output, image, range.start, range.end);
        } else {
            output.chop(4); // ".wav"
            worker = std::make_unique<EncodeWriter>(arguments->format,
                                                    output + formatExtension(arguments->format),
                                                    image, report.model, *entry);
        }
        worker->setImage(disc);
    } else if (arguments->format != ExportFormat::Wav) {
        worker = std::make_unique<EncodeWriter>(arguments->format, outDir, image, report.model);
        worker->setImage(disc);
    } else {
        worker = std::make_unique<FileWriterAllTracks>(outDir, image, report.model);
        worker->setImage(disc);
    }
    QObject::connect(worker.get(), &FileWriter::trackStarted, [&](int o, int c) {
        ordinal = o;
        count = c;
    });
    // In the file list, so that every track has its line: written files
    // are absolute paths, a skipped one never starts like one.
    QObject::connect(worker.get(), &FileWriter::trackSkipped, [](const QString& path) {
        printListLine(QStringLiteral("skipped (empty track): ") + path);
    });

    // The worker runs right here on the main thread, so its signals arrive
    // at once.
    QString failure;
    QObject::connect(worker.get(), &FileWriter::fileStarted, [&](const QString& path) {
        progress.setFile(QFileInfo(path).fileName(), ordinal, count);
    });
    QObject::connect(worker.get(), &FileWriter::processed,
                     [&progress](qint64 value) { progress.setValue(value); });
    QObject::connect(worker.get(), &FileWriter::fileWritten, [&progress](const QString& path) {
        // The scale leaves out each phase's short last piece; done is done.
        progress.setValue(20000);
        progress.finish();
        printListLine(path);
    });
    QObject::connect(worker.get(), &FileWriter::failed,
                     [&failure](const QString& message) { failure = message; });
    worker->process();
    progress.finish();
    return failure.isEmpty() ? 0 : fail(failure);
}
