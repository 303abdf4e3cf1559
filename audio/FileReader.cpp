#include "audio/FileReader.h"

namespace Audio {

FileReader::FileReader(DoubleBuffer& buffer) : m_buffer(buffer), m_bytes(kPreloadChunkBytes) {}

FileReader::~FileReader()
{
    {
        std::lock_guard<std::mutex> lock(m_waitMutex);
        m_quit = true;
    }
    m_wakeCondition.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void FileReader::openFile(const QString& path, std::function<void()> endOfFile)
{
    // Only a regular file is opened: a pipe at the image's name would block
    // the GUI.
    openImage(DiscImage::openFile(path), std::move(endOfFile));
}

void FileReader::openImage(std::shared_ptr<const DiscImage> image, std::function<void()> endOfFile)
{
    std::shared_ptr<const DiscImage> old;
    {
        std::lock_guard<std::mutex> lock(m_dataMutex);
        m_endOfFile = std::move(endOfFile);
        old = std::move(m_image);
        m_image = std::move(image);
    }
    // The old image's files close here, outside the lock.
    old.reset();
    if (!m_thread.joinable())
        m_thread = std::thread(&FileReader::run, this);
    wakeLocked();
}

std::uint32_t FileReader::postRead(std::uint32_t offset, bool discard)
{
    std::uint64_t old = m_request.load(std::memory_order_relaxed);
    for (;;) {
        ReadRequest next = ReadRequest::unpack(old);
        next.offset = offset;
        next.sequence = (next.sequence + 1) & 0xFFFFu;
        if (discard)
            next.epoch = (next.epoch + 1) & 0xFFFFu;
        if (m_request.compare_exchange_weak(old, next.pack(), std::memory_order_acq_rel,
                                            std::memory_order_relaxed))
            return next.epoch;
    }
}

void FileReader::wake()
{
    m_wakeSequence.fetch_add(1, std::memory_order_release);
    // Deliberately without the wait mutex: the audio thread must never block
    // on it. If this notify falls between the reader's check of the
    // sequence and its wait, the reader still sees the new sequence when its
    // timed wait (kWakePoll) runs out, long before the chunks it holds ahead
    // (at least one, 46 ms) have played.
    m_wakeCondition.notify_all();
}

void FileReader::wakeLocked()
{
    m_wakeSequence.fetch_add(1, std::memory_order_release);
    {
        // Waits until the reader is either inside wait_for or not yet at its
        // check, so this notify cannot be lost.
        std::lock_guard<std::mutex> lock(m_waitMutex);
    }
    m_wakeCondition.notify_all();
}

int FileReader::preload(std::uint32_t offset)
{
    for (int i = 0; i < kPreloadSlotCount; ++i) {
        PreloadSlot& slot = m_preloads[static_cast<std::size_t>(i)];
        if (slot.inUse.load(std::memory_order_acquire))
            continue;
        std::lock_guard<std::mutex> lock(m_dataMutex);
        slot.offset = alignedOffset(offset);
        slot.size = readChunk(slot.offset, kPreloadChunkBytes, slot.samples.get());
        slot.inUse.store(true, std::memory_order_relaxed);
        return i;
    }
    return -1;
}

bool FileReader::waitUntilIdle(std::chrono::milliseconds timeout)
{
    std::unique_lock<std::mutex> lock(m_waitMutex);
    if (!m_thread.joinable())
        return true;
    return m_idleCondition.wait_for(lock, timeout, [this] {
        return m_quit || (m_idle && m_wakeSequence.load(std::memory_order_acquire) == m_seenWake);
    });
}

void FileReader::run()
{
    std::unique_lock<std::mutex> waitLock(m_waitMutex);
    for (;;) {
        while (!m_quit && m_wakeSequence.load(std::memory_order_acquire) == m_seenWake) {
            m_idle = true;
            m_idleCondition.notify_all();
            m_wakeCondition.wait_for(waitLock, kWakePoll);
        }
        if (m_quit)
            return;
        m_idle = false;
        m_seenWake = m_wakeSequence.load(std::memory_order_acquire);
        waitLock.unlock();

        std::function<void()> endOfFile;
        {
            std::lock_guard<std::mutex> dataLock(m_dataMutex);
            m_filling.store(true, std::memory_order_release);
            fillPass();
            m_filling.store(false, std::memory_order_release);
            if (m_endPublished)
                endOfFile = m_endOfFile;
        }
        if (endOfFile)
            endOfFile();
        waitLock.lock();
    }
}

void FileReader::fillPass()
{
    for (;;) {
        const ReadRequest request = readRequest();
        if (request.sequence != m_seenSequence) {
            m_seenSequence = request.sequence;
            m_nextReadOffset = alignedOffset(request.offset);
            m_endPublished = false;
            if (request.epoch != m_epoch) {
                m_epoch = request.epoch;
                m_nextIndex = 0;
            }
        }
        if (m_endPublished)
            return;
        const int index = claimSlot();
        if (index < 0)
            return;
        ChunkSlot& slot = m_buffer.chunkSlots[static_cast<std::size_t>(index)];
        slot.size = readChunk(m_nextReadOffset, kRefillChunkBytes, slot.samples.get());
        m_nextReadOffset += kRefillChunkBytes;
        // One empty chunk marks the end of the file; nothing follows it.
        if (slot.size == 0)
            m_endPublished = true;
        slot.state.store(ChunkSlot::word(m_epoch, m_nextIndex++, ChunkSlot::Ready),
                         std::memory_order_release);
    }
}

int FileReader::claimSlot()
{
    for (int i = 0; i < DoubleBuffer::kSlotCount; ++i) {
        std::atomic<std::uint32_t>& state = m_buffer.chunkSlots[static_cast<std::size_t>(i)].state;
        std::uint32_t word = state.load(std::memory_order_acquire);
        const ChunkSlot::State current = ChunkSlot::stateOf(word);
        const bool stale = current == ChunkSlot::Ready && ChunkSlot::epochOf(word) != m_epoch;
        if ((current == ChunkSlot::Empty || stale) &&
            state.compare_exchange_strong(word, ChunkSlot::Filling, std::memory_order_acq_rel))
            return i;
    }
    return -1;
}

std::uint32_t FileReader::readChunk(std::uint32_t offset, std::uint32_t length, float* out)
{
    if (!m_image)
        return 0;
    const std::uint64_t got = m_image->read(offset, m_bytes.data(), length);
    if (got == 0)
        return 0;
    return convertSamples(m_bytes.data(), static_cast<std::uint32_t>(got), out);
}

} // namespace Audio
