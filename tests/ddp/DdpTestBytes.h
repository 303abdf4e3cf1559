#pragma once

// Byte builders for the DDP parser tests: each file of a DDP made by hand,
// field by field, so a test shows exactly which bytes it feeds in.

#include "ddp/DdpFileSource.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace testbytes {

// `text` left-aligned in `width` bytes, padded with `pad`.
std::string padded(std::string_view text, std::size_t width, char pad = ' ');

// A 128-byte DDPID: "DDP 2.00", the UPC/EAN at offset 8.
std::string ddpid(std::string_view upcEan = "0123456789012");

// One 128-byte map packet.
std::string mapPacket(std::string_view streamType, std::string_view subcode,
                      std::string_view identifier, std::string_view tag = "VVVM");
// The usual three: the image ("D0"), the PQ descriptor, and the CD-Text
// when cdTextName is not empty.
std::string ddpms(std::string_view imageName = "IMAGE.DAT", std::string_view pqName = "PQDESCR",
                  std::string_view cdTextName = "");

struct Entry
{
    std::string track;
    int index = 1;
    int minutes = 0;
    int seconds = 0;
    int frames = 0;
    std::string isrc = std::string(12, ' ');
    std::string userText = std::string(19, ' ');
    int hours = 0;
};
std::string pqEntry(const Entry& e);
std::string pqDescriptor(const std::vector<Entry>& entries);

// A plain disc as mastering tools write it: a lead-in entry 00/00, the pause
// 01/00 at 00:00 lasting leadInGap seconds, each track's index 01 at the
// running time, then the lead-out entries "AA" 01 and "AA" 00.
std::vector<Entry> simpleEntries(int leadInGap, const std::vector<int>& trackSeconds);

// One raw 18-byte pack (CRC zero).
std::string cdTextPack(std::uint8_t type, std::uint8_t track, std::uint8_t sequence,
                       std::uint8_t flags, std::string_view text12);
// The three 0x8F size packs of a block.
std::string sizeInfoPacks(std::uint8_t lastTrack, std::uint8_t lastSequence,
                          std::uint8_t firstSequence, std::uint8_t block = 0);

// One language block laid out the way encoders do it: the strings of each
// pack type ("title 0", "title 1", ...) run on across packs; each pack's
// track byte is the track of its first character. `texts[type][track]`.
// Double-byte text is given in its on-disc encoding (code page 932).
struct Block
{
    std::map<std::uint8_t, std::vector<std::string>> texts;
    std::uint8_t lastTrack = 0;
    bool doubleByte = false;
    int genre = -1; // no genre pack when negative
    std::uint8_t block = 0;
    std::uint8_t firstSequence = 0;
};
std::string cdTextBlock(const Block& block);

// DDPID, DDPMS, PQDESCR and an empty IMAGE.DAT (and CDTEXT.BIN when given).
using Files = std::map<std::string, std::string>;
Files discFiles(const std::vector<Entry>& entries, const std::string& cdText = {});
MemoryFileSource memoryDisc(const std::vector<Entry>& entries, const std::string& cdText = {});
MemoryFileSource memorySource(const Files& files);
// Writes the files into the folder, made if absent; false on any failure.
bool writeFolder(const QString& folder, const Files& files);

} // namespace testbytes
