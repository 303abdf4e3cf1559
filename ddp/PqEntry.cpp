#include "ddp/PqEntry.h"

#include "ddp/CheckedAccess.h"

#include <algorithm>
#include <cstring>
#include <exception>

PqEntry PqEntry::fromBytes(std::string_view data)
{
    PqEntry entry;
    if (!data.empty())
        std::memcpy(entry.bytes.data(), data.data(), std::min(data.size(), kSize));
    return entry;
}

int PqEntry::trackNumber() const
{
    return checkedStoi(field(4, 2));
}
int PqEntry::indexNumber() const
{
    return checkedStoi(field(6, 2));
}
int PqEntry::minutes() const
{
    return checkedStoi(field(10, 2));
}
int PqEntry::seconds() const
{
    return checkedStoi(field(12, 2));
}
int PqEntry::frames() const
{
    return checkedStoi(field(14, 2));
}

int PqEntry::wholeSeconds() const
{
    return minutes() * 60 + seconds();
}

double PqEntry::bytePosition() const
{
    // The two products are 32-bit integers before the sum is taken as a double.
    const std::int32_t secondsPart = wholeSeconds() * static_cast<std::int32_t>(kBytesPerSecond);
    const std::int32_t framesPart = frames() * static_cast<std::int32_t>(kBytesPerCdFrame);
    return static_cast<double>(secondsPart) + static_cast<double>(framesPart);
}

int durationSeconds(const PqEntry& a, const PqEntry& b)
{
    return b.wholeSeconds() - a.wholeSeconds() - (b.frames() < a.frames() ? 1 : 0);
}

std::size_t leadOutEntryCount(const std::vector<PqEntry>& entries)
{
    const std::size_t n = entries.size();
    if (n >= 2 && entries[n - 1].trackText() == "AA" && entries[n - 2].trackText() != "AA")
        return 1;
    return 2;
}

std::string timeText(int seconds)
{
    // A clock time from 00:00:00 that wraps at 24 hours; hours fold into minutes.
    constexpr int kDay = 24 * 3600;
    int s = seconds % kDay;
    if (s < 0)
        s += kDay;
    const int minutes = s / 60;
    const int rest = s % 60;
    auto twoDigits = [](int v) { return (v < 10 ? "0" : "") + std::to_string(v); };
    return twoDigits(minutes) + ":" + twoDigits(rest);
}

std::uint64_t pqAudioBytes(const std::vector<PqEntry>& entries)
{
    double largest = 0;
    for (const PqEntry& entry : entries) {
        try {
            largest = std::max(largest, entry.bytePosition());
        } catch (const std::exception&) {
            // A time that does not parse says nothing about the image.
        }
    }
    return static_cast<std::uint64_t>(largest);
}
