#pragma once

#include "audio/IAudioDeviceInfos.h"
#include "ddp/ErrorKind.h"

#include <string>

namespace Audio {

// Opening and re-opening the output device. Failures never throw: the call
// answers false and lastError() tells the kind (1 sample rate, 2 channels,
// 3 anything else, with RtAudio's message).
class IDeviceSetup
{
public:
    virtual ~IDeviceSetup() = default;
    virtual bool initialize(const std::string& deviceName) = 0;
    virtual bool rescan(const std::string& deviceName) = 0;
    virtual void closeStream() = 0;
    virtual IAudioDeviceInfos& audioDeviceInfos() = 0;
    virtual LoadResult lastError() const = 0;
};

} // namespace Audio
