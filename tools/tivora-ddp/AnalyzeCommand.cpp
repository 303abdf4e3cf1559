// tivora-ddp analyze [--json] PATH: loudness and true peak of every track and
// of the disc, measured as the window measures them, for checking a master
// without a display.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/TerminalText.h"

#include "analysis/LoudnessAnalysis.h"
#include "analysis/LoudnessText.h"
#include "analysis/ProgrammeParts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

#include <unistd.h>

namespace {

// Each measured track's number as the PQ entry writes it: "01".
std::vector<QString> trackNumbers(const DDPModel& model, const DiscProgramme& programme)
{
    std::vector<QString> numbers;
    for (std::size_t entry : programme.trackEntries) {
        const std::string_view text = model.entries()[entry].trackText();
        numbers.push_back(QString::fromLatin1(text.data(), int(text.size())).trimmed());
    }
    return numbers;
}

QString textTable(const std::vector<QString>& tracks, const DiscLoudness& result)
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
        rows.append(row(terminalText(tracks[i]), result.tracks[i]));
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
    const std::optional<PathArguments> arguments = parsePathArguments(args);
    if (!arguments)
        return usageError("tivora-ddp analyze [--json] PATH");
    const bool json = arguments->json;
    InfoReport report;
    QString error;
    const std::shared_ptr<const DiscImage> image =
        loadDiscAndImage(arguments->path, report, &error);
    if (!image)
        return commandFailed("analyze", error);

    const std::optional<DiscProgramme> programme = discProgramme(*report.model, &error);
    if (!programme)
        return commandFailed("analyze", error);
    const std::vector<QString> tracks = trackNumbers(*report.model, *programme);

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
    const DiscLoudness result = analyzeLoudness(*image, programme->parts, never, options);
    if (shown >= 0)
        std::fputs("\r              \r", stderr);

    if (json) {
        QJsonArray list;
        for (std::size_t i = 0; i < tracks.size() && i < result.tracks.size(); ++i) {
            QJsonObject object = loudnessJson(result.tracks[i]);
            object.insert(QStringLiteral("track"), tracks[i]);
            list.append(object);
        }
        const QJsonObject object{{QStringLiteral("tracks"), list},
                                 {QStringLiteral("disc"), loudnessJson(result.disc)}};
        writeOut(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    } else {
        writeOut(textTable(tracks, result).toUtf8());
    }
    return 0;
}
