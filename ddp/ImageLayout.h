#pragma once

#include "ddp/DiscImage.h"
#include "ddp/MapPacket.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class IDdpFileSource;

// One audio stream of the map: its file and where its bytes lie on the disc.
struct ImageStream
{
    std::string name;             // as the map gives it, trailing white space removed
    std::uint64_t discOffset = 0; // byte 0 of the first stream is disc time 00:00:00
    std::uint64_t length = 0;     // the file's size
};

// A "D0" stream that is not audio (the data session of an Enhanced CD).
struct SkippedStream
{
    std::string name;
    std::string mode; // the map's CD mode field, e.g. "M1"
};

// Where the disc's audio lies among the DDP's files. Most DDPs hold one image
// file; some tools write one per session or per track, each with its own map
// packet and start sector (offset 22, 8 digits, in CD frames of 2352 bytes).
// Streams are joined in the order of their start sectors; a gap between the
// end of one and the start of the next is digital silence.
struct ImageLayout
{
    std::vector<ImageStream> streams; // disc order, never overlapping
    std::vector<SkippedStream> skipped;

    // The end of the last stream: the image's length.
    std::uint64_t length() const
    {
        return streams.empty() ? 0 : streams.back().discOffset + streams.back().length;
    }
};

struct LayoutResult
{
    enum Status
    {
        Ok,
        NoAudio,     // no audio "D0" packet at all
        FileMissing, // a stream's file is not a regular file inside the DDP
        Invalid,     // start sectors that do not parse, or streams that overlap
    };
    Status status = NoAudio;
    std::string message; // names the stream for Invalid, and for FileMissing among several
    ImageLayout layout;
};

// Reads every "D0" packet of the map. A single stream starts at disc byte 0
// whatever its start sector says; several are placed by their start sectors,
// relative to the first.
LayoutResult buildImageLayout(const std::vector<MapPacket>& map, const IDdpFileSource& source);

// The DiscImage segments of a layout whose files lie in `folder`.
std::vector<DiscImage::Segment> imageSegments(const QString& folder, const ImageLayout& layout);
// Opens the disc's audio; nothing, with `error` saying why, when a file
// cannot be opened.
std::shared_ptr<const DiscImage> openDiscImage(const QString& folder, const ImageLayout& layout,
                                               QString* error = nullptr);
