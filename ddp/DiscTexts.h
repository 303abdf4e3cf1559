#pragma once

#include "ddp/CdTextRecord.h"

#include <QString>

class DDPModel;

// The album's CD-Text in one slot, decoded as the table decodes it and
// trimmed; empty without CD-Text.
QString albumText(const DDPModel& model, CdTextRecord::SlotIndex slot);

// The disc's UPC/EAN as the window and the reports show it: CD-Text's, else
// the first the PQ descriptor holds, else the identifier's; empty when none
// holds one.
QString discUpcEan(const DDPModel& model);
