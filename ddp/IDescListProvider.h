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
    // The first-track number: 1 when the first row is a pause, else 2; the
    // player reads it as the offset of the first track in the entry list.
    virtual void setFirstTrackNumber(std::uint32_t number) = 0;
    virtual std::uint32_t firstTrackNumber() const = 0;
    // The playing flag; calls the listener (see ITrackNumberModel) when set.
    virtual void setPlaying(bool playing) = 0;
};
