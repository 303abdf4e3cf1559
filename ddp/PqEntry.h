#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Audio image addressing: 16-bit stereo at 44100 Hz.
inline constexpr std::uint32_t kBytesPerSecond = 176400;
inline constexpr std::uint32_t kBytesPerCdFrame = 2352; // 1/75 s
inline constexpr std::uint32_t kBytesPerFrame = 4;      // one left and one right sample

// One 64-byte PQ descriptor entry, kept verbatim and read by field offset.
// Number fields parse like std::stoi and throw std::invalid_argument
// ("invalid stoi argument") when they hold no number.
struct PqEntry
{
    static constexpr std::size_t kSize = 64;
    std::array<char, kSize> bytes{};

    static PqEntry fromBytes(std::string_view data); // zero-fills a short entry

    std::string_view tag() const { return field(0, 4); }
    std::string_view trackText() const { return field(4, 2); } // shown as it stands
    std::string_view isrc() const { return field(20, 12); }
    std::string_view upcEan() const { return field(32, 13); }
    std::string_view userText() const { return field(45, 19); }

    int trackNumber() const;
    int indexNumber() const;
    int minutes() const;
    int seconds() const;
    int frames() const;

    // minutes × 60 + seconds: the hours field is ignored everywhere, so that
    // positions agree with the times shown.
    int wholeSeconds() const;
    // (minutes × 60 + seconds) × 176400 + frames × 2352, as a double.
    double bytePosition() const;

    std::string_view field(std::size_t offset, std::size_t width) const
    {
        return std::string_view(bytes.data() + offset, width);
    }
};

// Whole seconds from entry a to its successor b; frames drop out, except that
// a second is taken off when b's frames are below a's.
int durationSeconds(const PqEntry& a, const PqEntry& b);

// How many entries close the descriptor after the last track: 1 when the last
// entry is a lead-out ("AA") and the one before it is not, as some authoring
// tools write it; otherwise 2, the usual "AA" 01 and "AA" 00 pair (and the
// rule for descriptors that name no lead-out at all). No row, track or export
// is made of these entries.
std::size_t leadOutEntryCount(const std::vector<PqEntry>& entries);

// The bytes of audio the entries describe: the largest position among them
// (the lead-out's start on a sound disc). Entries whose time does not parse
// are left out.
std::uint64_t pqAudioBytes(const std::vector<PqEntry>& entries);

// "MM:SS" with minutes including hours × 60; the clock wraps at 24 hours.
std::string timeText(int seconds);
