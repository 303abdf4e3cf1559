#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// The decoded CD-Text of the first language block. Strings are kept in
// 160-byte zero-padded slots (longer strings are cut, never overrun);
// double-byte text is already converted to UTF-8.
struct CdTextRecord
{
    static constexpr std::size_t kSlotSize = 160;
    using Slot = std::array<char, kSlotSize>;

    enum SlotIndex : std::size_t
    {
        Title = 0,      // pack 0x80
        Performer = 1,  // 0x81
        Songwriter = 2, // 0x82
        Composer = 3,   // 0x83
        Arranger = 4,   // 0x84
        Message = 5,    // 0x85
        Code = 6,       // 0x8E: UPC/EAN for the album record, ISRC for a track
        SlotCount = 7,
    };
    using TrackTexts = std::array<Slot, SlotCount>;

    Slot album{};                   // disc identification, pack 0x86
    std::string genre;              // pack 0x87
    std::vector<TrackTexts> tracks; // [0] is the album, then track 1..last
    bool doubleByte = false;
    std::array<std::uint8_t, 36> sizeInfo{};
    // The packs of the largest language block in the file. A disc's lead-in
    // carries a block's packs under one-byte sequence numbers: 256 at most.
    // Some authoring tools write more, letting the numbers wrap; such text
    // is still read whole, but it would not fit on a pressed disc.
    std::size_t largestBlockPacks = 0;
    static constexpr std::size_t kLeadInBlockPacks = 256;
    bool fitsLeadIn() const { return largestBlockPacks <= kLeadInBlockPacks; }
    // What the engineer is told when it does not fit; empty when it does.
    std::string leadInWarning() const;

    // The slot's text up to its first zero byte.
    static std::string text(const Slot& slot);
    std::string text(std::size_t track, SlotIndex slot) const; // throws "invalid vector subscript"
    bool empty() const { return tracks.empty(); }
};
