#pragma once

#include "tools/mkddp/DiscSpec.h"

#include <QVector>

namespace mkddp {

// Tracks of known signals for loudness meters, as EBU Tech 3341 builds its
// test cases, in this order (further tracks repeat them):
//   1. a 1 kHz sine at -23 dBFS in both channels: -23.0 LUFS;
//   2. the same at -33 dBFS: -33.0 LUFS;
//   3. a sine at a quarter of the sample rate, 45 degrees out of phase with
//      the samples, whose peak of full scale falls between them: every
//      sample is at -3.01 dBFS, the true peak at 0.0 dBTP;
//   4. digital silence: no loudness at all;
//   5. a 1 kHz sine at -20 dBFS with full-scale bursts: kClippedRuns runs of
//      two or more full-scale samples, and single full-scale samples that
//      are no run.
// Pauses are silent.
class KnownSignals
{
public:
    static constexpr int kClippedRuns = 17;

    explicit KnownSignals(const DiscSpec& spec);
    // Image bytes of [offset, offset + length); offset and length multiples of 4.
    void fill(qint64 offset, char* out, qint64 length) const;
    // One sample of track slot `kind` (0..4 as above) at sample frame `f` of
    // the track, channel 0 or 1.
    static qint16 sample(int kind, qint64 f, int channel);

private:
    struct Span
    {
        qint64 firstFrame;
        qint64 frames;
        int kind; // -1 for a pause
    };
    QVector<Span> m_spans;
};

// Five tracks of `seconds` each (20 by default: long enough for gating and
// for the loudness range), 2 s of silence before the first.
DiscSpec signalsDisc(int seconds = 20);

} // namespace mkddp
