#include "analysis/RangeMeter.h"

#include "analysis/LoudnessRange.h"

#include "ddp/DiscImage.h"

#include <QtEndian>

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

namespace {

// No short-term or range mode: both are formed here from the 100 ms
// windows, and the library's audio history stays at 400 ms.
constexpr int kMode = EBUR128_MODE_I | EBUR128_MODE_SAMPLE_PEAK | EBUR128_MODE_TRUE_PEAK;
constexpr std::size_t kBytesPerFrame = 4;
// 16 steps of 100 ms (282 KB) a read: large enough for the disk, small
// enough that two workers stay in the cache.
constexpr std::size_t kStepsPerRead = 16;

// The weighted mean square a loudness stands for, and back (BS.1770: the
// -0.691 dB offset puts a 1 kHz sine's loudness on its level).
double energyOf(double lufs)
{
    return std::isinf(lufs) ? 0.0 : std::pow(10.0, (lufs + 0.691) / 10.0);
}
double lufsOf(double energy)
{
    return energy <= 0.0 ? LoudnessResult::kMinusInfinity : 10.0 * std::log10(energy) - 0.691;
}
double decibels(double linear)
{
    return linear <= 0.0 ? LoudnessResult::kMinusInfinity : 20.0 * std::log10(linear);
}

} // namespace

struct RangeMeter::State
{
    State() : st(ebur128_init(2, 44100, kMode))
    {
        if (!st)
            throw std::bad_alloc();
    }
    ~State() { ebur128_destroy(&st); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ebur128_state* st;
};

RangeMeter::RangeMeter() : m_state(std::make_unique<State>()) {}

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
    if (m_steps >= 4)
        m_maxMomentary = std::max(m_maxMomentary, momentary / 4.0);
    if (m_steps >= m_stepEnergy.size()) {
        m_maxShortTerm = std::max(m_maxShortTerm, shortTerm / 30.0);
        m_shortTerm.push_back(shortTerm / 30.0);
    }
}

LoudnessResult RangeMeter::result() const
{
    ebur128_state* st = m_state->st;
    LoudnessResult r;
    ebur128_loudness_global(st, &r.integrated);
    r.range = loudnessRange(m_shortTerm);
    r.maxMomentary = lufsOf(m_maxMomentary);
    r.maxShortTerm = lufsOf(m_maxShortTerm);
    double sample = 0.0;
    double truePeak = 0.0;
    for (unsigned c = 0; c < 2; ++c) {
        double value = 0.0;
        if (ebur128_sample_peak(st, c, &value) == EBUR128_SUCCESS)
            sample = std::max(sample, value);
        if (ebur128_true_peak(st, c, &value) == EBUR128_SUCCESS)
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
    // Whole frames only: a range that is not a multiple of 4 bytes ends at
    // its last whole frame.
    const qint64 length =
        std::max<qint64>(0, end - start) / qint64(kBytesPerFrame) * qint64(kBytesPerFrame);
    const std::size_t blockBytes = kStepsPerRead * kStepFrames * kBytesPerFrame;
    std::vector<qint16> buffer(blockBytes / sizeof(qint16));
    qint64 offset = 0;
    while (offset < length) {
        const std::uint64_t want =
            std::uint64_t(std::min<qint64>(qint64(blockBytes), length - offset));
        const std::uint64_t got =
            image.read(std::uint64_t(start + offset), reinterpret_cast<char*>(buffer.data()), want);
        const std::size_t frames = std::size_t(got / kBytesPerFrame);
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
        // The image holds little-endian samples, as the player reads them.
        for (std::size_t i = 0; i < 2 * frames; ++i)
            buffer[i] = qFromLittleEndian(buffer[i]);
#endif
        // Step by step, so that a cancel is seen within a few milliseconds.
        for (std::size_t at = 0; at < frames; at += kStepFrames) {
            if (cancel.load(std::memory_order_relaxed))
                return false;
            add(buffer.data() + 2 * at, std::min(kStepFrames, frames - at));
        }
        if (done)
            done->fetch_add(qint64(got), std::memory_order_relaxed);
        offset += qint64(got);
        if (got < want) {
            setIncomplete();
            break;
        }
    }
    return !cancel.load(std::memory_order_relaxed);
}

void RangeMeter::combine(const std::vector<const RangeMeter*>& meters, double* integrated,
                         double* range)
{
    std::vector<ebur128_state*> states;
    std::vector<double> shortTerm;
    for (const RangeMeter* meter : meters) {
        states.push_back(meter->m_state->st);
        shortTerm.insert(shortTerm.end(), meter->m_shortTerm.begin(), meter->m_shortTerm.end());
    }
    *integrated = LoudnessResult::kMinusInfinity;
    if (!states.empty())
        ebur128_loudness_global_multiple(states.data(), states.size(), integrated);
    *range = loudnessRange(std::move(shortTerm));
}
