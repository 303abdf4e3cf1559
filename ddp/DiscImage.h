#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

// The audio of a disc as one read-only run of bytes, made of segments in disc
// order: a range of a file (a whole image file, one of several streams) or a
// run of digital silence (the gap between two streams). Everything that reads
// the disc's audio (playback, export, checksums, analysis) reads it here, so
// that where the bytes lie is this class's business alone.
//
// Reads are positional: any number of threads may read at once, with no
// shared file position and no lock on POSIX systems. The files are opened
// once, when the image is opened, and stay open for its life: a file renamed
// or replaced meanwhile is still read as it was opened, one cut short reads
// short, never as zeros.
class DiscImage
{
public:
    // Bytes that lie in no plain file range, such as a stored entry that an
    // archive library reads for us. Reads are positional and may come from
    // several threads at once: the source serializes them if it must.
    class Source
    {
    public:
        virtual ~Source() = default;
        // Reads [offset, offset + size) of the source's own bytes; returns
        // the count read, fewer on an error or past its end.
        virtual std::uint64_t read(std::uint64_t offset, char* out, std::uint64_t size) const = 0;
    };

    struct Segment
    {
        enum class Kind
        {
            File,
            Silence,
            Source,
        };
        Kind kind = Kind::Silence;
        QString path;                 // File: the file that holds the bytes; Source: a name
        std::uint64_t fileOffset = 0; // File and Source: where the bytes start in it
        std::uint64_t length = 0;
    };

    // Opens every file segment, regular files only. Nothing, with `error`
    // naming the file and the reason, when one cannot be opened or a Source
    // segment has no source.
    static std::shared_ptr<const DiscImage> open(std::vector<Segment> segments,
                                                 QString* error = nullptr);
    // The same with what reads each Source segment: `sources[i]` for
    // `segments[i]` (null for the other kinds).
    static std::shared_ptr<const DiscImage> open(std::vector<Segment> segments,
                                                 std::vector<std::shared_ptr<const Source>> sources,
                                                 QString* error = nullptr);
    // One whole file as the image: the usual DDP.
    static std::shared_ptr<const DiscImage> openFile(const QString& path, QString* error = nullptr);

    ~DiscImage();
    DiscImage(const DiscImage&) = delete;
    DiscImage& operator=(const DiscImage&) = delete;

    std::uint64_t length() const { return m_length; }
    const std::vector<Segment>& segments() const { return m_segments; }

    // Reads [offset, offset + size), clipped to the image's length, into
    // `out`. Returns the bytes read: fewer than asked within the length means
    // a file held less than its segment claims (cut while open, or a read
    // error), and the read fell short at offset + the returned count.
    std::uint64_t read(std::uint64_t offset, char* out, std::uint64_t size) const;

    // For writers that copy a file's pages without a buffer of their own:
    // the open file behind a segment (a POSIX descriptor; -1 where there is
    // none, for silence, a Source segment or off POSIX systems).
    int fileDescriptor(std::size_t segment) const;
    // The segment that holds `offset`, or segments().size() past the end.
    std::size_t segmentAt(std::uint64_t offset) const;
    // Where a segment starts in the image.
    std::uint64_t segmentStart(std::size_t segment) const { return m_starts.at(segment); }

private:
    struct OpenFile;
    DiscImage() = default;
    std::uint64_t readSegment(std::size_t segment, std::uint64_t offset, char* out,
                              std::uint64_t size) const;

    std::vector<Segment> m_segments;
    std::vector<std::uint64_t> m_starts;                  // where each segment starts
    std::vector<std::unique_ptr<OpenFile>> m_files;       // one per segment, empty for silence
    std::vector<std::shared_ptr<const Source>> m_sources; // one per segment, set for Source
    std::uint64_t m_length = 0;
};
