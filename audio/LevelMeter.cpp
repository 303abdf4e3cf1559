#include "audio/LevelMeter.h"

#include <cmath>

namespace Audio {

LevelMeter::LevelMeter()
{
    reset();
}

void LevelMeter::feed(float value, int channel, float volume)
{
    m_state.feed(value, channel, volume);
    publish();
}

MeterInfo LevelMeter::read() const
{
    MeterInfo info;
    info.rmsLeft = std::sqrt(m_meanSquareLeft.load(std::memory_order_relaxed)) * kRmsScale;
    info.rmsRight = std::sqrt(m_meanSquareRight.load(std::memory_order_relaxed)) * kRmsScale;
    info.peakLeft = m_peakLeft.load(std::memory_order_relaxed);
    info.peakRight = m_peakRight.load(std::memory_order_relaxed);
    return info;
}

void LevelMeter::reset()
{
    m_state = State{};
    publish();
}

void LevelMeter::resetPeaks()
{
    m_state.peakHoldLeft = 0.0f;
    m_state.peakHoldRight = 0.0f;
    publish();
}

void LevelMeter::setState(const State& state)
{
    m_state = state;
    publish();
}

void LevelMeter::publish()
{
    m_meanSquareLeft.store(m_state.meanSquareLeft, std::memory_order_relaxed);
    m_meanSquareRight.store(m_state.meanSquareRight, std::memory_order_relaxed);
    m_peakLeft.store(m_state.peakHoldLeft, std::memory_order_relaxed);
    m_peakRight.store(m_state.peakHoldRight, std::memory_order_relaxed);
}

} // namespace Audio
