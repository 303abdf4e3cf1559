#pragma once

#include "ddp/PqEntry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Frame-exact positions of the PQ entries, for everything that reports or
// burns a disc: a CD frame is 1/75 s (2352 image bytes), and a time is written
// MM:SS:FF, never rounded to the second.
inline constexpr int kCdFramesPerSecond = 75;

// The entry's position in CD frames: (minutes × 60 + seconds) × 75 + frames,
// the hours field ignored as everywhere. Throws as the entry's fields do when
// one holds no number.
std::int64_t cdFrameOf(const PqEntry& entry);

// "MM:SS:FF": two digits each, minutes growing past 99 when they must (a
// position is never folded into hours or wrapped). A negative count reads
// as 00:00:00.
std::string frameTimeText(std::int64_t cdFrames);

// The start of entry `entry` and its length up to the next entry, both in CD
// frames: what a table row's start and duration are to the frame. Nothing
// for the last entry or when either time holds no number.
struct EntryFrameTimes
{
    std::int64_t start = 0;
    std::int64_t duration = 0;
};
std::optional<EntryFrameTimes> entryFrameTimes(const std::vector<PqEntry>& entries,
                                               std::size_t entry);

// The Q channel's control flags of an entry: its first control byte, two hex
// digits, holds the CONTROL nibble over the ADR nibble ("01" is plain audio,
// "11" pre-emphasis). Unreadable digits read as no flag.
struct PqControlFlags
{
    bool preEmphasis = false;   // 0x10
    bool copyPermitted = false; // 0x20
    bool data = false;          // 0x40
    bool fourChannel = false;   // 0x80
};
PqControlFlags pqControlFlags(const PqEntry& entry);

// Whether `isrc` is one: twelve characters, two letters (the country), three
// letters or digits (the owner), two digits (the year) and five (the
// designation), letters in upper case.
bool isIsrc(std::string_view isrc);
// The ISRC of an entry when it is one; blank, zero-filled or malformed
// fields give an empty string.
std::string validIsrc(const PqEntry& entry);
