#pragma once

// A raw audio image with a known pattern, and a way to drive the disk
// streaming's process function the way a device would, one call at a time.

#include "audio/DiskStreaming.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace audiotest {

// Every frame different, both channels different: a dropped, doubled or
// swapped sample shows.
std::int16_t sampleAt(std::uint32_t frame, int channel);
// What the output must be at full volume with no fade.
float expectedAt(std::uint32_t frame, int channel);

// Writes `frames` frames of the pattern as "IMAGE.DAT" into folder.
QString writeImage(const QString& folder, std::uint32_t frames);

// Calls process with `perCall` frames until `totalFrames` are produced,
// waiting for the reader thread before every call, so that the result does
// not depend on scheduling.
std::vector<float> drive(Audio::DiskStreaming& streaming, unsigned perCall, unsigned totalFrames);

// The last `count` frames of `out` must be the image's samples ending at
// the frame last played (currentSampleInFile + position), at `volume`.
// Returns an empty string on success, else the first difference.
QString checkTail(const std::vector<float>& out, const Audio::DiskStreaming& streaming,
                  unsigned count, float volume = 1.0f);

// `out` must start playback at image frame `first`: the 440-frame fade-in
// from its very first frame, then every sample exact. On a failure the text
// says where frame `first` + 1000 was heard instead, if at all.
QString checkStartsAt(const std::vector<float>& out, std::uint32_t first);

} // namespace audiotest
