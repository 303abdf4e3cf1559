#pragma once

#include <QtGlobal>

#include <atomic>
#include <cstddef>
#include <functional>

class DiscImage;

// Reads [start, end) of the image in large sequential blocks and hands the
// audio on in steps of at most `stepFrames` frames of interleaved 16-bit
// stereo in host byte order. Only whole frames are read: a range that is not
// a multiple of 4 bytes ends at its last whole frame. `cancel` is checked
// before every step, so a cancel is seen within one step; the bytes read
// are added to `done` as they go.
struct RangeBlocks
{
    enum class End
    {
        Complete,  // every byte of the range was read
        CutShort,  // the image ended inside the range
        Cancelled, // `cancel` was set
    };
    static End read(const DiscImage& image, qint64 start, qint64 end, std::size_t stepFrames,
                    const std::atomic<bool>& cancel, std::atomic<qint64>* done,
                    const std::function<void(const qint16* interleaved, std::size_t frames)>& step);
};
