#include "tools/mkddp/DemoMusic.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace mkddp {

namespace {

constexpr double kRate = 44100.0;
constexpr double kTwoPi = 6.283185307179586;

struct Piece
{
    double chordSeconds;
    int chords[4][4]; // MIDI notes, root first
};

// I-V-vi-IV in C, vi-IV-I-V in A minor, I-vi-IV-V in D, I-vi-IV-V in F.
constexpr Piece kPieces[] = {
    {2.4, {{60, 64, 67, 72}, {55, 62, 67, 71}, {57, 64, 69, 72}, {53, 60, 65, 69}}},
    {2.0, {{57, 60, 64, 69}, {53, 57, 60, 65}, {48, 60, 64, 67}, {55, 59, 62, 67}}},
    {3.0, {{62, 66, 69, 74}, {59, 62, 66, 71}, {55, 62, 67, 71}, {57, 61, 64, 69}}},
    {2.2, {{53, 60, 65, 69}, {50, 62, 65, 69}, {58, 62, 65, 70}, {48, 60, 64, 67}}},
};

// A sine table is plenty for music and keeps the build-time synthesis fast.
class SineTable
{
public:
    SineTable()
    {
        for (size_t i = 0; i < m_table.size(); ++i)
            m_table[i] = std::sin(kTwoPi * double(i) / double(kSize));
    }
    // sin(2 pi cycles)
    double operator()(double cycles) const
    {
        const double x = (cycles - std::floor(cycles)) * kSize;
        const size_t i = size_t(x);
        const double f = x - double(i);
        return m_table[i] + (m_table[i + 1] - m_table[i]) * f;
    }

private:
    static constexpr size_t kSize = 4096;
    std::array<double, kSize + 1> m_table{};
};

const SineTable& sine()
{
    static const SineTable table;
    return table;
}

double noteHz(int midi)
{
    static const auto table = [] {
        std::array<double, 128> hz{};
        for (int m = 0; m < 128; ++m)
            hz[size_t(m)] = 440.0 * std::pow(2.0, (m - 69) / 12.0);
        return hz;
    }();
    return table[size_t(midi & 127)];
}

double padVoice(double hz, double t)
{
    const SineTable& s = sine();
    return s(hz * t) + 0.25 * s(2 * hz * t) + 0.08 * s(3 * hz * t);
}

// One stereo sample of a piece at t seconds after its start; `length` seconds long.
void pieceSample(const Piece& piece, double t, double length, double out[2])
{
    const SineTable& s = sine();
    const int chordCount = 4;
    const long bar = long(std::floor(t / piece.chordSeconds));
    const double tc = t - double(bar) * piece.chordSeconds;
    const int* chord = piece.chords[bar % chordCount];
    const int* previous = piece.chords[(bar + chordCount - 1) % chordCount];

    double left = 0;
    double right = 0;

    // Pad: the chords cross-fade over half a second; the right channel is
    // detuned a little for width.
    const double in = std::min(1.0, tc / 0.5);
    for (int n = 0; n < 4; ++n) {
        const double hz = noteHz(chord[n]);
        left += 0.10 * in * padVoice(hz, t);
        right += 0.10 * in * padVoice(hz * 1.003, t);
        if (in < 1.0 && bar > 0) {
            const double phz = noteHz(previous[n]);
            left += 0.10 * (1 - in) * padVoice(phz, t);
            right += 0.10 * (1 - in) * padVoice(phz * 1.003, t);
        }
    }

    // Arpeggio: eight plucks a chord, an octave up, alternating sides.
    const double step = piece.chordSeconds / 8;
    const long k = long(std::floor(t / step));
    for (long j = k; j >= std::max(0L, k - 3); --j) {
        const double age = t - double(j) * step;
        const int* c = piece.chords[(j / 8) % chordCount];
        const double hz = noteHz(c[j % 4] + 12);
        const double env = std::exp(-age * 5.0) * std::min(1.0, age * 300.0);
        const double v = env * (s(hz * t) + 0.4 * std::exp(-age * 12.0) * s(2 * hz * t));
        const double pan = (j % 2) ? 0.35 : 0.65;
        left += 0.22 * v * pan;
        right += 0.22 * v * (1 - pan);
    }

    // Bass: the chord's root two octaves down, struck at each change.
    const double bhz = noteHz(chord[0] - 24);
    const double benv = std::exp(-tc * 1.2) * std::min(1.0, tc * 100.0);
    double bass = 0.30 * benv * (s(bhz * t) + 0.3 * s(2 * bhz * t));
    if (bar > 0 && tc < 0.03) {
        // The previous root rings on for a moment instead of stopping dead.
        const double phz = noteHz(previous[0] - 24);
        const double penv = std::exp(-(tc + piece.chordSeconds) * 1.2) * (1 - tc / 0.03);
        bass += 0.30 * penv * (s(phz * t) + 0.3 * s(2 * phz * t));
    }
    left += bass;
    right += bass;

    // A short fade in and a long fade out at the track's end.
    const double fade = std::min({1.0, t / 0.05, std::max(0.0, (length - t) / 2.5)});
    out[0] = 0.6 * fade * left;
    out[1] = 0.6 * fade * right;
}

qint16 toSample(double v)
{
    return qint16(std::lround(std::clamp(v, -1.0, 1.0) * 32767.0));
}

} // namespace

DemoMusic::DemoMusic(const DiscSpec& spec)
{
    qint64 frame = 0;
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const TrackSpec& track = spec.tracks.at(k);
        if (track.pauseFrames > 0) {
            m_spans.append({frame, qint64(track.pauseFrames) * kSamplesPerCdFrame, -1});
            frame += m_spans.last().frames;
        }
        m_spans.append(
            {frame, qint64(track.frames) * kSamplesPerCdFrame, k % int(std::size(kPieces))});
        frame += m_spans.last().frames;
    }
}

void DemoMusic::fill(qint64 offset, char* out, qint64 length) const
{
    const qint64 first = offset / 4;
    const qint64 count = length / 4;
    int span = 0;
    for (qint64 i = 0; i < count; ++i) {
        const qint64 frame = first + i;
        while (span + 1 < m_spans.size() && m_spans.at(span + 1).firstFrame <= frame)
            ++span;
        double v[2] = {0, 0};
        if (span < m_spans.size() && m_spans.at(span).piece >= 0) {
            const Span& s = m_spans.at(span);
            pieceSample(kPieces[s.piece], double(frame - s.firstFrame) / kRate,
                        double(s.frames) / kRate, v);
        }
        char* p = out + 4 * i;
        const qint16 l = toSample(v[0]);
        const qint16 r = toSample(v[1]);
        p[0] = char(l & 0xFF);
        p[1] = char((l >> 8) & 0xFF);
        p[2] = char(r & 0xFF);
        p[3] = char((r >> 8) & 0xFF);
    }
}

} // namespace mkddp
