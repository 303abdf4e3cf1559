#include "audio/AudioDeviceInfo.h"

#include <algorithm>

namespace Audio {

bool supportsCdSampleRate(const AudioDeviceInfo& device)
{
    return std::find(device.sampleRates.begin(), device.sampleRates.end(), kCdSampleRate) !=
           device.sampleRates.end();
}

} // namespace Audio
