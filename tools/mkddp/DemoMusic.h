#pragma once

#include "tools/mkddp/DiscSpec.h"

#include <QVector>

namespace mkddp {

// The demo disc's music: per track a four-chord progression played by a soft
// pad, a plucked arpeggio and a bass, with a fade at the end. Every sample is
// a pure function of its position, so the image can be written in any chunks.
class DemoMusic
{
public:
    explicit DemoMusic(const DiscSpec& spec);

    // Image bytes of [offset, offset + length); offset and length multiples of 4.
    void fill(qint64 offset, char* out, qint64 length) const;

private:
    struct Span
    {
        qint64 firstFrame;
        qint64 frames;
        int piece; // -1 for a pause
    };
    QVector<Span> m_spans;
};

} // namespace mkddp
