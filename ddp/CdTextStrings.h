#pragma once

#include "ddp/CdTextRecord.h"

#include <QString>

// A CD-Text string as shown: double-byte text is already UTF-8 in the record,
// single-byte text is ISO 8859-1 as the CD-Text standard has it.
QString cdTextString(const CdTextRecord& record, const CdTextRecord::Slot& slot);
// Throws std::out_of_range("invalid vector subscript") for a track beyond the
// last record.
QString cdTextString(const CdTextRecord& record, std::size_t track, CdTextRecord::SlotIndex slot);
