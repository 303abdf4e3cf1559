#pragma once

#include "audio/DoubleBuffer.h"
#include "audio/StreamingConstants.h"

#include "ddp/DiscImage.h"

#include <QString>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Audio {

// Samples read ahead of a jump on the GUI thread, handed to the audio thread
// with the jump's fade action.
struct PreloadSlot
{
    // Set by the GUI thread when it takes the slot, cleared (release) by the
    // audio thread once it has copied the samples out.
    std::atomic<bool> inUse{false};
    std::uint32_t offset = 0; // written by the GUI thread before the hand-off
    std::uint32_t size = 0;   // likewise
    std::unique_ptr<float[]> samples{new float[kPreloadChunkSamples]};
};

// The image file and the reader thread that fills the DoubleBuffer's slots
// from it. See DiskStreaming.h for how the threads meet.
class FileReader
{
public:
    static constexpr int kPreloadSlotCount = 8;
    // The reader re-checks the wake sequence at least this often, which
    // bounds the cost of a notify that fell between its check and its wait.
    static constexpr std::chrono::milliseconds kWakePoll{2};

    explicit FileReader(DoubleBuffer& buffer);
    ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    // GUI thread. Starts the reader thread on first use; the callback runs
    // on the reader thread after every pass that found the image at its end.
    // A null image reads as empty.
    void openImage(std::shared_ptr<const DiscImage> image, std::function<void()> endOfFile);
    // The same for one whole file (the usual DDP); a file that cannot be
    // opened reads as empty.
    void openFile(const QString& path, std::function<void()> endOfFile);

    // Any thread, lock-free: read on from `offset` (rounded down to a frame).
    // With discard, chunks already read for the old position are dropped and
    // the epoch changes; returns the epoch the request belongs to.
    std::uint32_t postRead(std::uint32_t offset, bool discard);
    ReadRequest readRequest() const
    {
        return ReadRequest::unpack(m_request.load(std::memory_order_acquire));
    }

    // Audio thread: bump the wake sequence and notify without the mutex.
    void wake();
    // GUI thread: the same, notifying under the wait mutex.
    void wakeLocked();

    // GUI thread: reads [offset, offset + 16384) rounded down to a frame into
    // a free preload slot under the data mutex. Returns the slot, or -1 when
    // all are still waiting for their jump.
    int preload(std::uint32_t offset);
    PreloadSlot& preloadSlot(int index) { return m_preloads[static_cast<std::size_t>(index)]; }

    // For tests: waits until the reader has handled every wake and has
    // nothing left to fill. False on timeout.
    bool waitUntilIdle(std::chrono::milliseconds timeout);

    // True while the reader fills a slot. Written by the reader, read by anyone.
    bool filling() const { return m_filling.load(std::memory_order_acquire); }

private:
    void run();
    void fillPass();
    int claimSlot();
    std::uint32_t readChunk(std::uint32_t offset, std::uint32_t length, float* out);

    DoubleBuffer& m_buffer;

    // Guards the image pointer and the reader's private offsets. Locked by
    // the reader while it fills and by the GUI thread for preload and
    // openImage. Always taken after m_waitMutex when both are held.
    std::mutex m_dataMutex;
    std::shared_ptr<const DiscImage> m_image;
    std::function<void()> m_endOfFile;
    std::vector<char> m_bytes; // read buffer, sized once
    // Reader thread's own view of the requests (under m_dataMutex).
    std::uint32_t m_nextReadOffset = 0;
    std::uint32_t m_epoch = 0;
    std::uint32_t m_nextIndex = 0;
    std::uint32_t m_seenSequence = 0;
    bool m_endPublished = false;

    // Guards m_seenWake, m_idle and m_quit for the condition waits.
    std::mutex m_waitMutex;
    std::condition_variable m_wakeCondition; // the reader sleeps on it
    std::condition_variable m_idleCondition; // waitUntilIdle sleeps on it
    std::uint32_t m_seenWake = 0;
    bool m_idle = false;
    bool m_quit = false;

    // Written by the GUI and the audio thread (postRead), read by the reader.
    std::atomic<std::uint64_t> m_request{0};
    // The wake request as a sequence number instead of a flag: incremented
    // by whoever wants the reader to look, compared by the reader with the
    // value it saw last. Written by GUI and audio thread, read by the reader.
    std::atomic<std::uint32_t> m_wakeSequence{0};
    std::atomic<bool> m_filling{false}; // written by the reader

    std::array<PreloadSlot, kPreloadSlotCount> m_preloads;
    std::thread m_thread; // GUI thread only (started by openFile, joined here)
};

} // namespace Audio
