#pragma once

#include "audio/MeterInfo.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

class IDescListProvider;

namespace Audio {

// What the window needs of the player beyond the transport buttons and the
// device set-up: loading, track selection, seeking, volume, levels and the
// current track's bounds for the seek slider and the end-of-track check.
class IStreamingSetup
{
public:
    virtual ~IStreamingSetup() = default;
    // Rebuilds the track segments; null detaches the player from any disc.
    virtual void setTrackSource(std::shared_ptr<IDescListProvider> source) = 0;
    // Opens the image and stands stopped at the first track.
    virtual void load(const QString& imagePath, std::function<void()> endOfFile) = 0;
    // trackNumber is a track table row; always ends in playback.
    virtual void selectTrack(std::int32_t trackNumber) = 0;
    // fraction of the current track; 1 while a fade runs (refused), else 0.
    virtual int seek(double fraction) = 0;
    virtual void setVolume(double gain) = 0;
    virtual MeterInfo meterInfo() const = 0;
    virtual void resetPeaks() = 0;
    // Bytes played since the start of the current track.
    virtual float position() const = 0;
    // Byte offsets of the current track in the image; length = end - start.
    virtual std::uint32_t currentTrackStart() const = 0;
    virtual std::uint32_t currentTrackLength() const = 0;
    // The display found position >= length: move on to the next track.
    virtual void onTrackEnded() = 0;
};

} // namespace Audio
