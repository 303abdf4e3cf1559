#pragma once

#include "analysis/LoudnessAnalysis.h"
#include "ddp/PqEntry.h"
#include "ddp/TrackRange.h"

#include <QString>

#include <optional>
#include <vector>

class DDPModel;

// The parts of a programme from its tracks' ranges (in disc order) and the
// lead-out: each track, and each stretch between one track's end and the
// next one's start or the lead-out. Empty and overlapping stretches are left
// out.
std::vector<AnalysisPart> programmeParts(const std::vector<TrackRange>& tracks, qint64 leadOut);
// The same with the lead-out where the disc's PQ entries put it (0 for a
// descriptor too short to have one).
std::vector<AnalysisPart> programmeParts(const std::vector<TrackRange>& tracks,
                                         const std::vector<PqEntry>& entries);

// What the loudness analysis measures of a disc: the tracks the WAV export
// writes, each with the bytes it writes, and the pauses between them and
// after the last one up to the lead-out.
struct DiscProgramme
{
    std::vector<std::size_t> trackEntries; // each track's index 01 entry, in disc order
    std::vector<AnalysisPart> parts;
};

// The window, `analyze` and `pqsheet` all measure this. Nothing, with the
// reason in `error` (when given), if the PQ descriptor gives a track no
// readable end: the descriptor is damaged, and measuring around the track
// would hand its audio to the disc's pauses and its figures to no row.
std::optional<DiscProgramme> discProgramme(const DDPModel& model, QString* error);
