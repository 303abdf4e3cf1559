#include "export/WavHeader.h"

namespace {

void appendLe(QByteArray& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.append(static_cast<char>((value >> (8 * i)) & 0xFF));
}

} // namespace

QByteArray wavHeader(std::uint32_t dataLength)
{
    QByteArray header;
    header.reserve(kWavHeaderSize);
    header.append("RIFF", 4);
    appendLe(header, dataLength + 36, 4);
    header.append("WAVE", 4);
    header.append("fmt ", 4);
    appendLe(header, 16, 4);     // format chunk length
    appendLe(header, 1, 2);      // integer PCM
    appendLe(header, 2, 2);      // channels
    appendLe(header, 44100, 4);  // frames per second
    appendLe(header, 176400, 4); // bytes per second
    appendLe(header, 4, 2);      // bytes per frame
    appendLe(header, 16, 2);     // bits per sample
    header.append("data", 4);
    appendLe(header, dataLength, 4);
    return header;
}
