#include "audio/StreamingConstants.h"

namespace Audio {

std::uint32_t convertSamples(const char* bytes, std::uint32_t byteCount, float* out)
{
    const std::uint32_t samples = byteCount / 2;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes);
    for (std::uint32_t i = 0; i < samples; ++i) {
        const auto value = static_cast<std::int16_t>(
            static_cast<std::uint16_t>(p[2 * i] | (static_cast<unsigned>(p[2 * i + 1]) << 8)));
        out[i] = static_cast<float>(value) * kSampleConversion;
    }
    return samples;
}

} // namespace Audio
