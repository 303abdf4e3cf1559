#include "report/PqSheet.h"

#include "analysis/LoudnessText.h"
#include "ddp/DDPModel.h"
#include "ddp/DiscTexts.h"
#include "ddp/PqTime.h"
#include "verify/Verification.h"
#include "verify/VerificationText.h"

#include <exception>

namespace {

QString frameText(std::int64_t frames)
{
    return QString::fromStdString(frameTimeText(frames));
}

QString flagsText(const PqEntry& entry)
{
    const PqControlFlags flags = pqControlFlags(entry);
    QStringList set;
    if (flags.preEmphasis)
        set << QStringLiteral("PRE");
    if (flags.copyPermitted)
        set << QStringLiteral("COPY");
    if (flags.fourChannel)
        set << QStringLiteral("4CH");
    return set.join(QLatin1Char(' '));
}

QString frameText(const std::optional<std::int64_t>& frames)
{
    return frames ? frameText(*frames) : QString();
}

} // namespace

QString PqSheetRow::startText() const
{
    return frameText(startFrames);
}

QString PqSheetRow::durationText() const
{
    return frameText(durationFrames);
}

QString PqSheetRow::pauseText() const
{
    return frameText(pauseFrames);
}

QString PqSheetRow::loudnessText() const
{
    return loudnessLufs ? lufsText(*loudnessLufs) : QString();
}

QString PqSheetRow::truePeakText() const
{
    return truePeakDbtp ? dbtpText(*truePeakDbtp) : QString();
}

bool PqSheetRow::truePeakNeedsLook() const
{
    return truePeakDbtp && ::truePeakNeedsLook(*truePeakDbtp);
}

QVector<QPair<QString, QString>> PqSheet::headerFields() const
{
    const QVector<QPair<QString, QString>> all{
        {QStringLiteral("Album"), albumTitle},
        {QStringLiteral("Performer"), albumPerformer},
        {QStringLiteral("UPC/EAN"), upcEan},
        {QStringLiteral("DDP level"), ddpLevel},
        {QStringLiteral("Image"), imageFiles.join(QStringLiteral(", "))},
        {QStringLiteral("Tracks"), QString::number(trackCount)},
        {QStringLiteral("Total time"), totalTime},
        {QStringLiteral("Date"), date.toString(Qt::ISODate)},
        {QStringLiteral("Checksums"), checksums},
        {QStringLiteral("Disc check"), discCheck},
        {QStringLiteral("Loudness"), discLoudness},
    };
    QVector<QPair<QString, QString>> shown;
    for (const auto& field : all)
        if (!field.second.isEmpty())
            shown << field;
    return shown;
}

QStringList PqSheet::columnNames()
{
    return {QStringLiteral("Track"),      QStringLiteral("Index"),    QStringLiteral("Start"),
            QStringLiteral("Duration"),   QStringLiteral("Pause"),    QStringLiteral("ISRC"),
            QStringLiteral("Flags"),      QStringLiteral("Title"),    QStringLiteral("Performer"),
            QStringLiteral("Songwriter"), QStringLiteral("Composer"), QStringLiteral("Arranger"),
            QStringLiteral("Message"),    QStringLiteral("Loudness"), QStringLiteral("True Peak")};
}

QStringList PqSheet::cells(const PqSheetRow& row) const
{
    QStringList cells;
    if (row.leadOut)
        cells << QStringLiteral("Lead-out") << QString();
    else
        cells << QStringLiteral("%1").arg(row.track, 2, 10, QLatin1Char('0'))
              << QStringLiteral("%1").arg(row.index, 2, 10, QLatin1Char('0'));
    cells << row.startText() << row.durationText() << row.pauseText() << row.isrc << row.flags;
    for (int i = 0; i < 6; ++i)
        cells << row.cdText.value(i);
    cells << row.loudnessText() << row.truePeakText();
    return cells;
}

std::vector<int> PqSheet::shownColumns() const
{
    constexpr int kAlwaysShown = 7; // Track, Index, Start, Duration, Pause, ISRC, Flags
    std::vector<int> shown;
    const int count = int(columnNames().size());
    std::vector<bool> filled(std::size_t(count), false);
    for (const PqSheetRow& row : rows) {
        const QStringList c = cells(row);
        for (int i = kAlwaysShown; i < count; ++i)
            filled[std::size_t(i)] = filled[std::size_t(i)] || !c.at(i).isEmpty();
    }
    for (int i = 0; i < count; ++i)
        if (i < kAlwaysShown || filled[std::size_t(i)])
            shown.push_back(i);
    return shown;
}

PqSheet makePqSheet(const DDPModel& model, const PqSheetInputs& inputs)
{
    PqSheet sheet;
    sheet.albumTitle = albumText(model, CdTextRecord::Title);
    sheet.albumPerformer = albumText(model, CdTextRecord::Performer);
    sheet.upcEan = discUpcEan(model);
    sheet.ddpLevel = QString::fromStdString(model.ddpLevel()).trimmed();
    for (const ImageStream& stream : model.imageLayout().streams)
        sheet.imageFiles << QString::fromStdString(stream.name);
    if (sheet.imageFiles.isEmpty() && !model.imageFileName().empty())
        sheet.imageFiles << QString::fromStdString(model.imageFileName()).trimmed();
    sheet.date = inputs.date;
    sheet.checksums =
        inputs.verification ? verdictLine(*inputs.verification) : QStringLiteral("Not verified");
    if (inputs.verification) {
        sheet.findings = inputs.verification->findings;
        // Said outright, so that a sheet without findings reads as checked.
        sheet.discCheck = findingsSummary(sheet.findings);
        if (sheet.discCheck.isEmpty())
            sheet.discCheck = QStringLiteral("No errors or warnings");
    }
    sheet.files = inputs.files;
    if (inputs.loudness) {
        const LoudnessResult& disc = inputs.loudness->disc;
        sheet.discLoudness =
            QStringLiteral("%1, LRA %2, %3")
                .arg(lufsText(disc.integrated), luText(disc.range), dbtpText(disc.truePeak));
    }

    const std::vector<PqEntry>& entries = model.pqEntries();
    const std::size_t leadOuts = leadOutEntryCount(entries);
    if (entries.size() < leadOuts + 2)
        return sheet;
    const std::size_t leadOut = entries.size() - leadOuts;
    int trackOrdinal = -1; // the track's place on the disc, for its loudness
    int lastTrack = -1;
    std::int64_t pendingPause = 0; // the current track's index 00, none: 0
    for (std::size_t i = 1; i < leadOut; ++i) {
        const PqEntry& entry = entries[i];
        const std::optional<EntryFrameTimes> times = entryFrameTimes(entries, i);
        PqSheetRow row;
        try {
            row.track = entry.trackNumber();
            row.index = entry.indexNumber();
        } catch (const std::exception&) {
            continue;
        }
        if (!times)
            continue;
        if (row.track != lastTrack) {
            lastTrack = row.track;
            ++trackOrdinal;
            ++sheet.trackCount;
            pendingPause = 0;
        }
        row.startFrames = times->start;
        row.durationFrames = times->duration;
        row.flags = flagsText(entry);
        if (row.index == 0)
            pendingPause = times->duration;
        if (row.index == 1) {
            row.pauseFrames = pendingPause;
            row.isrc = QString::fromStdString(validIsrc(entry));
            const int textTrack = trackOrdinal + 1;
            for (CdTextRecord::SlotIndex slot :
                 {CdTextRecord::Title, CdTextRecord::Performer, CdTextRecord::Songwriter,
                  CdTextRecord::Composer, CdTextRecord::Arranger, CdTextRecord::Message})
                row.cdText << trackText(model, textTrack, slot);
            if (inputs.loudness && std::size_t(trackOrdinal) < inputs.loudness->tracks.size()) {
                const LoudnessResult& track = inputs.loudness->tracks[std::size_t(trackOrdinal)];
                row.loudnessLufs = track.integrated;
                row.truePeakDbtp = track.truePeak;
            }
        }
        sheet.rows.push_back(row);
    }
    PqSheetRow end;
    end.leadOut = true;
    try {
        end.startFrames = cdFrameOf(entries[leadOut]);
        sheet.totalTime = end.startText();
    } catch (const std::exception&) {
    }
    sheet.rows.push_back(end);
    return sheet;
}
