#include "ddp/CdTextRecord.h"

#include "ddp/CheckedAccess.h"

#include <cstring>

std::string CdTextRecord::text(const Slot& slot)
{
    const void* zero = std::memchr(slot.data(), 0, slot.size());
    const std::size_t length =
        zero ? static_cast<std::size_t>(static_cast<const char*>(zero) - slot.data()) : slot.size();
    return std::string(slot.data(), length);
}

std::string CdTextRecord::text(std::size_t track, SlotIndex slot) const
{
    return text(checkedAt(tracks, track)[slot]);
}

std::string CdTextRecord::leadInWarning() const
{
    if (fitsLeadIn())
        return std::string();
    return "The CD-Text has " + std::to_string(largestBlockPacks) +
           " packs in one language block, more than the " + std::to_string(kLeadInBlockPacks) +
           " a disc's lead-in carries: it will not fit the disc.";
}
