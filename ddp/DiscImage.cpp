#include "ddp/DiscImage.h"

#include "ddp/RegularFile.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <mutex>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <unistd.h>
#endif

struct DiscImage::OpenFile
{
    QFile file;
#ifndef Q_OS_UNIX
    // Without positional reads the file's position is shared: one reader at
    // a time.
    std::mutex mutex;
#endif
};

DiscImage::~DiscImage() = default;

std::shared_ptr<const DiscImage> DiscImage::open(std::vector<Segment> segments, QString* error)
{
    return open(std::move(segments), {}, error);
}

std::shared_ptr<const DiscImage> DiscImage::open(std::vector<Segment> segments,
                                                 std::vector<std::shared_ptr<const Source>> sources,
                                                 QString* error)
{
    std::shared_ptr<DiscImage> image(new DiscImage);
    image->m_segments = std::move(segments);
    image->m_sources = std::move(sources);
    image->m_sources.resize(image->m_segments.size());
    for (std::size_t i = 0; i < image->m_segments.size(); ++i) {
        const Segment& segment = image->m_segments[i];
        image->m_starts.push_back(image->m_length);
        image->m_length += segment.length;
        if (segment.kind == Segment::Kind::Silence) {
            image->m_files.emplace_back();
            continue;
        }
        if (segment.kind == Segment::Kind::Source) {
            if (!image->m_sources[i]) {
                if (error)
                    *error = QStringLiteral("%1: nothing reads this stream").arg(segment.path);
                return nullptr;
            }
            image->m_files.emplace_back();
            continue;
        }
        auto file = std::make_unique<OpenFile>();
        QString reason;
        if (!openRegularFile(file->file, segment.path, &reason)) {
            if (error)
                *error = QStringLiteral("%1: %2").arg(segment.path, reason);
            return nullptr;
        }
        image->m_files.push_back(std::move(file));
    }
    return image;
}

std::shared_ptr<const DiscImage> DiscImage::openFile(const QString& path, QString* error)
{
    const std::optional<std::uint64_t> size = regularFileSize(path);
    Segment whole;
    whole.kind = Segment::Kind::File;
    whole.path = path;
    whole.length = size.value_or(0);
    return open({whole}, error);
}

std::size_t DiscImage::segmentAt(std::uint64_t offset) const
{
    // The last segment that starts at or before the offset and holds bytes.
    auto it = std::upper_bound(m_starts.begin(), m_starts.end(), offset);
    std::size_t index = static_cast<std::size_t>(it - m_starts.begin());
    while (index > 0) {
        --index;
        if (offset < m_starts[index] + m_segments[index].length)
            return index;
        if (m_segments[index].length > 0)
            break;
    }
    return m_segments.size();
}

int DiscImage::fileDescriptor(std::size_t segment) const
{
    if (segment >= m_files.size() || !m_files[segment])
        return -1;
#ifdef Q_OS_UNIX
    return m_files[segment]->file.handle();
#else
    return -1;
#endif
}

std::uint64_t DiscImage::read(std::uint64_t offset, char* out, std::uint64_t size) const
{
    if (offset >= m_length)
        return 0;
    size = std::min(size, m_length - offset);
    std::uint64_t done = 0;
    std::size_t segment = segmentAt(offset);
    while (done < size && segment < m_segments.size()) {
        const std::uint64_t inSegment = offset + done - m_starts[segment];
        const std::uint64_t piece = std::min(size - done, m_segments[segment].length - inSegment);
        const std::uint64_t got = readSegment(segment, inSegment, out + done, piece);
        done += got;
        if (got < piece)
            break; // fell short here
        ++segment;
    }
    return done;
}

std::uint64_t DiscImage::readSegment(std::size_t segment, std::uint64_t offset, char* out,
                                     std::uint64_t size) const
{
    const Segment& s = m_segments[segment];
    if (s.kind == Segment::Kind::Silence) {
        std::memset(out, 0, static_cast<std::size_t>(size));
        return size;
    }
    if (s.kind == Segment::Kind::Source)
        return m_sources[segment]->read(s.fileOffset + offset, out, size);
    OpenFile& file = *m_files[segment];
    const std::uint64_t position = s.fileOffset + offset;
#ifdef Q_OS_UNIX
    const int fd = file.file.handle();
    std::uint64_t done = 0;
    while (done < size) {
        const ssize_t got = ::pread(fd, out + done, static_cast<std::size_t>(size - done),
                                    static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += static_cast<std::uint64_t>(got);
    }
    return done;
#else
    std::lock_guard<std::mutex> lock(file.mutex);
    if (!file.file.seek(static_cast<qint64>(position)))
        return 0;
    std::uint64_t done = 0;
    while (done < size) {
        const qint64 got = file.file.read(out + done, static_cast<qint64>(size - done));
        if (got <= 0)
            break;
        done += static_cast<std::uint64_t>(got);
    }
    return done;
#endif
}
