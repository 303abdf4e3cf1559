#include "ddp/DdpIdRecord.h"

#include <algorithm>
#include <cstring>

DdpIdRecord DdpIdRecord::fromBytes(std::string_view data)
{
    DdpIdRecord record;
    if (!data.empty())
        std::memcpy(record.bytes.data(), data.data(), std::min(data.size(), kSize));
    return record;
}
