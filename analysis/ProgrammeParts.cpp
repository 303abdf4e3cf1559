#include "analysis/ProgrammeParts.h"

#include "ddp/DDPModel.h"

std::vector<AnalysisPart> programmeParts(const std::vector<TrackRange>& tracks, qint64 leadOut)
{
    std::vector<AnalysisPart> parts;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        parts.push_back({tracks[i].start, tracks[i].end, true});
        const qint64 next = i + 1 < tracks.size() ? tracks[i + 1].start : leadOut;
        if (next > tracks[i].end)
            parts.push_back({tracks[i].end, next, false});
    }
    return parts;
}

std::vector<AnalysisPart> programmeParts(const std::vector<TrackRange>& tracks,
                                         const std::vector<PqEntry>& entries)
{
    const qint64 leadOut =
        entries.size() >= 2
            ? static_cast<qint64>(
                  entries[entries.size() - leadOutEntryCount(entries)].bytePosition())
            : 0;
    return programmeParts(tracks, leadOut);
}

std::optional<DiscProgramme> discProgramme(const DDPModel& model, QString* error)
{
    DiscProgramme programme;
    std::vector<TrackRange> ranges;
    for (const ExportedTrack& track : exportedTracks(model)) {
        if (!track.range) {
            if (error) {
                const std::string_view number = model.entries()[track.entry].trackText();
                *error = QStringLiteral("The end of track %1 is not in the PQ descriptor.")
                             .arg(QString::fromLatin1(number.data(), int(number.size())).trimmed());
            }
            return std::nullopt;
        }
        programme.trackEntries.push_back(track.entry);
        ranges.push_back(*track.range);
    }
    programme.parts = programmeParts(ranges, model.entries());
    return programme;
}
