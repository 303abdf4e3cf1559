#include "audio/TrackSegments.h"

#include <exception>

namespace Audio {

namespace {

std::uint32_t entryOffset(const PqEntry& entry)
{
    try {
        const double position = entry.bytePosition();
        return position > 0 ? static_cast<std::uint32_t>(position) : 0;
    } catch (const std::exception&) {
        return 0;
    }
}

} // namespace

std::vector<TrackSegment> buildTrackSegments(const std::vector<PqEntry>& entries)
{
    // Every entry up to the lead-out starts a segment; most descriptors close
    // with two lead-out entries, some with one.
    const std::size_t leadOut = leadOutEntryCount(entries);
    std::vector<TrackSegment> segments;
    for (std::size_t i = 0; i + leadOut < entries.size(); ++i)
        segments.emplace_back(entryOffset(entries[i]), entryOffset(entries[i + 1]));
    return segments;
}

int entryIndexNumber(const std::vector<PqEntry>& entries, int e)
{
    if (e < 1 || static_cast<std::size_t>(e) >= entries.size())
        return -1;
    try {
        return entries[static_cast<std::size_t>(e)].indexNumber();
    } catch (const std::exception&) {
        return -1;
    }
}

} // namespace Audio
