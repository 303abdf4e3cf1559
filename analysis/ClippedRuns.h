#pragma once

#include <QtGlobal>

#include <cstddef>

// Counts runs of two or more consecutive full-scale samples (+32767 or
// -32768) in each channel of interleaved 16-bit stereo. A single full-scale
// sample is a loud peak, not clipping; two in a row is where a converter
// or a limiter ran out of room. The state carries over from one block to
// the next, so a run split by a read boundary counts once.
class ClippedRuns
{
public:
    void add(const qint16* interleaved, std::size_t frames)
    {
        // Most blocks hold no full-scale sample at all: a branch-free scan,
        // which the compiler vectorises, settles them at a fraction of the
        // cost of the run-counting loop.
        bool fullScale = false;
        for (std::size_t i = 0; i < 2 * frames; ++i)
            fullScale |= (interleaved[i] == 32767) | (interleaved[i] == -32768);
        if (!fullScale) {
            if (frames > 0)
                m_run[0] = m_run[1] = 0;
            return;
        }
        for (std::size_t i = 0; i < frames; ++i) {
            for (int c = 0; c < 2; ++c) {
                const qint16 s = interleaved[2 * i + std::size_t(c)];
                if (s == 32767 || s == -32768) {
                    // Counted when the run reaches two samples.
                    if (++m_run[c] == 2)
                        ++m_count;
                } else {
                    m_run[c] = 0;
                }
            }
        }
    }
    qint64 count() const { return m_count; }

private:
    qint64 m_count = 0;
    int m_run[2] = {0, 0};
};
