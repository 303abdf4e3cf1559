#include "ddp/CdTextReader.h"

#include "ddp/CheckedAccess.h"
#include "ddp/DdpFileSource.h"
#include "ddp/ReadLimits.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

constexpr std::uint8_t kGenrePack = 0x87;
constexpr std::uint8_t kSizeInfoPack = 0x8F;
constexpr std::uint8_t kAlbumPack = 0x86;
constexpr std::size_t kTextOffset = 4;
constexpr std::size_t kTextBytes = 12;

std::uint8_t byteAt(std::string_view pack, std::size_t i)
{
    return static_cast<std::uint8_t>(pack[i]);
}

// The record slot a pack type writes to; nothing for types that carry no
// string into the record (0x88..0x8D, 0x8F and anything outside 0x80..0x8F).
int slotForPackType(std::uint8_t type)
{
    if (type >= 0x80 && type <= 0x85)
        return type - 0x80;
    if (type == 0x8E)
        return CdTextRecord::Code;
    return -1;
}

void storeText(CdTextRecord::Slot& slot, const std::string& text)
{
    // Longer strings are cut: the slot is never overrun.
    slot.fill('\0');
    std::memcpy(slot.data(), text.data(), std::min(text.size(), slot.size()));
}

} // namespace

const std::map<int, std::string>& CdTextReader::genreTable()
{
    static const std::map<int, std::string> kGenres = {
        {1, "Not Defined"},
        {2, "Adult Contemporary"},
        {3, "Alternative Rock"},
        {4, "Childrens Music"},
        {5, "Classical"},
        {6, "Contemporary Christian"},
        {7, "Country"},
        {8, "Dance"},
        {9, "Easy Listening"},
        {10, "Erotic"},
        {11, "Folk"},
        {12, "Gospel"},
        {13, "Hip Hop"},
        {14, "Jazz"},
        {15, "Latin"},
        {16, "Musical"},
        {17, "New Age"},
        {18, "Opera"},
        {19, "Operetta"},
        {20, "Pop Music"},
        {21, "Rap"},
        {22, "Reggae"},
        {23, "Rock Music"},
        {24, "Rhythm & Blues"},
        {25, "Sound Effects"},
        {26, "Spoken Word"},
        {27, "World Music"},
    };
    return kGenres;
}

CdTextRecord CdTextReader::decode(std::string_view data)
{
    CdTextRecord record;
    const std::size_t packCount = data.size() / kPackSize;
    auto pack = [&](std::size_t i) { return data.substr(i * kPackSize, kPackSize); };

    // The size information: the three 0x8F packs of a block, 12 bytes each,
    // placed by their pack number (byte 1). The first block's win.
    std::array<bool, 3> haveSizePart{};
    std::optional<std::size_t> firstSizePack;
    std::array<std::size_t, 8> blockPacks{}; // by the block number in bits 4..6 of byte 3
    for (std::size_t i = 0; i < packCount; ++i) {
        const std::string_view p = pack(i);
        ++blockPacks[(byteAt(p, 3) >> 4) & 0x07];
        if (byteAt(p, 0) == kSizeInfoPack && !firstSizePack)
            firstSizePack = i;
        const std::uint8_t part = byteAt(p, 1);
        if (byteAt(p, 0) != kSizeInfoPack || part >= 3 || haveSizePart[part])
            continue;
        std::memcpy(record.sizeInfo.data() + part * kTextBytes, p.data() + kTextOffset, kTextBytes);
        haveSizePart[part] = true;
    }
    const unsigned lastTrack = record.sizeInfo[2];
    const unsigned lastSequence = record.sizeInfo[20]; // last pack of block 0
    record.tracks.assign(lastTrack + 1, CdTextRecord::TrackTexts{});

    if (packCount > 0)
        record.doubleByte = (byteAt(pack(0), 3) & 0x80) != 0;

    record.largestBlockPacks = *std::max_element(blockPacks.begin(), blockPacks.end());

    // Block 0 without its three size packs; later language blocks are not
    // decoded. Past 256 packs the sequence numbers wrap, and the last one in
    // the size information is the block's length modulo 256: such a block
    // ends where its size packs begin, which agrees with it modulo 256.
    std::size_t toDecode =
        lastSequence < 3 ? 0 : std::min<std::size_t>(lastSequence - 2, packCount);
    if (firstSizePack && (*firstSizePack + 2) % 256 == lastSequence)
        toDecode = *firstSizePack;

    std::string buffer;
    for (std::size_t i = 0; i < toDecode; ++i) {
        const std::string_view p = pack(i);
        const std::uint8_t type = byteAt(p, 0);
        if (type == kGenrePack) {
            if (byteAt(p, 4) == 0)
                record.genre = checkedMapAt(genreTable(), static_cast<int>(byteAt(p, 5)));
            continue;
        }
        // Packs that carry no string (the TOC packs 0x88 and 0x89 hold binary
        // times) are passed over whole, so their bytes cannot run on into the
        // next string.
        const int slot = slotForPackType(type);
        if (slot < 0 && type != kAlbumPack)
            continue;
        unsigned track = byteAt(p, 1);
        for (std::size_t b = 0; b < kTextBytes; ++b) {
            if (track > lastTrack)
                break;
            const char c = p[kTextOffset + b];
            buffer.push_back(c);
            if (c != '\0')
                continue;
            // In double-byte text a string ends with two zero bytes.
            if (record.doubleByte && (buffer.size() < 2 || buffer[buffer.size() - 2] != '\0'))
                continue;
            if (buffer.front() != '\0') {
                const std::string text =
                    record.doubleByte ? cp932ToUtf8(std::string_view(buffer.c_str())) : buffer;
                if (type == kAlbumPack)
                    storeText(record.album, text);
                else
                    storeText(record.tracks[track][static_cast<std::size_t>(slot)], text);
            }
            ++track;
            buffer.clear();
        }
    }
    return record;
}

std::optional<CdTextRecord> CdTextReader::read(const IDdpFileSource& source,
                                               const std::string& fileName)
{
    if (fileName.empty())
        return std::nullopt;
    const FileContent data = source.readFile(fileName, kMaxCdTextBytes);
    if (data.status == FileContent::TooLarge)
        throw std::length_error("The CD-Text file is larger than " +
                                std::to_string(kMaxCdTextBytes) +
                                " bytes (8 blocks of 256 packs), more than any disc holds.");
    if (data.status != FileContent::Read)
        return std::nullopt;
    return decode(data.bytes);
}
