#pragma once

#include "ddp/CdTextRecord.h"
#include "ddp/PqEntry.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

// Moves each ISRC from an index-0 entry onto the index-1 entry that follows
// it (and blanks it with zeros at the pause), for i = 1 up to the lead-out
// entries (i < N - 2, or i < N - 1 after a single "AA" entry).
// The copy is unconditional: a blank ISRC at the pause blanks the track's.
// Throws "invalid stoi argument" for an index field that holds no number.
void correctIsrcs(std::vector<PqEntry>& entries);

// The track table as plain data: one row per shown entry, then the total.
// A cell without a value has no item in the item model.
struct TrackTableRows
{
    static constexpr int kColumnCount = 13;
    enum Column
    {
        Type = 0,
        Track,
        Index,
        CdTime,
        Duration,
        Title,
        Performer,
        Songwriter,
        Composer,
        Arranger,
        Message,
        Isrc,
        Usertext
    };
    using Row = std::vector<std::optional<QString>>; // kColumnCount cells

    std::vector<Row> rows;                // includes the "Total: " row when it is placed
    std::vector<std::uint32_t> indexList; // the index number of each entry row
};

// Builds the rows from the corrected entries. Throws std::out_of_range or
// std::invalid_argument with the standard texts for entries that do not
// hold numbers where numbers belong, or for a track beyond the CD-Text.
TrackTableRows buildTrackTableRows(const std::vector<PqEntry>& entries, const CdTextRecord* cdText);
