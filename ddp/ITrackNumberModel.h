#pragma once

#include <cstdint>
#include <functional>

namespace Audio {

// Lets the transport tell the views which row plays and hear when playback
// starts or stops.
class ITrackNumberModel
{
public:
    virtual ~ITrackNumberModel() = default;
    virtual void setCurrentRow(std::int32_t row) = 0;
    // The listener is called with the playing flag each time it is set; a
    // previous listener is replaced.
    virtual void setPlayingListener(std::function<void(bool)> listener) = 0;
};

} // namespace Audio
