#pragma once

#include <cstdint>

namespace Audio {

// The transport as the buttons and the Space key drive it.
class IAudioPlayerTransport
{
public:
    virtual ~IAudioPlayerTransport() = default;
    virtual void play() = 0;
    virtual void stop() = 0;
    virtual void pause() = 0;
    virtual void selectNextTrack() = 0;
    virtual void selectPreviousTrack() = 0;
    virtual bool isPlaying() const = 0;
    virtual bool isStopped() const = 0;
    virtual bool isPaused() const = 0;
    virtual std::int32_t currentTrackNumber() const = 0;
};

} // namespace Audio
