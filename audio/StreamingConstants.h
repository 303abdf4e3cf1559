#pragma once

#include <cstdint>

namespace Audio {

inline constexpr std::uint32_t kRefillChunkBytes = 8192;   // 4096 samples, 2048 frames
inline constexpr std::uint32_t kPreloadChunkBytes = 16384; // 8192 samples, 4096 frames
inline constexpr std::uint32_t kRefillChunkSamples = kRefillChunkBytes / 2;
inline constexpr std::uint32_t kPreloadChunkSamples = kPreloadChunkBytes / 2;
inline constexpr std::uint32_t kOffsetAlignment = 4; // one stereo frame
// The 32-bit float nearest to 1/32767.
inline constexpr float kSampleConversion = 3.051851e-5f;
inline constexpr double kFadeStep = 1.0 / 440.0;
inline constexpr float kVolumeGlide = 0.001f;

// Rounds a byte offset down to a frame boundary.
inline std::uint32_t alignedOffset(std::uint32_t offset)
{
    return offset - offset % kOffsetAlignment;
}

// Converts little-endian 16-bit samples to floats; returns the sample count
// (bytes / 2, so a trailing odd byte is dropped).
std::uint32_t convertSamples(const char* bytes, std::uint32_t byteCount, float* out);

} // namespace Audio
