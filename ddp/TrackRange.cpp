#include "ddp/TrackRange.h"

#include "ddp/CheckedAccess.h"
#include "ddp/DDPModel.h"

#include <stdexcept>

qint64 byteOffset(const PqEntry& entry)
{
    return static_cast<qint64>(entry.bytePosition());
}

TrackRange trackRange(const std::vector<PqEntry>& entries, std::size_t entryIndex)
{
    const PqEntry& first = checkedAt(entries, entryIndex);
    std::size_t next = entryIndex + 1;
    while (true) {
        const int index = checkedAt(entries, next).indexNumber();
        if (index == 0 || index == 1)
            break;
        ++next;
    }
    return TrackRange{byteOffset(first), byteOffset(entries[next])};
}

std::size_t entryIndexForRow(const DDPModel& model, int row)
{
    if (row < 0)
        throw std::out_of_range(kInvalidVectorSubscript);
    return model.firstTrackNumber() + static_cast<std::size_t>(row);
}

std::vector<std::size_t> exportedTrackEntries(const DDPModel& model)
{
    std::vector<std::size_t> result;
    const std::vector<PqEntry>& entries = model.entries();
    // Signed, so that a list of fewer than two entries yields nothing.
    const long long stop =
        static_cast<long long>(entries.size()) - static_cast<long long>(leadOutEntryCount(entries));
    for (long long i = model.firstTrackNumber(); i < stop; ++i) {
        try {
            if (entries[static_cast<std::size_t>(i)].indexNumber() == 1)
                result.push_back(static_cast<std::size_t>(i));
        } catch (const std::exception&) {
            // Not a track start we can read; it has no file of its own.
        }
    }
    return result;
}

std::vector<ExportedTrack> exportedTracks(const DDPModel& model)
{
    std::vector<ExportedTrack> tracks;
    for (std::size_t entry : exportedTrackEntries(model)) {
        ExportedTrack track{entry, std::nullopt};
        try {
            track.range = trackRange(model.entries(), entry);
        } catch (const std::exception&) {
        }
        tracks.push_back(track);
    }
    return tracks;
}
