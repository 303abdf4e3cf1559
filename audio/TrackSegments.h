#pragma once

#include "ddp/PqEntry.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace Audio {

// (start, end) byte offsets, one per PQ entry pair: segment i runs from
// entry i to entry i + 1, for i < entry count - 2 (the last two entries are
// the lead-out). An entry whose time cannot be read counts as offset 0.
using TrackSegment = std::pair<std::uint32_t, std::uint32_t>;
std::vector<TrackSegment> buildTrackSegments(const std::vector<PqEntry>& entries);

// The entry's index number, or -1 when e is out of range, below 1, or the
// field holds no number.
int entryIndexNumber(const std::vector<PqEntry>& entries, int e);

} // namespace Audio
