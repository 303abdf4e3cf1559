#pragma once

#include <array>
#include <string>
#include <string_view>

// One 128-byte record of the DDPMS map stream, kept verbatim. Text fields are
// blank-padded ASCII without terminator.
struct MapPacket
{
    static constexpr std::size_t kSize = 128;
    std::array<char, kSize> bytes{};

    static MapPacket fromBytes(std::string_view data); // zero-fills a short packet

    std::string_view tag() const { return field(0, 4); }            // "VVVM"
    std::string_view dataStreamType() const { return field(4, 2); } // "D0": audio
    std::string_view startSector() const
    {
        return field(22, 8);
    } // digits: the stream's first sector
    std::string_view subcodeDescriptor() const { return field(30, 8); } // "PQ DESCR", "CDTEXT  "
    std::string_view cdMode() const { return field(38, 2); }            // "DA": audio
    std::string_view dataStreamIdentifier() const { return field(74, 17); } // the file name
    // The file name as the image and PQ lookups take it: the identifier
    // without trailing white space (blank, tab, LF, VT, FF, CR).
    std::string trimmedIdentifier() const;

    std::string_view field(std::size_t offset, std::size_t width) const
    {
        return std::string_view(bytes.data() + offset, width);
    }
};
