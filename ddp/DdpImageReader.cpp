#include "ddp/DdpImageReader.h"

#include "ddp/DdpFileSource.h"
#include "ddp/DdpNames.h"
#include "ddp/ReadLimits.h"

#include <algorithm>

namespace {

constexpr std::string_view kDdpidTag = "DDP ";
constexpr std::string_view kMapTag = "VVVM";
constexpr std::string_view kPqTag = "VVVS";
constexpr std::string_view kAudioStream = "D0";
constexpr std::string_view kPqSubcode = "PQ DESCR";
constexpr std::string_view kCdTextSubcode = "CDTEXT  ";

bool startsWith(std::string_view data, std::string_view tag)
{
    return data.size() >= tag.size() && data.substr(0, tag.size()) == tag;
}

} // namespace

bool DdpImageReader::parseMap(std::string_view data, std::vector<MapPacket>& map)
{
    if (!startsWith(data, kMapTag))
        return false;
    // Packets that do not start with the tag are skipped; a short last packet
    // is kept zero-filled behind its end.
    for (std::size_t offset = 0; offset < data.size(); offset += MapPacket::kSize) {
        const MapPacket packet = MapPacket::fromBytes(data.substr(offset, MapPacket::kSize));
        if (packet.tag() == kMapTag)
            map.push_back(packet);
    }
    return true;
}

std::vector<PqEntry> DdpImageReader::parsePqEntries(std::string_view data)
{
    std::vector<PqEntry> entries;
    entries.reserve((data.size() + PqEntry::kSize - 1) / PqEntry::kSize);
    for (std::size_t offset = 0; offset < data.size(); offset += PqEntry::kSize)
        entries.push_back(PqEntry::fromBytes(data.substr(offset, PqEntry::kSize)));
    return entries;
}

ReadResult DdpImageReader::read(const QString& folder)
{
    return read(FolderFileSource(folder));
}

ReadResult DdpImageReader::read(const IDdpFileSource& source)
{
    m_failureDetail.clear();
    const std::optional<std::string> ddpid = source.readFileHead(kDdpidFileName, kDdpidReadBytes);
    if (!ddpid || !startsWith(*ddpid, kDdpidTag))
        return ReadResult::DdpidUnreadable;
    m_id = DdpIdRecord::fromBytes(*ddpid);

    const FileContent ddpms = source.readFile(kDdpmsFileName, kMaxDdpmsBytes);
    if (ddpms.status == FileContent::TooLarge)
        return tooLarge(ReadResult::DdpmsUnreadable, kDdpmsFileName, kMaxDdpmsBytes);
    if (ddpms.status != FileContent::Read || !parseMap(ddpms.bytes, m_map))
        return ReadResult::DdpmsUnreadable;

    const std::string pqName = pqFileName();
    const FileContent pq = source.readFile(pqName, kMaxPqDescriptorBytes);
    if (pq.status == FileContent::TooLarge)
        return tooLarge(ReadResult::PqDescriptorUnreadable, pqName, kMaxPqDescriptorBytes);
    if (pq.status != FileContent::Read || !startsWith(pq.bytes, kPqTag))
        return ReadResult::PqDescriptorUnreadable;
    m_pqEntries = parsePqEntries(pq.bytes);
    return ReadResult::Success;
}

ReadResult DdpImageReader::tooLarge(ReadResult result, std::string_view name, std::uint64_t limit)
{
    m_failureDetail = "The file \"" + std::string(name.substr(0, name.find('\0'))) +
                      "\" is larger than " + std::to_string(limit) +
                      " bytes, more than any disc needs.";
    return result;
}

std::string DdpImageReader::imageFileName() const
{
    for (const MapPacket& packet : m_map) {
        if (packet.dataStreamType() == kAudioStream)
            return packet.trimmedIdentifier();
    }
    return std::string();
}

std::string DdpImageReader::pqFileName() const
{
    for (const MapPacket& packet : m_map) {
        if (packet.subcodeDescriptor() == kPqSubcode)
            return packet.trimmedIdentifier();
    }
    return std::string();
}

std::string DdpImageReader::cdTextFileName() const
{
    for (const MapPacket& packet : m_map) {
        if (packet.subcodeDescriptor() == kCdTextSubcode) {
            std::string name(packet.dataStreamIdentifier());
            name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
            return name;
        }
    }
    return std::string();
}
