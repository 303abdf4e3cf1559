#pragma once

#include <QtGlobal>

#include <limits>
#include <vector>

// What one range of the disc measures, in the units engineers read them in.
// A level of silence is minus infinity.
struct LoudnessResult
{
    static constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();

    double integrated = kMinusInfinity;   // LUFS, gated
    double range = 0.0;                   // LU (loudness range)
    double maxMomentary = kMinusInfinity; // LUFS, 400 ms windows every 100 ms
    double maxShortTerm = kMinusInfinity; // LUFS, 3 s windows every 100 ms
    double samplePeak = kMinusInfinity;   // dBFS
    double truePeak = kMinusInfinity;     // dBTP, 4x oversampled
    qint64 clippedRuns = 0;               // runs of two or more full-scale samples, per channel
    qint64 frames = 0;                    // stereo sample frames measured
    bool complete = true;                 // false when the image ended before the range did
};

// Every track, in disc order, and the programme from track 1's start to the
// lead-out.
struct DiscLoudness
{
    std::vector<LoudnessResult> tracks;
    LoudnessResult disc;
};
