#include "tools/mkddp/KnownSignals.h"

#include <algorithm>
#include <cmath>

namespace mkddp {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kFullScale = 32768.0;

qint16 clamp16(double v)
{
    return qint16(std::lround(std::clamp(v, -32768.0, 32767.0)));
}

double sineAt(double dbfs, double hz, qint64 f)
{
    return kFullScale * std::pow(10.0, dbfs / 20.0) *
           std::sin(2.0 * kPi * hz * double(f) / 44100.0);
}

// Track 5: where the bursts sit. Every second from 1 to 10 a run of three
// +32767 in the left channel; from 11 to 15 a run of two -32768 in the
// right; at 16 a single full-scale sample in each channel (no run); at 17 a
// run of 100 frames at +32767 in both channels (two runs).
qint16 clippedSample(qint64 f, int channel)
{
    const qint64 second = f / 44100;
    const qint64 at = f % 44100;
    if (second >= 1 && second <= 10 && channel == 0 && at < 3)
        return 32767;
    if (second >= 11 && second <= 15 && channel == 1 && at < 2)
        return -32768;
    if (second == 16 && at == 0)
        return channel == 0 ? 32767 : -32768;
    if (second == 17 && at < 100)
        return 32767;
    return clamp16(sineAt(-20.0, 1000.0, f));
}

} // namespace

qint16 KnownSignals::sample(int kind, qint64 f, int channel)
{
    switch (kind) {
    case 0:
        return clamp16(sineAt(-23.0, 1000.0, f));
    case 1:
        return clamp16(sineAt(-33.0, 1000.0, f));
    case 2:
        // sin(pi/2 n + pi/4) is +-0.7071 at every sample; the peak of 1.0
        // lies halfway between two samples. 23170 is 0.7071 of full scale.
        return qint16((f % 4) < 2 ? 23170 : -23170);
    case 4:
        return clippedSample(f, channel);
    default:
        return 0;
    }
}

KnownSignals::KnownSignals(const DiscSpec& spec)
{
    qint64 frame = 0;
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const TrackSpec& track = spec.tracks.at(k);
        if (track.pauseFrames > 0) {
            m_spans.append({frame, qint64(track.pauseFrames) * kSamplesPerCdFrame, -1});
            frame += qint64(track.pauseFrames) * kSamplesPerCdFrame;
        }
        m_spans.append({frame, qint64(track.frames) * kSamplesPerCdFrame, k % 5});
        frame += qint64(track.frames) * kSamplesPerCdFrame;
    }
}

void KnownSignals::fill(qint64 offset, char* out, qint64 length) const
{
    std::fill(out, out + length, '\0');
    for (qint64 pos = offset; pos < offset + length; pos += 4) {
        const qint64 frame = pos / 4;
        auto it = std::upper_bound(m_spans.cbegin(), m_spans.cend(), frame,
                                   [](qint64 f, const Span& s) { return f < s.firstFrame; });
        if (it == m_spans.cbegin())
            continue;
        const Span& span = *(it - 1);
        if (span.kind < 0 || frame >= span.firstFrame + span.frames)
            continue;
        char* p = out + (pos - offset);
        for (int c = 0; c < 2; ++c) {
            const qint16 s = sample(span.kind, frame - span.firstFrame, c);
            p[2 * c] = char(s & 0xFF);
            p[2 * c + 1] = char((s >> 8) & 0xFF);
        }
    }
}

DiscSpec signalsDisc(int seconds)
{
    DiscSpec spec = simpleDisc(5, seconds);
    const char* titles[] = {"Sine 1 kHz -23 dBFS", "Sine 1 kHz -33 dBFS",
                            "Quarter-rate sine 45 degrees", "Silence", "Clipped bursts"};
    for (int k = 0; k < spec.tracks.size(); ++k)
        spec.tracks[k].text.title = QString::fromLatin1(titles[k % 5]);
    spec.album.title = QStringLiteral("Known Signals");
    spec.content = AudioContent::KnownSignals;
    return spec;
}

} // namespace mkddp
