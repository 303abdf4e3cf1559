#include "tools/mkddp/TestPattern.h"

#include <algorithm>
#include <cstring>

namespace mkddp {

qint16 patternSample(quint32 frame, int channel, int tone)
{
    if (tone < 0)
        return 0;
    int high = 0;
    if (tone > 0) {
        const quint32 period = quint32(200 - qBound(1, tone, 99));
        const quint32 x = frame % period;
        const int v = int(x * 400 / period);
        high = 2 * x < period ? v - 100 : 300 - v;
    }
    const int low = channel == 0 ? int(frame & 0xFF) : int((frame >> 8) & 0xFF);
    return qint16(high * 256 + low);
}

quint16 patternCounter(qint16 left, qint16 right)
{
    return quint16((quint16(right) & 0xFF) << 8 | (quint16(left) & 0xFF));
}

TestPattern::TestPattern(const DiscSpec& spec)
{
    quint32 frame = 0;
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const TrackSpec& track = spec.tracks.at(k);
        if (track.pauseFrames > 0) {
            m_spans.append({frame, spec.silentPauses ? -1 : 0});
            frame += quint32(track.pauseFrames * kSamplesPerCdFrame);
        }
        m_spans.append({frame, spec.firstTrackNumber + k});
        frame += quint32(track.frames * kSamplesPerCdFrame);
    }
    m_imageSize = qint64(frame) * 4;
}

int TestPattern::toneAt(quint32 frame) const
{
    auto it = std::upper_bound(m_spans.cbegin(), m_spans.cend(), frame,
                               [](quint32 f, const Span& s) { return f < s.firstFrame; });
    return it == m_spans.cbegin() ? 0 : (it - 1)->tone;
}

void TestPattern::fill(qint64 offset, char* out, qint64 length) const
{
    qint64 pos = offset;
    const qint64 end = offset + length;
    quint32 frame = quint32(pos / 4);
    // Walk the spans alongside the frames instead of searching for each.
    int span = 0;
    while (span + 1 < m_spans.size() && m_spans.at(span + 1).firstFrame <= frame)
        ++span;
    while (pos < end) {
        frame = quint32(pos / 4);
        while (span + 1 < m_spans.size() && m_spans.at(span + 1).firstFrame <= frame)
            ++span;
        const int tone = m_spans.isEmpty() ? 0 : m_spans.at(span).tone;
        const qint16 left = patternSample(frame, 0, tone);
        const qint16 right = patternSample(frame, 1, tone);
        const char bytes[4] = {char(left & 0xFF), char((left >> 8) & 0xFF), char(right & 0xFF),
                               char((right >> 8) & 0xFF)};
        const int from = int(pos % 4);
        const int count = int(std::min<qint64>(4 - from, end - pos));
        std::memcpy(out + (pos - offset), bytes + from, size_t(count));
        pos += count;
    }
}

QByteArray TestPattern::bytes(qint64 offset, qint64 length) const
{
    const qint64 from = qBound<qint64>(0, offset, m_imageSize);
    const qint64 to = qBound<qint64>(from, offset + length, m_imageSize);
    QByteArray out(int(to - from), '\0');
    fill(from, out.data(), to - from);
    return out;
}

} // namespace mkddp
