#include "audio/StreamingEngine.h"

#include <cstdio>
#include <cstring>

namespace Audio {

unsigned int bufferFrames = 256;

namespace {

AudioDeviceInfo toDeviceInfo(const RtAudio::DeviceInfo& info)
{
    AudioDeviceInfo device;
    device.name = info.name;
    device.hasOutput = info.outputChannels > 0;
    device.preferredSampleRate = info.preferredSampleRate;
    device.sampleRates.assign(info.sampleRates.begin(), info.sampleRates.end());
    device.outputChannels = info.outputChannels;
    device.probed = info.probed;
    return device;
}

} // namespace

StreamingEngine::StreamingEngine() : m_audio(RtAudio::UNSPECIFIED) {}

StreamingEngine::~StreamingEngine()
{
    // Stop the callback before the process function goes away.
    try {
        if (m_audio.isStreamOpen()) {
            if (m_audio.isStreamRunning())
                m_audio.abortStream();
            m_audio.closeStream();
        }
    } catch (const RtAudioError&) {
    }
}

unsigned StreamingEngine::deviceCount()
{
    try {
        return m_audio.getDeviceCount();
    } catch (const RtAudioError&) {
        return 0;
    }
}

AudioDeviceInfo StreamingEngine::deviceInfo(unsigned index)
{
    try {
        return toDeviceInfo(m_audio.getDeviceInfo(index));
    } catch (const RtAudioError&) {
        return AudioDeviceInfo{};
    }
}

unsigned int StreamingEngine::resolveDevice(const std::string& deviceName)
{
    if (!deviceName.empty()) {
        const unsigned count = deviceCount();
        for (unsigned i = 0; i < count; ++i) {
            const AudioDeviceInfo device = deviceInfo(i);
            if (device.name.size() == deviceName.size() &&
                std::memcmp(device.name.data(), deviceName.data(), deviceName.size()) == 0 &&
                device.outputChannels > 0)
                return i;
        }
    }
    return m_audio.getDefaultOutputDevice();
}

bool StreamingEngine::isListed(const std::string& name)
{
    const unsigned count = deviceCount();
    for (unsigned i = 0; i < count; ++i) {
        if (deviceInfo(i).name == name)
            return true;
    }
    return false;
}

StreamingEngine::Error StreamingEngine::openAndStart(const std::string& deviceName)
{
    RtAudio::StreamParameters output;
    output.deviceId = resolveDevice(deviceName);
    output.nChannels = 2;
    output.firstChannel = 0;
    m_currentDevice = deviceInfo(output.deviceId);
    m_audio.openStream(&output, nullptr, RTAUDIO_FLOAT32, kCdSampleRate, &bufferFrames,
                       &StreamingEngine::audioCallback, this, nullptr,
                       &StreamingEngine::errorCallback);
    // No callback of an older stream can run any more.
    m_retiredProcess.reset();
    if (!m_audio.isStreamRunning())
        m_audio.startStream();
    // Once a stream is open RtAudio reports its failures to the error
    // callback instead of throwing, so a start that failed shows only here.
    if (!m_audio.isStreamRunning())
        return Error{3, "The audio stream could not be started."};
    return success();
}

StreamingEngine::Error StreamingEngine::initialize(const std::string& deviceName,
                                                   ProcessFunction processFunction)
{
    // Swap first: a callback in progress keeps the old function, which stays
    // alive until the stream is stopped below.
    auto replacement = std::make_unique<ProcessFunction>(std::move(processFunction));
    m_process.store(replacement.get(), std::memory_order_release);
    if (m_ownedProcess)
        m_retiredProcess = std::move(m_ownedProcess);
    m_ownedProcess = std::move(replacement);

    if (m_audio.isStreamOpen()) {
        if (m_audio.isStreamRunning())
            m_audio.stopStream();
        m_audio.closeStream();
    }
    m_retiredProcess.reset();
    return openAndStart(deviceName);
}

void StreamingEngine::stopOrAbortAndClose()
{
    // A device that has gone cannot drain: abort it instead of stopping.
    if (!isListed(m_currentDevice.name)) {
        if (m_audio.isStreamOpen() && m_audio.isStreamRunning())
            m_audio.abortStream();
    } else if (m_audio.isStreamRunning()) {
        m_audio.stopStream();
    }
    if (m_audio.isStreamOpen())
        m_audio.closeStream();
}

StreamingEngine::Error StreamingEngine::rescan(const std::string& deviceName)
{
    stopOrAbortAndClose();
    return openAndStart(deviceName);
}

void StreamingEngine::closeStream()
{
    stopOrAbortAndClose();
}

int StreamingEngine::audioCallback(void* outputBuffer, void*, unsigned int frameCount, double,
                                   RtAudioStreamStatus, void* userData)
{
    // Only frameCount floats, the first half of the stereo buffer, are
    // cleared: the process function writes every value whenever it has data.
    std::memset(outputBuffer, 0, frameCount * 4);
    auto* engine = static_cast<StreamingEngine*>(userData);
    ProcessFunction* process = engine->m_process.load(std::memory_order_acquire);
    if (process && *process)
        return (*process)(static_cast<float*>(outputBuffer), frameCount);
    return 0;
}

void StreamingEngine::errorCallback(RtAudioError::Type, const std::string& errorText)
{
    std::fputs(errorText.c_str(), stdout);
    std::fputs("\n", stdout);
    std::fflush(stdout);
}

StreamingEngine::Error classifyOpenFailure(const AudioDeviceInfo& device,
                                           const std::string& message)
{
    // RtAudio gives an empty record for the default device when there is
    // none at all (no sound server, no card). That is no rate problem, and
    // sending the user to the sample rate settings would not help.
    const bool noDevice = device.name.empty() && device.outputChannels == 0 && !device.probed;
    StreamingEngine::Error error;
    if (noDevice)
        error.kind = 3;
    else if (!supportsCdSampleRate(device))
        error.kind = 1;
    else if (device.outputChannels < 2)
        error.kind = 2;
    else
        error.kind = 3;
    error.message = noDevice ? std::string(kNoOutputDeviceMessage) + " (" + message + ")" : message;
    return error;
}

} // namespace Audio
