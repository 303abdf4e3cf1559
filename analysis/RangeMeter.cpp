#include "analysis/RangeMeter.h"

#include "analysis/Ebur128State.h"
#include "analysis/IntegratedLoudness.h"
#include "analysis/LoudnessRange.h"
#include "analysis/LoudnessUnits.h"
#include "analysis/RangeBlocks.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Momentary windows only: the gating blocks, the short-term windows and the
// range are all formed here from the library's 100 ms windows. Its own
// gating would sum every sample four times more, a tenth of its work.
constexpr int kLoudnessMode = EBUR128_MODE_M | EBUR128_MODE_SAMPLE_PEAK;

} // namespace

RangeMeter::RangeMeter(TruePeak truePeak)
    : m_state(std::make_unique<Ebur128State>(
          truePeak == TruePeak::Measured ? kLoudnessMode | EBUR128_MODE_TRUE_PEAK : kLoudnessMode)),
      m_measuresTruePeak(truePeak == TruePeak::Measured)
{}

RangeMeter::~RangeMeter() = default;

void RangeMeter::add(const qint16* interleaved, std::size_t frames)
{
    m_clipped.add(interleaved, frames);
    m_frames += qint64(frames);
    while (frames > 0) {
        const std::size_t take = std::min(frames, kStepFrames - m_framesInStep);
        addStep(interleaved, take);
        interleaved += 2 * take;
        frames -= take;
    }
}

void RangeMeter::addStep(const qint16* interleaved, std::size_t frames)
{
    ebur128_add_frames_short(m_state->st, interleaved, frames);
    m_framesInStep += frames;
    if (m_framesInStep == kStepFrames)
        closeStep();
}

void RangeMeter::closeStep()
{
    m_framesInStep = 0;
    // The library's own 100 ms window over the K-weighted signal; momentary
    // and short-term loudness are the means of the last 4 and 30 of them.
    // Only whole windows count, as in the gating blocks: a track's first
    // 300 ms have no momentary loudness, its first 2.9 s no short-term.
    double lufs = LoudnessResult::kMinusInfinity;
    ebur128_loudness_window(m_state->st, 100, &lufs);
    m_stepEnergy[m_steps % m_stepEnergy.size()] = energyOf(lufs);
    ++m_steps;
    double shortTerm = 0.0;
    double momentary = 0.0;
    for (std::size_t back = 0; back < m_stepEnergy.size() && back < m_steps; ++back) {
        const double e = m_stepEnergy[(m_steps - 1 - back) % m_stepEnergy.size()];
        shortTerm += e;
        if (back < 4)
            momentary += e;
    }
    if (m_steps >= 4) {
        // A momentary window is also a gating block.
        m_blocks.push_back(momentary / 4.0);
        m_maxMomentary = std::max(m_maxMomentary, momentary / 4.0);
    }
    if (m_steps >= m_stepEnergy.size()) {
        m_maxShortTerm = std::max(m_maxShortTerm, shortTerm / 30.0);
        m_shortTerm.push_back(shortTerm / 30.0);
    }
}

LoudnessResult RangeMeter::result() const
{
    ebur128_state* st = m_state->st;
    LoudnessResult r;
    r.integrated = integratedLoudness(m_blocks);
    r.range = loudnessRange(m_shortTerm);
    r.maxMomentary = lufsOf(m_maxMomentary);
    r.maxShortTerm = lufsOf(m_maxShortTerm);
    double sample = 0.0;
    double truePeak = m_measuresTruePeak ? 0.0 : m_handedInTruePeak;
    for (unsigned c = 0; c < 2; ++c) {
        double value = 0.0;
        if (ebur128_sample_peak(st, c, &value) == EBUR128_SUCCESS)
            sample = std::max(sample, value);
        if (m_measuresTruePeak && ebur128_true_peak(st, c, &value) == EBUR128_SUCCESS)
            truePeak = std::max(truePeak, value);
    }
    r.samplePeak = decibels(sample);
    r.truePeak = decibels(truePeak);
    r.clippedRuns = m_clipped.count();
    r.frames = m_frames;
    r.complete = m_complete;
    return r;
}

bool RangeMeter::measure(const DiscImage& image, qint64 start, qint64 end,
                         const std::atomic<bool>& cancel, std::atomic<qint64>* done)
{
    // Step by step, so that a cancel is seen within a few milliseconds.
    const RangeBlocks::End ended =
        RangeBlocks::read(image, start, end, kStepFrames, cancel, done,
                          [this](const qint16* audio, std::size_t frames) { add(audio, frames); });
    if (ended == RangeBlocks::End::CutShort)
        setIncomplete();
    return ended != RangeBlocks::End::Cancelled;
}

void RangeMeter::combine(const std::vector<const RangeMeter*>& meters, double* integrated,
                         double* range)
{
    std::vector<double> blocks;
    std::vector<double> shortTerm;
    for (const RangeMeter* meter : meters) {
        blocks.insert(blocks.end(), meter->m_blocks.begin(), meter->m_blocks.end());
        shortTerm.insert(shortTerm.end(), meter->m_shortTerm.begin(), meter->m_shortTerm.end());
    }
    *integrated = integratedLoudness(blocks);
    *range = loudnessRange(std::move(shortTerm));
}
