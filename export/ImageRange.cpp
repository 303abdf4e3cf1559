#include "export/ImageRange.h"

#include "ddp/DiscImage.h"

#include <QFile>

#include <algorithm>
#include <cstdint>

#ifdef Q_OS_LINUX
#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

bool writeAll(QFile& out, const char* data, qint64 size)
{
    return out.write(data, size) == size;
}

#ifdef Q_OS_LINUX
std::uint64_t pageSize()
{
    static const std::uint64_t page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return page;
}

// Makes the mapped pages resident without touching them from user space.
// Returns 0, or the errno of madvise (EINVAL on kernels before 5.14).
int populate(const char* data, qint64 size)
{
    const std::uintptr_t page = pageSize();
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(data) / page * page;
    const std::uintptr_t end =
        reinterpret_cast<std::uintptr_t>(data) + static_cast<std::uintptr_t>(size);
    if (madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_READ) == 0)
        return 0;
    return errno;
}
#endif

} // namespace

ImageRange::~ImageRange()
{
    release();
}

bool ImageRange::mapRange(qint64 start, qint64 length)
{
#ifdef Q_OS_LINUX
    const std::size_t segment = m_image->segmentAt(static_cast<std::uint64_t>(start));
    if (segment >= m_image->segments().size())
        return false;
    const DiscImage::Segment& s = m_image->segments()[segment];
    const std::uint64_t inSegment =
        static_cast<std::uint64_t>(start) - m_image->segmentStart(segment);
    const int fd = m_image->fileDescriptor(segment);
    if (fd < 0 || inSegment + static_cast<std::uint64_t>(length) > s.length)
        return false; // silence, or a range across streams: the buffer reads it
    const std::uint64_t fileOffset = s.fileOffset + inSegment;
    const std::uint64_t aligned = fileOffset / pageSize() * pageSize();
    const std::size_t size = static_cast<std::size_t>(fileOffset - aligned + length);
    void* base = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, static_cast<off_t>(aligned));
    if (base == MAP_FAILED)
        return false;
    m_mapBase = base;
    m_mapSize = size;
    m_map = static_cast<const char*>(base) + (fileOffset - aligned);
    if (populate(m_map, 0) == EINVAL) {
        release(); // no MADV_POPULATE_READ here: read into the buffer
        return false;
    }
    return true;
#else
    Q_UNUSED(start)
    Q_UNUSED(length)
    return false;
#endif
}

bool ImageRange::reset(const DiscImage& image, qint64 start, qint64 length)
{
    release();
    m_image = &image;
    m_start = start;
    m_length = length;
    if (m_mappingAllowed && length > 0 && mapRange(start, length))
        return true;
    if (length > m_capacity || !m_buffer) {
        m_buffer.reset();
        m_capacity = 0;
        m_buffer.reset(
            static_cast<char*>(std::malloc(static_cast<std::size_t>(std::max<qint64>(length, 1)))));
        if (!m_buffer)
            return false;
        m_capacity = length;
    }
    return true;
}

bool ImageRange::load(qint64 offset, qint64 size)
{
#ifdef Q_OS_LINUX
    if (m_map)
        return size <= 0 || populate(m_map + offset, size) == 0;
#endif
    // Cut short: never pass silence off as audio.
    return m_image->read(static_cast<std::uint64_t>(m_start + offset), m_buffer.get() + offset,
                         static_cast<std::uint64_t>(size)) == static_cast<std::uint64_t>(size);
}

bool ImageRange::writeTo(QFile& out, qint64 offset, qint64 size)
{
    return writeAll(out, (m_map ? m_map : m_buffer.get()) + offset, size);
}

void ImageRange::release()
{
#ifdef Q_OS_LINUX
    if (m_mapBase)
        ::munmap(m_mapBase, m_mapSize);
#endif
    m_mapBase = nullptr;
    m_mapSize = 0;
    m_map = nullptr;
}
