#include "ddp/ImageLayout.h"

#include "ddp/DdpFileLookup.h"
#include "ddp/DdpFileSource.h"
#include "ddp/PqEntry.h"

#include <algorithm>
#include <optional>

namespace {

// The 8 digits of a start sector; blanks around them are allowed.
std::optional<std::uint64_t> sectorNumber(std::string_view field)
{
    std::uint64_t value = 0;
    bool digit = false;
    for (char c : field) {
        if (c >= '0' && c <= '9') {
            value = value * 10 + static_cast<std::uint64_t>(c - '0');
            digit = true;
        } else if (c != ' ' && c != '\0') {
            return std::nullopt;
        }
    }
    if (!digit)
        return std::nullopt;
    return value;
}

// "DA" is audio; a blank mode is taken for audio too (older tools leave it).
bool isAudioMode(std::string_view mode)
{
    return mode == "DA" || mode == "  " || mode == std::string_view("\0\0", 2);
}

struct Candidate
{
    std::string name;
    std::optional<std::uint64_t> sector;
    std::size_t mapOrder = 0;
};

} // namespace

LayoutResult buildImageLayout(const std::vector<MapPacket>& map, const IDdpFileSource& source)
{
    LayoutResult result;
    std::vector<Candidate> candidates;
    for (const MapPacket& packet : map) {
        if (packet.dataStreamType() != "D0")
            continue;
        const std::string name = packet.trimmedIdentifier();
        if (!isAudioMode(packet.cdMode())) {
            result.layout.skipped.push_back({name, std::string(packet.cdMode())});
            continue;
        }
        candidates.push_back({name, sectorNumber(packet.startSector()), candidates.size()});
    }
    if (candidates.empty())
        return result;

    if (candidates.size() > 1) {
        for (const Candidate& c : candidates) {
            if (!c.sector) {
                result.status = LayoutResult::Invalid;
                result.message = "The start sector of the audio stream \"" + c.name +
                                 "\" in the DDPMS is not a number.";
                return result;
            }
        }
        std::stable_sort(
            candidates.begin(), candidates.end(),
            [](const Candidate& a, const Candidate& b) { return *a.sector < *b.sector; });
    }

    const std::uint64_t firstSector = candidates.front().sector.value_or(0);
    for (const Candidate& c : candidates) {
        const std::optional<std::uint64_t> size =
            c.name.empty() ? std::nullopt : source.fileSize(c.name);
        if (!size) {
            result.status = LayoutResult::FileMissing;
            // With one stream the error's own words say it all.
            if (candidates.size() > 1)
                result.message = "The audio stream \"" + c.name + "\" is missing.";
            return result;
        }
        ImageStream stream;
        stream.name = c.name;
        stream.length = *size;
        stream.discOffset =
            candidates.size() == 1 ? 0 : (*c.sector - firstSector) * kBytesPerCdFrame;
        if (!result.layout.streams.empty() && stream.discOffset < result.layout.length()) {
            result.status = LayoutResult::Invalid;
            result.message = "The audio streams \"" + result.layout.streams.back().name +
                             "\" and \"" + c.name + "\" overlap: the second starts at sector " +
                             std::to_string(*c.sector) + ", before the first ends.";
            return result;
        }
        result.layout.streams.push_back(stream);
    }
    result.status = LayoutResult::Ok;
    return result;
}

std::vector<DiscImage::Segment> imageSegments(const QString& folder, const ImageLayout& layout)
{
    std::vector<DiscImage::Segment> segments;
    std::uint64_t end = 0;
    for (const ImageStream& stream : layout.streams) {
        if (stream.discOffset > end) {
            DiscImage::Segment gap;
            gap.length = stream.discOffset - end;
            segments.push_back(gap);
        }
        DiscImage::Segment file;
        file.kind = DiscImage::Segment::Kind::File;
        file.path = resolveDdpFile(folder, ddpFileNameFromBytes(stream.name));
        file.length = stream.length;
        segments.push_back(file);
        end = stream.discOffset + stream.length;
    }
    return segments;
}

std::shared_ptr<const DiscImage> openDiscImage(const QString& folder, const ImageLayout& layout,
                                               QString* error)
{
    if (layout.streams.empty()) {
        if (error)
            *error = QStringLiteral("The DDP has no audio image.");
        return nullptr;
    }
    return DiscImage::open(imageSegments(folder, layout), error);
}
