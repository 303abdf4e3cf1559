#pragma once

#include "audio/AudioDeviceInfo.h"

namespace Audio {

// The device list, as the devices menu and the rescan dialog ask for it.
class IAudioDeviceInfos
{
public:
    virtual ~IAudioDeviceInfos() = default;
    virtual AudioDeviceInfo currentDeviceInfo() const = 0;
    virtual unsigned deviceCount() = 0;
    virtual AudioDeviceInfo deviceInfo(unsigned index) = 0;
};

} // namespace Audio
