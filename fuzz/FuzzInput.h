#pragma once

// One fuzz input holds the four files the loader reads: a 16-byte header of
// three little-endian 32-bit lengths (DDPID, DDPMS, PQ descriptor) and a
// spare word, then the bytes of each, then the CD-Text as the rest. Lengths
// beyond the input are cut to what is there, so every input splits.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct FuzzFiles
{
    std::string ddpid;
    std::string ddpms;
    std::string pq;
    std::string cdText;
};

inline FuzzFiles splitFuzzInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kHeader = 16;
    FuzzFiles files;
    std::string_view in(reinterpret_cast<const char*>(data), size);
    if (in.size() < kHeader)
        return files;
    auto length = [&](std::size_t i) {
        const auto* p = reinterpret_cast<const unsigned char*>(in.data()) + 4 * i;
        return static_cast<std::size_t>(p[0] | (p[1] << 8) | (p[2] << 16) |
                                        (static_cast<std::uint32_t>(p[3]) << 24));
    };
    const std::size_t lengths[3] = {length(0), length(1), length(2)};
    std::string_view rest = in.substr(kHeader);
    std::string* parts[3] = {&files.ddpid, &files.ddpms, &files.pq};
    for (int i = 0; i < 3; ++i) {
        const std::size_t n = lengths[i] < rest.size() ? lengths[i] : rest.size();
        parts[i]->assign(rest.substr(0, n));
        rest.remove_prefix(n);
    }
    files.cdText.assign(rest);
    return files;
}

// `spare` is the header's fourth word (the folder target reads it).
inline std::string joinFuzzInput(const FuzzFiles& files, std::uint32_t spare = 0)
{
    std::string out;
    for (std::uint32_t n : {static_cast<std::uint32_t>(files.ddpid.size()),
                            static_cast<std::uint32_t>(files.ddpms.size()),
                            static_cast<std::uint32_t>(files.pq.size()), spare}) {
        for (int b = 0; b < 4; ++b)
            out += static_cast<char>((n >> (8 * b)) & 0xFF);
    }
    out += files.ddpid + files.ddpms + files.pq + files.cdText;
    return out;
}
