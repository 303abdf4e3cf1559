#pragma once

#include "ddp/PqEntry.h"

#include <cstdint>
#include <vector>

// The track list as the player sees it.
class IDescListProvider
{
public:
    virtual ~IDescListProvider() = default;
    virtual const std::vector<PqEntry>& entries() const = 0;
    // True when the first table row is a pause (index 0). The index list must
    // not be empty.
    virtual bool isFirstRowPause() const = 0;
    // The first-track number, the entry list's offset of the first table row,
    // read from the index list: 1 when the first row is a pause, else 2 (an
    // empty list too). The rows skip the lead-in entry, and the pause before
    // track 1 when it is hidden.
    virtual std::uint32_t firstTrackNumber() const = 0;
    // The playing flag; calls the listener (see ITrackNumberModel) when set.
    virtual void setPlaying(bool playing) = 0;
};
