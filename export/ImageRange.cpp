#include "export/ImageRange.h"

#include <QFile>

#include <algorithm>
#include <cstdint>
#include <cstring>

#ifdef Q_OS_LINUX
#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

// Zeros to write where the range runs past the image's end.
constexpr qint64 kZeroBlock = 65536;
const char kZeros[kZeroBlock] = {};

bool writeAll(QFile& out, const char* data, qint64 size)
{
    return out.write(data, size) == size;
}

bool writeZeros(QFile& out, qint64 size)
{
    for (qint64 done = 0; done < size; done += kZeroBlock) {
        if (!writeAll(out, kZeros, std::min(kZeroBlock, size - done)))
            return false;
    }
    return true;
}

#ifdef Q_OS_LINUX
// Makes the mapped pages resident without touching them from user space.
// Returns 0, or the errno of madvise (EINVAL on kernels before 5.14).
int populate(const uchar* data, qint64 size)
{
    static const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
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

bool ImageRange::reset(QFile& image, qint64 start, qint64 length)
{
    release();
    m_image = &image;
    m_start = start;
    m_length = length;
    m_inImage = std::clamp<qint64>(image.size() - start, 0, length);
#ifdef Q_OS_LINUX
    if (m_mappingAllowed && m_inImage > 0) {
        m_map = image.map(start, m_inImage);
        if (m_map && populate(m_map, 0) == EINVAL)
            release(); // no MADV_POPULATE_READ here: read into the buffer
    }
#endif
    if (m_map)
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
    if (m_map) {
        const qint64 mapped = std::min(size, m_inImage - offset);
        return mapped <= 0 || populate(m_map + offset, mapped) == 0;
    }
#endif
    return readIntoBuffer(offset, size);
}

bool ImageRange::readIntoBuffer(qint64 offset, qint64 size)
{
    char* data = m_buffer.get() + offset;
    if (!m_image->seek(m_start + offset))
        return false;
    qint64 done = 0;
    while (done < size) {
        const qint64 got = m_image->read(data + done, size - done);
        if (got < 0)
            return false;
        if (got == 0)
            return false; // cut short: never pass silence off as audio
        done += got;
    }
    return true;
}

bool ImageRange::writeTo(QFile& out, qint64 offset, qint64 size)
{
    if (!m_map)
        return writeAll(out, m_buffer.get() + offset, size);
    const qint64 mapped = std::clamp<qint64>(m_inImage - offset, 0, size);
    return writeAll(out, reinterpret_cast<const char*>(m_map) + offset, mapped) &&
           writeZeros(out, size - mapped);
}

void ImageRange::release()
{
    if (m_map && m_image)
        m_image->unmap(m_map);
    m_map = nullptr;
}
