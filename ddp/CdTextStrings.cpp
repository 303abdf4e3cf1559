#include "ddp/CdTextStrings.h"

#include "ddp/CheckedAccess.h"

#include <cstring>

QString cdTextString(const CdTextRecord& record, const CdTextRecord::Slot& slot)
{
    const void* zero = std::memchr(slot.data(), 0, slot.size());
    const int length = zero ? static_cast<int>(static_cast<const char*>(zero) - slot.data())
                            : static_cast<int>(slot.size());
    return record.doubleByte ? QString::fromUtf8(slot.data(), length)
                             : QString::fromLatin1(slot.data(), length);
}

QString cdTextString(const CdTextRecord& record, std::size_t track, CdTextRecord::SlotIndex slot)
{
    return cdTextString(record, checkedAt(record.tracks, track)[slot]);
}
