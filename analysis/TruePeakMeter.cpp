#include "analysis/TruePeakMeter.h"

#include "analysis/Ebur128State.h"
#include "analysis/RangeBlocks.h"
#include "analysis/RangeMeter.h"

#include <algorithm>

namespace {

constexpr qint64 kBytesPerFrame = 4;

} // namespace

TruePeakMeter::TruePeakMeter() : m_state(std::make_unique<Ebur128State>(EBUR128_MODE_TRUE_PEAK))
{
    // The peaks are read before the K-weighting filter, which the library
    // skips for unused channels: a fifth of its work, for nothing here.
    for (unsigned c = 0; c < 2; ++c)
        ebur128_set_channel(m_state->st, c, EBUR128_UNUSED);
}

TruePeakMeter::~TruePeakMeter() = default;

bool TruePeakMeter::measure(const DiscImage& image, qint64 rangeStart, qint64 start, qint64 end,
                            const std::atomic<bool>& cancel, std::atomic<qint64>* done)
{
    ebur128_state* st = m_state->st;
    // The history, whose peaks are never read: the library's per-call peak
    // starts afresh with every call.
    const qint64 historyStart = std::max(rangeStart, start - kHistoryFrames * kBytesPerFrame);
    if (historyStart < start &&
        RangeBlocks::read(image, historyStart, start, RangeMeter::kStepFrames, cancel, nullptr,
                          [st](const qint16* audio, std::size_t frames) {
                              ebur128_add_frames_short(st, audio, frames);
                          }) == RangeBlocks::End::Cancelled)
        return false;
    return RangeBlocks::read(image, start, end, RangeMeter::kStepFrames, cancel, done,
                             [this, st](const qint16* audio, std::size_t frames) {
                                 ebur128_add_frames_short(st, audio, frames);
                                 for (unsigned c = 0; c < 2; ++c) {
                                     double value = 0.0;
                                     if (ebur128_prev_true_peak(st, c, &value) == EBUR128_SUCCESS)
                                         m_peak = std::max(m_peak, value);
                                 }
                             }) != RangeBlocks::End::Cancelled;
}
