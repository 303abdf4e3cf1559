#pragma once

#include <ebur128.h>

#include <new>

// One libebur128 state for 44.1 kHz stereo in the given mode, destroyed with
// its owner.
struct Ebur128State
{
    explicit Ebur128State(int mode) : st(ebur128_init(2, 44100, unsigned(mode)))
    {
        if (!st)
            throw std::bad_alloc();
    }
    ~Ebur128State() { ebur128_destroy(&st); }
    Ebur128State(const Ebur128State&) = delete;
    Ebur128State& operator=(const Ebur128State&) = delete;

    ebur128_state* st;
};
