#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Audio {

// The engine's own copy of what RtAudio reports about one device.
struct AudioDeviceInfo
{
    std::string name; // RtAudio's name, unchanged; stored as "audioDeviceId"
    bool hasOutput = false;
    std::uint32_t preferredSampleRate = 0;
    std::vector<std::uint32_t> sampleRates;
    std::uint32_t outputChannels = 0;
    bool probed = false;
};

inline constexpr std::uint32_t kCdSampleRate = 44100;

// Whether 44100 Hz is among the device's supported rates (an empty list says no).
bool supportsCdSampleRate(const AudioDeviceInfo& device);

} // namespace Audio
