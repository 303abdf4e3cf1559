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
