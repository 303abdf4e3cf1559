#pragma once

#include "analysis/LoudnessResult.h"

#include <cmath>

// Loudness as the weighted mean square it stands for, and back. BS.1770's
// -0.691 dB offset puts a 1 kHz sine's loudness on its level; silence is
// minus infinity.
inline double energyOf(double lufs)
{
    return std::isinf(lufs) ? 0.0 : std::pow(10.0, (lufs + 0.691) / 10.0);
}

inline double lufsOf(double energy)
{
    return energy <= 0.0 ? LoudnessResult::kMinusInfinity : 10.0 * std::log10(energy) - 0.691;
}

// A linear peak (1.0 is full scale) in dB.
inline double decibels(double linear)
{
    return linear <= 0.0 ? LoudnessResult::kMinusInfinity : 20.0 * std::log10(linear);
}
