#include "ddp/MapPacket.h"

#include <algorithm>
#include <cstring>

MapPacket MapPacket::fromBytes(std::string_view data)
{
    MapPacket packet;
    if (!data.empty())
        std::memcpy(packet.bytes.data(), data.data(), std::min(data.size(), kSize));
    return packet;
}

std::string MapPacket::trimmedIdentifier() const
{
    const std::string_view text = dataStreamIdentifier();
    std::size_t end = text.size();
    auto white = [](char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
    };
    while (end > 0 && white(text[end - 1]))
        --end;
    return std::string(text.substr(0, end));
}
