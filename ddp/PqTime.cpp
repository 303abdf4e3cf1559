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

std::string validIsrc(const PqEntry& entry)
{
    const std::string_view isrc = entry.isrc();
    bool anyNonZero = false;
    for (std::size_t i = 0; i < isrc.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(isrc[i]);
        const bool ok = i < 5 ? (std::isdigit(c) || std::isupper(c)) : std::isdigit(c) != 0;
        if (!ok || c > 0x7F)
            return {};
        anyNonZero = anyNonZero || c != '0';
    }
    return anyNonZero ? std::string(isrc) : std::string();
}
