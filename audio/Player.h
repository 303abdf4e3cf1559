#pragma once

#include "ddp/DiscImage.h"

#include "audio/DiskStreaming.h"
#include "audio/IAudioPlayerTransport.h"
#include "audio/IDeviceSetup.h"
#include "audio/IStreamingSetup.h"
#include "audio/TrackSegments.h"
#include "ddp/IDescListProvider.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace Audio {

// Turns the disc's track list into transport operations on the disk
// streaming. All calls come from the GUI thread; the completions of faded
// jumps run on the audio thread and touch only the atomics below.
//
// "Next" steps one PQ entry forward whatever its index number; "previous"
// goes back to the start (index 01) of the preceding track, stepping over
// entries with other index numbers. The asymmetry is deliberate.
//
// To halt playback (before a load, for an export, on suspend) call stop().
class Player : public IAudioPlayerTransport, public IDeviceSetup, public IStreamingSetup
{
public:
    Player() = default;
    ~Player() override { m_streaming.closeStream(); }

    // IAudioPlayerTransport
    void play() override;
    void stop() override;
    void pause() override;
    void selectNextTrack() override;
    void selectPreviousTrack() override;
    bool isPlaying() const override { return m_streaming.isPlaying(); }
    bool isStopped() const override { return m_streaming.isStopped(); }
    bool isPaused() const override { return m_streaming.isPaused(); }
    std::int32_t currentTrackNumber() const override
    {
        return m_currentTrackNumber.load(std::memory_order_acquire);
    }

    // IDeviceSetup
    bool initialize(const std::string& deviceName) override;
    bool rescan(const std::string& deviceName) override;
    void closeStream() override { m_streaming.closeStream(); }
    IAudioDeviceInfos& audioDeviceInfos() override { return m_streaming.engine(); }
    LoadResult lastError() const override;
    StreamingEngine::Error lastSetupResult() const { return m_lastSetup; }

    // IStreamingSetup
    void setTrackSource(std::shared_ptr<IDescListProvider> source) override;
    void load(const QString& imagePath, std::function<void()> endOfFile) override;
    // The same for the disc's audio as the loader laid it out (several
    // streams, or a file in an archive); null plays nothing.
    void load(std::shared_ptr<const DiscImage> image, std::function<void()> endOfFile);
    void selectTrack(std::int32_t trackNumber) override;
    int seek(double fraction) override;
    void setVolume(double gain) override { m_streaming.setVolume(gain); }
    MeterInfo meterInfo() const override { return m_streaming.meterInfo(); }
    void resetPeaks() override { m_streaming.resetPeaks(); }
    float position() const override { return m_streaming.position(); }
    std::uint32_t currentTrackStart() const override;
    std::uint32_t currentTrackLength() const override;
    void onTrackEnded() override;

    std::int32_t entryIndex() const { return m_entryIndex.load(std::memory_order_acquire); }
    const std::vector<TrackSegment>& trackSegments() const { return m_segments; }
    DiskStreaming& streaming() { return m_streaming; }

private:
    bool isValidEntry(int e) const
    {
        return e >= 0 && static_cast<std::size_t>(e) < m_segments.size();
    }
    std::uint32_t segmentStart(int e) const;
    int firstTrackOffset() const;
    bool runOnIntoNextTrack();
    void notifyPlaying(bool playing);

    std::shared_ptr<IDescListProvider> m_source; // GUI thread only
    std::vector<TrackSegment> m_segments;        // GUI thread only
    // Written by the GUI thread and by jump completions on the audio thread.
    std::atomic<std::int32_t> m_entryIndex{2};
    std::atomic<std::int32_t> m_currentTrackNumber{0};
    StreamingEngine::Error m_lastSetup;
    // Set while no jump of their direction is pending: cleared by the GUI
    // thread when it asks for one, set again by the jump's completion.
    std::atomic<bool> m_nextGuard{true};
    std::atomic<bool> m_previousGuard{true};
    // Last, so that it (and with it the stream that runs the completions
    // above) goes first.
    DiskStreaming m_streaming;
};

} // namespace Audio
