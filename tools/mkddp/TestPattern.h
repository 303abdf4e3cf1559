#pragma once

#include "tools/mkddp/DiscSpec.h"

#include <QByteArray>
#include <QVector>

namespace mkddp {

// The test pattern makes every byte of an image predictable, so audio and
// export tests can check any byte range and find a dropped or doubled frame.
//
// For sample frame f of the image (4 bytes each, frame 0 at byte 0) and a
// tone t (the track number whose part of the image holds f; 0 in index 00
// pauses, which thereby sound silent; -1 in pauses made silent, whose
// samples are all zero):
//   high byte (bits 15..8) of both channels: a triangle wave of period
//     200 - t sample frames (about 220 Hz to 440 Hz), running from -100 to
//     +100 and phase-locked to f itself; 0 when t == 0;
//   low byte (bits 7..0): left = f & 0xFF, right = (f >> 8) & 0xFF.
// So f mod 65536 (about 1.5 s) can be read back from any single frame, and a
// recording made at unity gain can be aligned to the image byte-exactly.
// Samples are little-endian 16-bit, left first.
qint16 patternSample(quint32 frame, int channel, int tone);
// The frame counter that a (left, right) pair carries: f mod 65536.
quint16 patternCounter(qint16 left, qint16 right);

// The pattern laid over one disc's layout.
class TestPattern
{
public:
    explicit TestPattern(const DiscSpec& spec);

    qint64 imageSize() const { return m_imageSize; }
    // The tone (track number, 0 in pauses, -1 in silent pauses) at a sample frame.
    int toneAt(quint32 frame) const;
    qint16 sample(quint32 frame, int channel) const
    {
        return patternSample(frame, channel, toneAt(frame));
    }
    // The expected image bytes of [offset, offset + length), clipped to the image.
    QByteArray bytes(qint64 offset, qint64 length) const;
    // Same, into a buffer of `length` bytes (no clipping).
    void fill(qint64 offset, char* out, qint64 length) const;

private:
    struct Span
    {
        quint32 firstFrame;
        int tone;
    };
    QVector<Span> m_spans; // ascending; each runs to the next
    qint64 m_imageSize = 0;
};

} // namespace mkddp
