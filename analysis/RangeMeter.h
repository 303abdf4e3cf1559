#pragma once

#include "analysis/ClippedRuns.h"
#include "analysis/LoudnessResult.h"

#include <QtGlobal>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

class DiscImage;
struct Ebur128State;

// The measurement of one range of the disc (a track, or a pause between two)
// with one libebur128 state: sample and true peak from the library; from the
// library's 100 ms windows of the K-weighted signal, the gating blocks and
// the integrated loudness, momentary and short-term loudness every 100 ms,
// their maxima and the loudness range; clipped runs counted alongside.
//
// The library forms its own loudness range from short-term blocks one
// second apart. That is allowed, but on a track of twenty seconds its 10th
// and 95th percentiles rest on a handful of blocks and stray by half a LU
// from meters that take a block every 100 ms, as most do; so the range is
// formed here from the 100 ms blocks.
//
// The gating blocks and short-term windows are kept after the range is
// measured, so that the disc's integrated loudness and loudness range come
// from all ranges' blocks combined, without a second pass over the audio.
//
// Without its own true peak, the meter leaves that to TruePeakMeters over
// stretches of the range (three quarters of the library's work is the true
// peak's interpolation, and only that part can be shared among the cores);
// their highest value is handed in with setTruePeak().
class RangeMeter
{
public:
    // 100 ms at 44100 Hz: the step of the momentary and short-term windows.
    static constexpr std::size_t kStepFrames = 4410;

    enum class TruePeak
    {
        Measured, // measured here, alongside the loudness
        HandedIn, // measured elsewhere, see setTruePeak()
    };
    explicit RangeMeter(TruePeak truePeak = TruePeak::Measured);
    ~RangeMeter();
    RangeMeter(const RangeMeter&) = delete;
    RangeMeter& operator=(const RangeMeter&) = delete;

    // Interleaved 16-bit stereo in host byte order. Windows are measured
    // every kStepFrames from the range's start, so blocks of any size give
    // the same result.
    void add(const qint16* interleaved, std::size_t frames);
    // Marks the range as cut short by the image.
    void setIncomplete() { m_complete = false; }
    // The true peak of a HandedIn meter (linear, 1.0 is full scale).
    void setTruePeak(double linear) { m_handedInTruePeak = linear; }

    LoudnessResult result() const;
    // The integrated loudness and loudness range of several ranges' gating
    // blocks together, as if they were one programme.
    static void combine(const std::vector<const RangeMeter*>& meters, double* integrated,
                        double* range);

    // Reads [start, end) of `image` in large sequential blocks and measures
    // it. Checks `cancel` between 100 ms steps; false when cancelled. Adds
    // the bytes read to `done` as it goes.
    bool measure(const DiscImage& image, qint64 start, qint64 end, const std::atomic<bool>& cancel,
                 std::atomic<qint64>* done = nullptr);

private:
    void addStep(const qint16* interleaved, std::size_t frames);
    void closeStep();

    std::unique_ptr<Ebur128State> m_state;
    ClippedRuns m_clipped;
    // The energy of the last 30 complete 100 ms steps, for the windows.
    std::array<double, 30> m_stepEnergy{};
    std::size_t m_steps = 0;
    // Every gating block (400 ms), for the integrated loudness, and every
    // short-term window (3 s), for the loudness range.
    std::vector<double> m_blocks;
    std::vector<double> m_shortTerm;
    std::size_t m_framesInStep = 0; // of the step being filled
    double m_maxMomentary = 0.0;    // energies; loudness when read out
    double m_maxShortTerm = 0.0;
    qint64 m_frames = 0;
    bool m_complete = true;
    bool m_measuresTruePeak = true;
    double m_handedInTruePeak = 0.0;
};
