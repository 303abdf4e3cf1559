#pragma once

#include <array>
#include <string_view>

// The first 128 bytes of the DDPID file, kept verbatim. Only the level tag
// "DDP " is checked; the UPC/EAN is shown in the info box when nothing else
// carries one.
struct DdpIdRecord
{
    static constexpr std::size_t kSize = 128;
    std::array<char, kSize> bytes{};

    static DdpIdRecord fromBytes(std::string_view data); // zero-fills a short file

    std::string_view levelTag() const { return field(0, 4); } // "DDP "
    std::string_view upcEan() const { return field(8, 13); }

    std::string_view field(std::size_t offset, std::size_t width) const
    {
        return std::string_view(bytes.data() + offset, width);
    }
};
