// tivora-ddp analyze [--json] PATH: loudness and true peak of every track and
// of the disc, measured as the window measures them, for checking a master
// without a display.
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/InfoReport.h"
#include "tools/tivora-ddp/TerminalText.h"

#include "analysis/LoudnessAnalysis.h"
#include "analysis/LoudnessText.h"
#include "ddp/ErrorTexts.h"
#include "export/TrackRange.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <exception>

#include <unistd.h>

namespace {

int usage()
{
    std::fputs("usage: tivora-ddp analyze [--json] PATH\n", stderr);
    return 2;
}

int fail(const QString& message)
{
    const QByteArray text =
        QStringLiteral("tivora-ddp analyze: %1\n").arg(terminalText(message)).toLocal8Bit();
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
    return 1;
}

void write(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

struct Track
{
    QString number; // as the PQ entry writes it: "01"
    TrackSpan span;
};

// The tracks the WAV export writes, with their ranges.
std::vector<Track> tracksOf(const DDPModel& model)
{
    std::vector<Track> tracks;
    for (std::size_t entry : exportedTrackEntries(model)) {
        try {
            const TrackRange range = trackRange(model.entries(), entry);
            const std::string_view text = model.entries()[entry].trackText();
            tracks.push_back({QString::fromLatin1(text.data(), int(text.size())).trimmed(),
                              TrackSpan{range.start, range.end}});
        } catch (const std::exception&) {
            // A track without a readable end has no range to measure.
        }
    }
    return tracks;
}

QString textTable(const std::vector<Track>& tracks, const DiscLoudness& result)
{
    const QStringList header{QStringLiteral("Track"),     QStringLiteral("Loudness"),
                             QStringLiteral("Range"),     QStringLiteral("Max M"),
                             QStringLiteral("Max S"),     QStringLiteral("Sample Peak"),
                             QStringLiteral("True Peak"), QStringLiteral("Clipped")};
    QList<QStringList> rows{header};
    auto row = [](const QString& name, const LoudnessResult& r) {
        return QStringList{name,
                           lufsText(r.integrated),
                           luText(r.range),
                           lufsText(r.maxMomentary),
                           lufsText(r.maxShortTerm),
                           dbfsText(r.samplePeak),
                           dbtpText(r.truePeak) +
                               (truePeakNeedsLook(r.truePeak) ? QStringLiteral(" !") : QString()),
                           QString::number(r.clippedRuns)};
    };
    for (std::size_t i = 0; i < tracks.size() && i < result.tracks.size(); ++i)
        rows.append(row(terminalText(tracks[i].number), result.tracks[i]));
    rows.append(row(QStringLiteral("Disc"), result.disc));

    QList<int> widths;
    for (const QStringList& r : rows)
        for (int c = 0; c < r.size(); ++c) {
            if (widths.size() <= c)
                widths.append(0);
            widths[c] = std::max(widths[c], int(r.at(c).size()));
        }
    QString out;
    for (const QStringList& r : rows) {
        QString line;
        for (int c = 0; c < r.size(); ++c)
            line += r.at(c).leftJustified(widths.at(c) + 2);
        out += line.trimmed() + QLatin1Char('\n');
    }
    if (truePeakNeedsLook(result.disc.truePeak))
        out += QStringLiteral("! true peak above -1.0 dBTP\n");
    if (!result.disc.complete)
        out += QStringLiteral("Note: the audio image ends before the last track does.\n");
    return out;
}

} // namespace

int runAnalyze(const QStringList& args)
{
    bool json = false;
    QString path;
    for (const QString& arg : args) {
        if (arg == QLatin1String("--json"))
            json = true;
        else if (arg.startsWith(QLatin1String("--")) || !path.isEmpty())
            return usage();
        else
            path = arg;
    }
    if (path.isEmpty())
        return usage();

    const InfoReport report = makeInfoReport(path);
    if (report.result.kind != ErrorKind::NoError)
        return fail(
            errorTitle(report.result.kind) +
            (report.result.message.empty()
                 ? QString()
                 : QStringLiteral(" (%1)").arg(QString::fromStdString(report.result.message))));
    DDPModel& model = *report.model;
    try {
        model.setFirstTrackNumber(model.isFirstRowPause() ? 1 : 2);
    } catch (const std::exception&) {
        return fail(QStringLiteral("The DDP has no tracks."));
    }
    LoadResult imageError;
    const std::shared_ptr<const DiscImage> image = openReportImage(report, &imageError);
    if (!image)
        return fail(QStringLiteral("The audio image cannot be read (%1).")
                        .arg(QString::fromStdString(imageError.message)));

    const std::vector<Track> tracks = tracksOf(model);
    std::vector<TrackSpan> spans;
    for (const Track& track : tracks)
        spans.push_back(track.span);
    const std::vector<PqEntry>& entries = model.entries();
    const qint64 leadOut =
        entries.size() >= 2 ? byteOffset(entries[entries.size() - leadOutEntryCount(entries)]) : 0;

    const bool terminal = isatty(fileno(stderr)) != 0;
    AnalysisOptions options;
    int shown = -1;
    options.progress = [&](qint64 done, qint64 total) {
        const int percent = total > 0 ? int(done * 100 / total) : 100;
        if (!terminal || percent == shown)
            return;
        shown = percent;
        std::fprintf(stderr, "\rmeasuring %d%%", percent);
        std::fflush(stderr);
    };
    const std::atomic<bool> never{false};
    const DiscLoudness result =
        analyzeLoudness(*image, programmeParts(spans, leadOut), never, options);
    if (shown >= 0)
        std::fputs("\r              \r", stderr);

    if (json) {
        QJsonArray list;
        for (std::size_t i = 0; i < tracks.size() && i < result.tracks.size(); ++i) {
            QJsonObject object = loudnessJson(result.tracks[i]);
            object.insert(QStringLiteral("track"), tracks[i].number);
            list.append(object);
        }
        const QJsonObject object{{QStringLiteral("tracks"), list},
                                 {QStringLiteral("disc"), loudnessJson(result.disc)}};
        write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    } else {
        write(textTable(tracks, result).toUtf8());
    }
    return 0;
}
