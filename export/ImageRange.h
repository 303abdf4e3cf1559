#pragma once

#include <QtGlobal>

#include <cstdlib>
#include <memory>

class DiscImage;
class QFile;

// One byte range of the disc's audio, held in memory whole between the read
// phase and the write phase of an export. The caller checks that the image
// holds the whole range; an image that shrinks meanwhile makes a load or a
// write fail, never reads as zeros.
//
// On Linux a range that lies in one file is that file's own pages, mapped and
// made resident piece by piece, and the write copies them straight into the
// output file. Reading into a buffer of our own first was a second pass over
// every byte: a disc took two to four times as long as a plain copy of its
// image. Elsewhere, for a range across several streams, or when the system
// refuses the mapping, the range is read into a buffer, which is kept for the
// next range so that a whole disc pays for fresh pages once.
//
// Only the kernel touches mapped bytes (inside read-ahead and write calls), so
// an image cut short while it is exported ends in a read or write error, not
// in a bus error.
class ImageRange
{
public:
    ImageRange() = default;
    ImageRange(const ImageRange&) = delete;
    ImageRange& operator=(const ImageRange&) = delete;
    ~ImageRange();

    // Use the image's pages where the system allows it (the default), or
    // always read into a buffer.
    void setMappingAllowed(bool allowed) { m_mappingAllowed = allowed; }

    // Starts a range of `image`, which must stay open until the range is
    // written. False when there is no memory for it.
    bool reset(const DiscImage& image, qint64 start, qint64 length);
    // Brings [offset, offset + size) of the range into memory.
    bool load(qint64 offset, qint64 size);
    // Writes [offset, offset + size) of the loaded range to `out` (opened
    // unbuffered, so that no library copies mapped bytes on its own).
    bool writeTo(QFile& out, qint64 offset, qint64 size);
    // Lets go of the mapping; the buffer stays for the next range.
    void release();

private:
    bool mapRange(qint64 start, qint64 length);

    struct Free
    {
        void operator()(char* p) const { std::free(p); }
    };

    bool m_mappingAllowed = true;
    const DiscImage* m_image = nullptr;
    qint64 m_start = 0;
    qint64 m_length = 0;
    // The mapping: whole pages from m_mapBase, the range from m_map.
    void* m_mapBase = nullptr;
    std::size_t m_mapSize = 0;
    const char* m_map = nullptr;
    std::unique_ptr<char, Free> m_buffer;
    qint64 m_capacity = 0;
};
