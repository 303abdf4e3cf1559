#pragma once

#include <array>
#include <string_view>

// The first 128 bytes of the DDPID file, kept verbatim. Only the level tag
// "DDP " is checked; the UPC/EAN is shown in the info box when nothing else
// carries one.
//
// The level at offset 0 ("DDP 1.01", "DDP 2.00") decides where the fields
// lie. Both levels put the UPC/EAN (offset 8, 13 characters), the map stream
// start (21, 8) and the master identifier (38, 48) in the same place; 2.00
// added the media type (87, 2), the side and layer fields (89 to 92) and the
// direction (93), where a 1.01 identifier has reserved space and free text
// that must not be read as those. A level this program does not know is read
// as 2.00, the later layout.
struct DdpIdRecord
{
    static constexpr std::size_t kSize = 128;
    std::array<char, kSize> bytes{};

    enum class Level
    {
        Ddp101, // "DDP 1." followed by anything
        Ddp200, // everything else
    };

    static DdpIdRecord fromBytes(std::string_view data); // zero-fills a short file

    std::string_view levelTag() const { return field(0, 4); }  // "DDP "
    std::string_view levelText() const { return field(0, 8); } // "DDP 2.00"
    Level level() const;

    std::string_view upcEan() const;
    // "DA" for an audio CD; empty for a 1.01 identifier, which has no such field.
    std::string_view mediaType() const;

    std::string_view field(std::size_t offset, std::size_t width) const
    {
        return std::string_view(bytes.data() + offset, width);
    }
};
