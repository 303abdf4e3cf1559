#pragma once

#include "ddp/PqEntry.h"

#include <QtGlobal>

#include <cstddef>
#include <optional>
#include <vector>

class DDPModel;

// A track's bytes in the audio image: [start, end).
struct TrackRange
{
    qint64 start = 0;
    qint64 end = 0;
    qint64 length() const { return end - start; }
};

// The entry's position as a byte offset in the image, truncated to an integer.
qint64 byteOffset(const PqEntry& entry);

// A track runs from its entry to the first later entry whose index is 0 or 1
// (the next track's pause or start, or the closing entry); index 02 and above
// belong to the track. Throws std::out_of_range("invalid vector subscript")
// when the entry does not exist or no such later entry does, and the entries'
// own parse failures for fields that hold no number.
TrackRange trackRange(const std::vector<PqEntry>& entries, std::size_t entryIndex);

// The entry of table row `row`: rows start at the model's first-track number
// in the entry list.
std::size_t entryIndexForRow(const DDPModel& model, int row);

// The entries the all-tracks export writes, in order: every index-1 entry from
// the first-track number up to, not including, the lead-out entries (the last
// two, or the last one when the descriptor closes with a single "AA").
// Entries whose index does not parse are skipped.
std::vector<std::size_t> exportedTrackEntries(const DDPModel& model);

// One track of exportedTrackEntries() with its bytes; no range when the PQ
// descriptor gives it no readable end.
struct ExportedTrack
{
    std::size_t entry = 0;
    std::optional<TrackRange> range;
};
std::vector<ExportedTrack> exportedTracks(const DDPModel& model);
