#pragma once

#include "ddp/CdTextRecord.h"

#include <QString>

class DDPModel;

// A track's CD-Text in one slot (track 0 is the album), decoded as the table
// decodes it and trimmed; empty without CD-Text or for a track past it.
QString trackText(const DDPModel& model, int track, CdTextRecord::SlotIndex slot);

// The album's CD-Text in one slot: trackText() of track 0.
QString albumText(const DDPModel& model, CdTextRecord::SlotIndex slot);

// A code that is all zeros: masters write it for "no code".
bool isZeroCode(const QString& code);

enum class ZeroCodes
{
    Shown,   // the window and the reports show the code as the disc holds it
    Skipped, // tags and cue sheets carry no barcode of zeros
};

// The disc's UPC/EAN: CD-Text's, else the first the PQ descriptor holds, else
// the identifier's; empty when none holds one. With ZeroCodes::Skipped a code
// of all zeros counts as none and the search goes on.
QString discUpcEan(const DDPModel& model, ZeroCodes zeros = ZeroCodes::Shown);
