#pragma once

#include "audio/SpscRing.h"

#include <atomic>
#include <cstdint>
#include <functional>

namespace Audio {

// What a fade action does once the fade-out has reached silence.
struct FadeAction
{
    enum Kind : std::uint32_t
    {
        Pause,    // state = paused
        StopNow,  // stopNow(), then done when set
        Jump,     // adopt the preload, read on behind it, then done when set
        SeekJump, // the same inside the current track, samplePosition = target / 2
        Play,     // state = playing: a play that came while actions were queued
    };
    Kind kind = Pause;
    int preloadSlot = -1;     // Jump, SeekJump
    std::uint32_t target = 0; // SeekJump: bytes from currentSampleInFile
    bool fadeInAfter = false; // fade in once the actions up to this one ran
    // Built and destroyed on the GUI thread (the ring reuses the record);
    // only invoked on the audio thread.
    std::function<void()> done;
};

enum FadeState : std::uint32_t
{
    FadingOut = 0,
    RunningActions = 1,
    StartingFadeIn = 2,
    FadingIn = 3,
    Idle = 4,
};

struct FadeControl
{
    static constexpr std::size_t kQueueCapacity = 8;

    // Filled by the GUI thread, emptied by the audio thread at the silent point.
    SpscRing<FadeAction, kQueueCapacity> actions;
    // The fade gain. Audio thread only (play asks for a restart from
    // silence through fadeState instead of writing it).
    double gain = 1.0;
    // The newest request's fade-in flag, for a fade-out whose action an
    // earlier silent point already took. Written by the GUI thread before it
    // stores fadeState (release); read by the audio thread after it loaded
    // fadeState (acquire).
    std::atomic<bool> fadeInAfter{false};
    // Written by the GUI thread (requestFade: 0, play: 2) and by the audio
    // thread, which moves on only with a compare-and-swap from the state it
    // stepped, so a request made meanwhile is never overwritten.
    std::atomic<std::uint32_t> fadeState{Idle};
};

} // namespace Audio
