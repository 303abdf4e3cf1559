#pragma once

#include <atomic>
#include <cstdint>

namespace Audio {

enum class TransportState : std::uint32_t
{
    Playing = 0,
    Stopped = 1,
    Paused = 2,
};

// Transport state and counters. Sample counts: 2 per frame.
struct PlayPosition
{
    // Written by the GUI thread (play, stop while not playing) and by the
    // audio thread (the pause and stop fade actions); read by both.
    std::atomic<TransportState> state{TransportState::Stopped};
    // Next sample of the chunk being played. Audio thread only.
    std::uint32_t readIndex = 0;
    // Samples played since currentSampleInFile. Written by the GUI thread
    // (jumps while not playing, seek) and by the audio thread (once per
    // callback, with a compare-and-swap so that a GUI write made during the
    // callback wins); read by both.
    std::atomic<std::uint32_t> samplePosition{0};
};

} // namespace Audio
