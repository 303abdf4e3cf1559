#pragma once

#include "audio/StreamingConstants.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

namespace Audio {

// One refill chunk of converted samples on its way from the reader thread to
// the audio thread. Its state word packs who owns it with the tag of the
// chunk it holds, so that taking a chunk and checking that it is the one
// wanted is a single compare-and-swap:
//   bits 16..31 epoch (changes with every jump that discards read-ahead),
//   bits  2..15 index of the chunk within its epoch (mod 16384),
//   bits  0..1  Empty, Filling (reader owns it), Ready, Playing (audio owns it).
struct ChunkSlot
{
    enum State : std::uint32_t
    {
        Empty = 0,
        Filling = 1,
        Ready = 2,
        Playing = 3,
    };

    static std::uint32_t word(std::uint32_t epoch, std::uint32_t index, State state)
    {
        return ((epoch & 0xFFFFu) << 16) | ((index & 0x3FFFu) << 2) | state;
    }
    static State stateOf(std::uint32_t word) { return static_cast<State>(word & 3u); }
    static std::uint32_t epochOf(std::uint32_t word) { return word >> 16; }

    // Written by the reader (Empty or stale Ready -> Filling -> Ready) and by
    // the audio thread (Ready -> Playing -> Empty); read by both.
    std::atomic<std::uint32_t> state{Empty};
    // Written by the reader while Filling, read by the audio thread while
    // Playing; the state word's release/acquire orders them.
    std::uint32_t size = 0;
    std::unique_ptr<float[]> samples{new float[kRefillChunkSamples]};
};

// The chunks between the reader and the audio thread. The audio thread plays
// one chunk while the reader fills the others, as in classic double
// buffering; four slots instead of two let a device that asks for up to
// 4096 frames at once find the next chunks ready, and give the reader about
// 140 ms of slack instead of 46. All storage is allocated here, up front.
struct DoubleBuffer
{
    static constexpr int kSlotCount = 4;
    std::array<ChunkSlot, kSlotCount> chunkSlots;
};

// Where the reader is to read next, as one word so that the GUI and the
// audio thread can both post it without a lock:
//   bits 48..63 sequence (changes with every request),
//   bits 32..47 epoch (changes when read-ahead is to be discarded),
//   bits  0..31 byte offset.
struct ReadRequest
{
    std::uint32_t offset = 0;
    std::uint32_t epoch = 0;    // 16 bits used
    std::uint32_t sequence = 0; // 16 bits used

    static ReadRequest unpack(std::uint64_t word)
    {
        return ReadRequest{static_cast<std::uint32_t>(word),
                           static_cast<std::uint32_t>(word >> 32) & 0xFFFFu,
                           static_cast<std::uint32_t>(word >> 48) & 0xFFFFu};
    }
    std::uint64_t pack() const
    {
        return (static_cast<std::uint64_t>(sequence & 0xFFFFu) << 48) |
               (static_cast<std::uint64_t>(epoch & 0xFFFFu) << 32) | offset;
    }
};

} // namespace Audio
