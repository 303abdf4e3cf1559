#pragma once

#include <QtGlobal>

#include <atomic>
#include <memory>

class DiscImage;
struct Ebur128State;

// The true peak of one stretch of a range, so that a long range's true peak
// can be shared among the cores. The library's interpolator looks back a
// few dozen samples: it is first fed up to kHistoryFrames before the
// stretch (never before the range's start, where a measurement of the whole
// range starts from silence too), and only what comes out after that
// counts. The highest value over a range's stretches is then exactly that of
// one pass over the whole range.
class TruePeakMeter
{
public:
    static constexpr qint64 kHistoryFrames = 256;

    TruePeakMeter();
    ~TruePeakMeter();
    TruePeakMeter(const TruePeakMeter&) = delete;
    TruePeakMeter& operator=(const TruePeakMeter&) = delete;

    // Measures [start, end) of the range that starts at `rangeStart` (bytes
    // in the image). False when cancelled.
    bool measure(const DiscImage& image, qint64 rangeStart, qint64 start, qint64 end,
                 const std::atomic<bool>& cancel, std::atomic<qint64>* done = nullptr);
    // The highest true peak of both channels (linear, 1.0 is full scale).
    double peak() const { return m_peak; }

private:
    std::unique_ptr<Ebur128State> m_state;
    double m_peak = 0.0;
};
