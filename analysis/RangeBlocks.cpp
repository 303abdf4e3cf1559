#include "analysis/RangeBlocks.h"

#include "ddp/DiscImage.h"

#include <QtEndian>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr qint64 kBytesPerFrame = 4;
// About 280 KB a read: large enough for the disk, small enough that the
// workers of all cores stay in the cache.
constexpr qint64 kBlockBytes = 16 * 4410 * kBytesPerFrame;

} // namespace

RangeBlocks::End RangeBlocks::read(const DiscImage& image, qint64 start, qint64 end,
                                   std::size_t stepFrames, const std::atomic<bool>& cancel,
                                   std::atomic<qint64>* done,
                                   const std::function<void(const qint16*, std::size_t)>& step)
{
    const qint64 length = std::max<qint64>(0, end - start) / kBytesPerFrame * kBytesPerFrame;
    std::vector<qint16> buffer(std::size_t(kBlockBytes) / sizeof(qint16));
    qint64 offset = 0;
    while (offset < length) {
        const auto want = std::uint64_t(std::min(kBlockBytes, length - offset));
        const std::uint64_t got =
            image.read(std::uint64_t(start + offset), reinterpret_cast<char*>(buffer.data()), want);
        const std::size_t frames = std::size_t(got / kBytesPerFrame);
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
        // The image holds little-endian samples, as the player reads them.
        for (std::size_t i = 0; i < 2 * frames; ++i)
            buffer[i] = qFromLittleEndian(buffer[i]);
#endif
        for (std::size_t at = 0; at < frames; at += stepFrames) {
            if (cancel.load(std::memory_order_relaxed))
                return End::Cancelled;
            step(buffer.data() + 2 * at, std::min(stepFrames, frames - at));
        }
        if (done)
            done->fetch_add(qint64(got), std::memory_order_relaxed);
        offset += qint64(got);
        if (got < want)
            return End::CutShort;
    }
    return cancel.load(std::memory_order_relaxed) ? End::Cancelled : End::Complete;
}
