#pragma once

#include "audio/AudioDeviceInfo.h"
#include "audio/IAudioDeviceInfos.h"

#include <rtaudio/RtAudio.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Audio {

// Frames per device buffer, shared by every open. RtAudio may change it when
// it opens a stream; the next open then asks for the changed value. Written
// and read on the GUI thread only (openStream takes it by reference).
extern unsigned int bufferFrames;

// The one place that talks to RtAudio: resolves a device by name, opens one
// output stream (2 channels, float32, 44100 Hz) and hands every buffer to the
// process function on RtAudio's audio thread.
class StreamingEngine : public IAudioDeviceInfos
{
public:
    // Result of initialize and rescan. kind: 0 success, 1 the device does not
    // run 44100 Hz, 2 fewer than 2 output channels, 3 anything else.
    struct Error
    {
        std::uint32_t kind = 0;
        std::string message;
    };
    static Error success() { return Error{}; }

    // Called on the audio thread with the interleaved output and the frame
    // count; returns RtAudio's callback status (always 0 here).
    using ProcessFunction = std::function<int(float*, unsigned int)>;

    StreamingEngine();
    ~StreamingEngine() override;
    StreamingEngine(const StreamingEngine&) = delete;
    StreamingEngine& operator=(const StreamingEngine&) = delete;

    // IAudioDeviceInfos. RtAudio's own faults while probing are swallowed:
    // a device that cannot be asked reads as an empty record.
    AudioDeviceInfo currentDeviceInfo() const override { return m_currentDevice; }
    unsigned deviceCount() override;
    AudioDeviceInfo deviceInfo(unsigned index) override;

    // These let RtAudioError through; DiskStreaming turns it into an Error
    // with classifyOpenFailure, so nothing above it ever sees an exception.
    Error initialize(const std::string& deviceName, ProcessFunction processFunction);
    Error rescan(const std::string& deviceName);
    // Steps 1 to 3 of rescan: abort (device gone) or stop, then close.
    void closeStream();

    bool isStreamOpen() { return m_audio.isStreamOpen(); }
    bool isStreamRunning() { return m_audio.isStreamRunning(); }

    // The device id for a name: the first device with that exact name and
    // at least one output channel, else the default output device.
    unsigned int resolveDevice(const std::string& deviceName);

private:
    static int audioCallback(void* outputBuffer, void* inputBuffer, unsigned int frameCount,
                             double streamTime, RtAudioStreamStatus status, void* userData);
    static void errorCallback(RtAudioError::Type type, const std::string& errorText);

    bool isListed(const std::string& name);
    void stopOrAbortAndClose();
    Error openAndStart(const std::string& deviceName);

    RtAudio m_audio;
    AudioDeviceInfo m_currentDevice; // GUI thread only
    // The process function the callback calls. Written by the GUI thread
    // (initialize) while a callback may be running, read by the audio thread:
    // the old function is kept alive in m_retiredProcess until the stream
    // that could still call it has been stopped or closed.
    std::atomic<ProcessFunction*> m_process{nullptr};
    std::unique_ptr<ProcessFunction> m_ownedProcess;   // GUI thread only
    std::unique_ptr<ProcessFunction> m_retiredProcess; // GUI thread only
};

// Kind 1 when the device lacks 44100 Hz, 2 when it has fewer than 2 output
// channels, 3 otherwise; the message is RtAudio's. No device at all (the
// empty record RtAudio leaves when nothing can play) is kind 3 whose message
// starts with kNoOutputDeviceMessage.
inline constexpr const char* kNoOutputDeviceMessage = "No audio output device was found.";
StreamingEngine::Error classifyOpenFailure(const AudioDeviceInfo& device,
                                           const std::string& message);

} // namespace Audio
