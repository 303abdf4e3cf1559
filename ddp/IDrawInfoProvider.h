#pragma once

#include <cstdint>
#include <vector>

// What the track table's delegate needs to draw a row.
class IDrawInfoProvider
{
public:
    virtual ~IDrawInfoProvider() = default;
    // The index number of each table row, in row order.
    virtual const std::vector<std::uint32_t>& indexList() const = 0;
    // The row of the track being played; -1 for none.
    virtual std::int32_t currentRow() const = 0;
};
