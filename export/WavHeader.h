#pragma once

#include <QByteArray>

#include <cstdint>

// The 44-byte RIFF/WAVE header in front of exported audio: PCM, 2 channels,
// 44100 Hz, 16 bits. The fields are constants because a DDP image is always
// CD audio; nothing is read from the image to fill them.
inline constexpr int kWavHeaderSize = 44;

QByteArray wavHeader(std::uint32_t dataLength);
