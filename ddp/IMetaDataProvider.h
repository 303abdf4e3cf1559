#pragma once

#include "ddp/CdTextRecord.h"
#include "ddp/PqEntry.h"

#include <vector>

// What the info box and the export read of a disc.
class IMetaDataProvider
{
public:
    virtual ~IMetaDataProvider() = default;
    virtual const std::vector<PqEntry>& entries() const = 0;
    virtual const CdTextRecord& cdText() const = 0;
    virtual bool isFirstRowPause() const = 0;
};
