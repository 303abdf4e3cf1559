#pragma once

#include "analysis/LoudnessResult.h"

#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class DiscImage;
class RangeMeter;

// One range of the programme: a track (from its index 01 to the next track's
// start, as the WAV export writes it) or the pause between two tracks, which
// belongs to the disc's figures but to no track's.
struct AnalysisPart
{
    qint64 start = 0; // bytes in the disc image
    qint64 end = 0;
    bool isTrack = true;
    qint64 length() const { return end - start; }
};

struct AnalysisOptions
{
    int threads = 0;         // 0: one per core
    bool background = false; // workers at low priority, for the window
    // Called on the calling thread about every 100 ms with the bytes measured
    // so far and in all.
    std::function<void(qint64 done, qint64 total)> progress;
};

// The disc's figures from the results and kept states of its parts, in the
// order of `parts`: the tracks' results as they are; the disc's integrated
// loudness and loudness range from every part's gating blocks together; its
// peaks and maxima the highest of any part; its clipped runs the sum.
DiscLoudness combineParts(const std::vector<AnalysisPart>& parts,
                          const std::vector<std::unique_ptr<RangeMeter>>& meters);

// Measures every part, in parallel on one worker thread per core, each
// reading its range of `image` in large sequential blocks, as planWork
// shares them out so that the cores finish together. Returns when all are
// done, or soon after `cancel` is set (then with an empty result and
// `cancelled` true).
DiscLoudness analyzeLoudness(const DiscImage& image, const std::vector<AnalysisPart>& parts,
                             const std::atomic<bool>& cancel, const AnalysisOptions& options = {},
                             bool* cancelled = nullptr);
