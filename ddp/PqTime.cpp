#include "ddp/PqTime.h"

#include <cctype>
#include <exception>

std::int64_t cdFrameOf(const PqEntry& entry)
{
    return (std::int64_t(entry.minutes()) * 60 + entry.seconds()) * kCdFramesPerSecond +
           entry.frames();
}

std::string frameTimeText(std::int64_t cdFrames)
{
    if (cdFrames < 0)
        cdFrames = 0;
    const std::int64_t minutes = cdFrames / (60 * kCdFramesPerSecond);
    const int seconds = int(cdFrames / kCdFramesPerSecond % 60);
    const int frames = int(cdFrames % kCdFramesPerSecond);
    auto two = [](std::int64_t v) { return (v < 10 ? "0" : "") + std::to_string(v); };
    return two(minutes) + ":" + two(seconds) + ":" + two(frames);
}

std::optional<EntryFrameTimes> entryFrameTimes(const std::vector<PqEntry>& entries,
                                               std::size_t entry)
{
    if (entry + 1 >= entries.size())
        return std::nullopt;
    try {
        const std::int64_t start = cdFrameOf(entries[entry]);
        return EntryFrameTimes{start, cdFrameOf(entries[entry + 1]) - start};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

PqControlFlags pqControlFlags(const PqEntry& entry)
{
    const char high = entry.field(16, 1).front();
    int nibble = 0;
    if (high >= '0' && high <= '9')
        nibble = high - '0';
    else if (high >= 'A' && high <= 'F')
        nibble = high - 'A' + 10;
    else if (high >= 'a' && high <= 'f')
        nibble = high - 'a' + 10;
    PqControlFlags flags;
    flags.preEmphasis = (nibble & 0x1) != 0;
    flags.copyPermitted = (nibble & 0x2) != 0;
    flags.data = (nibble & 0x4) != 0;
    flags.fourChannel = (nibble & 0x8) != 0;
    return flags;
}

bool isIsrc(std::string_view isrc)
{
    auto upper = [](char c) { return c >= 'A' && c <= 'Z'; };
    auto digit = [](char c) { return c >= '0' && c <= '9'; };
    if (isrc.size() != 12)
        return false;
    for (std::size_t i = 0; i < 12; ++i) {
        const char c = isrc[i];
        const bool ok = i < 2 ? upper(c) : i < 5 ? (upper(c) || digit(c)) : digit(c);
        if (!ok)
            return false;
    }
    return true;
}

std::string validIsrc(const PqEntry& entry)
{
    const std::string_view isrc = entry.isrc();
    return isIsrc(isrc) ? std::string(isrc) : std::string();
}
