#pragma once

#include "audio/DoubleBuffer.h"
#include "audio/FadeControl.h"
#include "audio/FileReader.h"
#include "audio/LevelMeter.h"
#include "audio/MeterInfo.h"
#include "audio/PlayPosition.h"
#include "audio/StreamingEngine.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Audio {

// Streams the audio image (raw 16-bit little-endian stereo, 44100 Hz) from
// disk to the output: a reader thread converts chunks of the file into the
// DoubleBuffer's slots, the audio thread plays them through process(), with
// a 440-frame fade around every jump, stop and pause, a gliding volume and
// the level meter.
//
// THE AUDIO THREAD'S CONTRACT
// ---------------------------
// process() runs on RtAudio's thread (or on a test's thread that drives it
// directly). It never allocates, never locks, never touches the file and
// never waits. What it touches:
//
//   audio thread only:  m_currentData/m_currentSize/m_currentSlot (the chunk
//       being played), m_adopted (preload copy), m_playEpoch, m_wantIndex,
//       PlayPosition::readIndex, FadeControl::gain, the LevelMeter's State.
//   reads, written by the GUI thread:  m_volumeTarget (once per callback),
//       m_currentSampleInFile (stopNow), the fade action ring (SPSC, the GUI
//       thread is its only producer), FadeControl::fadeInAfter.
//   shared, written by both:  PlayPosition::state, PlayPosition::samplePosition
//       (compare-and-swap at the end of a callback: a GUI write wins),
//       FadeControl::fadeState (the audio thread advances it only by
//       compare-and-swap), m_meterResetRequested/m_peakResetRequested (GUI
//       sets, audio clears and resets the meter at the start of a callback).
//   handed over by the reader:  a ChunkSlot becomes the audio thread's by a
//       compare-and-swap Ready -> Playing on its state word, which carries
//       the chunk's epoch and index, so the audio thread only ever takes the
//       very chunk it wants; it gives it back by storing Empty and waking the
//       reader. The reader never writes a slot it does not hold.
//   handed over by the GUI thread:  a PreloadSlot travels with its fade
//       action (the ring's release/acquire orders the samples); the audio
//       thread copies it into m_adopted and clears inUse.
//   posted to the reader:  FileReader::postRead (lock-free compare-and-swap
//       on one word) and FileReader::wake (an atomic sequence number plus a
//       notify without the mutex; the reader's timed wait bounds the cost of
//       a notify that falls between its check and its wait to kWakePoll).
//   written for readers elsewhere:  m_volume, m_underruns,
//       m_framesProcessed, the meter's published values.
//   calls out:  the completion callables of jumps and stop(done) run on
//       this thread; they must not allocate or lock either (the player's
//       only change atomics and post requests).
//
// In terms of the classic design: primeRequested is a change of epoch (the
// read request word), wakeRequested is the wake sequence, and the reader
// thread lives until this object goes (it is joined, so that tests can make
// and drop many of these). A seek while paused or stopped discards the
// read-ahead too: what resuming plays first comes from the new place.
//
// Where this differs from the simplest double buffer, it does so to keep
// those promises: chunks carry epochs instead of being emptied from the GUI
// thread, every jump carries its own preload and completion, a play asked
// for while fade actions wait is queued behind them (a restart from silence
// would strand them, and with them a jump's completion), actions found
// waiting while no fade runs get a fade of their own, and when no
// chunk is ready the callback plays silence (counted in underrunCount) and
// does not advance the position. When there is no data at all (before the
// first chunk, at the end of the image) process writes nothing, as RtAudio's
// callback has cleared the first half of the buffer, but fades and the
// volume glide still advance, so a stop at the very end of the image
// completes.
class DiskStreaming
{
public:
    DiskStreaming();
    ~DiskStreaming();
    DiskStreaming(const DiskStreaming&) = delete;
    DiskStreaming& operator=(const DiskStreaming&) = delete;

    // Device set-up; never throws.
    StreamingEngine::Error initialize(const std::string& deviceName);
    StreamingEngine::Error rescan(const std::string& deviceName);
    void closeStream();
    StreamingEngine& engine() { return m_engine; }

    // GUI thread.
    void openFile(const QString& path, std::function<void()> endOfFile);
    void openImage(std::shared_ptr<const DiscImage> image, std::function<void()> endOfFile);
    void play();
    void pause();
    void stop();
    // False when the stop could not be queued (see below); done then never runs.
    // done may run on the audio thread, so it must not call what queues a
    // fade (play, pause, stop, seek, the jumps): the queue has one producer.
    bool stop(std::function<void()> done);
    // Also safe on the audio thread (a stop's completion uses it).
    void setCurrentSampleInFile(std::int32_t offset);
    // Playback runs on from one track into the next without a jump: the
    // origin of the position moves `length` bytes forward to `nextStart`.
    // Refused (false, nothing changed) while a fade or a jump is under way,
    // or when less than `length` has been played.
    bool moveOriginForward(std::uint32_t nextStart, std::uint32_t length);
    // False when the jump could not be queued (only possible while no stream
    // takes the queued actions); done is then never called.
    bool setCurrentSampleInFileAndFadeOutFadeIn(std::int32_t offset, std::function<void()> done);
    // 1 (and nothing done) while a fade or jump runs, else 0.
    int seek(double fraction, std::int32_t length);
    void setVolume(double gain);

    // Any thread.
    float position() const; // bytes played since currentSampleInFile
    std::uint32_t samplesPlayed() const { return m_position.samplePosition.load(); }
    std::uint32_t currentSampleInFile() const
    {
        return m_currentSampleInFile.load(std::memory_order_acquire);
    }
    bool isPlaying() const { return state() == TransportState::Playing; }
    bool isStopped() const { return state() == TransportState::Stopped; }
    bool isPaused() const { return state() == TransportState::Paused; }
    TransportState state() const { return m_position.state.load(std::memory_order_acquire); }
    std::uint32_t fadeState() const { return m_fade.fadeState.load(std::memory_order_acquire); }
    bool hasQueuedActions() const { return !m_fade.actions.empty(); }
    MeterInfo meterInfo() const { return m_meter.read(); }
    void resetPeaks();
    float volume() const { return m_volume.load(std::memory_order_relaxed); }
    std::uint64_t underrunCount() const { return m_underruns.load(std::memory_order_relaxed); }
    // Frames the device has asked for so far: shows whether the stream flows.
    std::uint64_t framesProcessed() const
    {
        return m_framesProcessed.load(std::memory_order_relaxed);
    }

    // The audio thread's entry point; always returns 0.
    int process(float* output, unsigned int frameCount);
    // Audio thread, or a test driving process: the fade gain.
    double fadeGain() const { return m_fade.gain; }

    // For tests: waits until the reader thread has nothing left to do.
    bool waitForReader(std::chrono::milliseconds timeout = std::chrono::milliseconds(5000))
    {
        return m_reader.waitUntilIdle(timeout);
    }

private:
    bool requestFade(FadeAction::Kind kind, bool fadeInAfter, int preloadSlot, std::uint32_t target,
                     std::function<void()> done);
    void stopNow();
    void requestPrime(std::uint32_t offset);

    // Audio thread.
    void applyRequests();
    void followReadRequest();
    void releaseCurrent();
    void switchChunk();
    void adoptPreload(int preloadSlot);
    // Runs the queued actions; returns whether to fade in after them.
    bool runActions();
    bool stepFade(); // true when actions ran
    void advanceSilently(unsigned int frameCount);
    void render(float* output, unsigned int frameCount, bool playing);

    StreamingEngine m_engine;
    PlayPosition m_position;
    DoubleBuffer m_buffer;
    FileReader m_reader;
    FadeControl m_fade;
    LevelMeter m_meter;
    std::atomic<float> m_volume{1.0f};       // written by the audio thread
    std::atomic<float> m_volumeTarget{1.0f}; // written by the GUI thread
    // Where samplePosition counts from. Written by the GUI thread (and by a
    // completion on the audio thread), read by both.
    std::atomic<std::uint32_t> m_currentSampleInFile{0};
    std::atomic<bool> m_meterResetRequested{false};  // GUI/audio set, audio clears
    std::atomic<bool> m_peakResetRequested{false};   // GUI sets, audio clears
    std::atomic<std::uint64_t> m_underruns{0};       // written by the audio thread
    std::atomic<std::uint64_t> m_framesProcessed{0}; // written by the audio thread

    // The chunk being played (audio thread only).
    const float* m_currentData = nullptr;
    std::int64_t m_currentSize = 0;
    int m_currentSlot = -1; // -1: none, or the adopted preload
    std::uint32_t m_playEpoch = 0;
    std::uint32_t m_wantIndex = 0;
    std::unique_ptr<float[]> m_adopted;
};

} // namespace Audio
