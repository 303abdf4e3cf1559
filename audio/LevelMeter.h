#pragma once

#include "audio/MeterInfo.h"

#include <atomic>

namespace Audio {

// Running RMS (a one-pole average of the squared signal, about 2 s) and peak
// hold per channel, linear with 1.0 at full scale.
//
// Threads: feed, reset and resetPeaks belong to the audio thread (the disk
// streaming forwards the GUI's reset requests to it); read may come from any
// thread. The state the reader needs is published as relaxed atomics, so a
// reading may mix two consecutive frames, which the display tolerates.
class LevelMeter
{
public:
    static constexpr float kDecay = 0.9999886751174927f;      // 0x3F7FFF42
    static constexpr float kWeight = 1.1324882507324219e-05f; // 0x373E0000, 1 - decay
    static constexpr float kRmsScale = 1.4125f;               // lifts a sine's RMS to its peak

    // The values feed works on; copy it to a local for a run of frames so
    // that the compiler keeps it in registers, then store it back.
    struct State
    {
        float meanSquareLeft = 0.0f;
        float meanSquareRight = 0.0f;
        float peakHoldLeft = 0.0f;
        float peakHoldRight = 0.0f;

        // value already carries the volume, and it is multiplied by the
        // volume once more: the meter counts the volume twice, deliberately.
        void feed(float value, int channel, float volume)
        {
            const float x = value * volume;
            if (channel == 0) {
                if (x > peakHoldLeft)
                    peakHoldLeft = x;
                meanSquareLeft = kDecay * meanSquareLeft + kWeight * (x * x);
            } else {
                if (x > peakHoldRight)
                    peakHoldRight = x;
                meanSquareRight = kDecay * meanSquareRight + kWeight * (x * x);
            }
        }
    };

    LevelMeter();

    void feed(float value, int channel, float volume);
    MeterInfo read() const;
    void reset();
    void resetPeaks();

    State state() const { return m_state; }
    void setState(const State& state);

private:
    void publish();

    State m_state; // audio thread only
    // Published copies: written by the audio thread, read by read() anywhere.
    std::atomic<float> m_meanSquareLeft{0.0f};
    std::atomic<float> m_meanSquareRight{0.0f};
    std::atomic<float> m_peakLeft{0.0f};
    std::atomic<float> m_peakRight{0.0f};
};

} // namespace Audio
