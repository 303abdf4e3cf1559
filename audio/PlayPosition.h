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

// Samples played since currentSampleInFile (2 per frame), shared by the GUI
// and the audio thread, which counts once per callback. A new value (a
// seek, a jump, a stop) bumps the word's generation: the count of a callback
// during which that happened is dropped, the new value wins. A shift (a
// track boundary passing by) keeps the generation, so that callback's count
// still adds on top of it and no played sample goes uncounted.
class SamplePosition
{
public:
    using Snapshot = std::uint64_t;
    static std::uint32_t valueOf(Snapshot word) { return static_cast<std::uint32_t>(word); }

    std::uint32_t load() const { return valueOf(m_word.load(std::memory_order_acquire)); }
    Snapshot snapshot() const { return m_word.load(std::memory_order_acquire); }

    void store(std::uint32_t samples)
    {
        Snapshot word = m_word.load(std::memory_order_relaxed);
        while (!m_word.compare_exchange_weak(word, ((word >> 32) + 1) << 32 | samples,
                                             std::memory_order_acq_rel)) {
        }
    }

    // Audio thread: adds what was played since `since` was taken, unless a
    // new value has been stored in between. Returns the word as left, the
    // snapshot to count on from.
    Snapshot addSince(Snapshot since, std::uint32_t played)
    {
        if (played == valueOf(since))
            return since;
        const std::uint32_t advance = played - valueOf(since);
        Snapshot word = m_word.load(std::memory_order_acquire);
        while ((word >> 32) == (since >> 32)) {
            const Snapshot added = (word & ~0xFFFFFFFFull) | (valueOf(word) + advance);
            if (m_word.compare_exchange_weak(word, added, std::memory_order_acq_rel))
                return added;
        }
        return word;
    }

    // Moves the origin forward by `samples`; false (and nothing changed)
    // when fewer have been played.
    bool shift(std::uint32_t samples)
    {
        Snapshot word = m_word.load(std::memory_order_acquire);
        do {
            if (valueOf(word) < samples)
                return false;
        } while (!m_word.compare_exchange_weak(word, word - samples, std::memory_order_acq_rel));
        return true;
    }

private:
    static_assert(std::atomic<Snapshot>::is_always_lock_free, "the audio thread cannot lock");
    std::atomic<Snapshot> m_word{0};
};

// Transport state and counters. Sample counts: 2 per frame.
struct PlayPosition
{
    // Written by the GUI thread (play, stop while not playing) and by the
    // audio thread (the pause and stop fade actions); read by both.
    std::atomic<TransportState> state{TransportState::Stopped};
    // Next sample of the chunk being played. Audio thread only.
    std::uint32_t readIndex = 0;
    // Written by the GUI thread (jumps while not playing, seek, the track
    // boundary) and by the audio thread (once per callback); read by both.
    SamplePosition samplePosition;
};

} // namespace Audio
