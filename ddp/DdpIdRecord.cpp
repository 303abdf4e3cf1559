#include "ddp/DdpIdRecord.h"

#include <algorithm>
#include <cstring>

namespace {

struct FieldPlace
{
    std::size_t offset = 0;
    std::size_t width = 0; // 0: the level has no such field
};

struct Layout
{
    FieldPlace upcEan;
    FieldPlace mediaType;
};

constexpr Layout kLayout101{{8, 13}, {0, 0}};
constexpr Layout kLayout200{{8, 13}, {87, 2}};

const Layout& layoutOf(DdpIdRecord::Level level)
{
    return level == DdpIdRecord::Level::Ddp101 ? kLayout101 : kLayout200;
}

} // namespace

DdpIdRecord DdpIdRecord::fromBytes(std::string_view data)
{
    DdpIdRecord record;
    if (!data.empty())
        std::memcpy(record.bytes.data(), data.data(), std::min(data.size(), kSize));
    return record;
}

DdpIdRecord::Level DdpIdRecord::level() const
{
    return field(0, 6) == "DDP 1." ? Level::Ddp101 : Level::Ddp200;
}

std::string_view DdpIdRecord::upcEan() const
{
    const FieldPlace place = layoutOf(level()).upcEan;
    return field(place.offset, place.width);
}

std::string_view DdpIdRecord::mediaType() const
{
    const FieldPlace place = layoutOf(level()).mediaType;
    return field(place.offset, place.width);
}
