#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A checksum file that authoring tools write beside a DDP, read from its
// bytes. Two formats are known:
//   md5sum's: "<32 hex digits> *NAME" or "<32 hex digits>  NAME" a line;
//   the INI style of CRC-32 values: "[CRC32 Checksum]", then "NAME=XXXXXXXX".
// Either with LF or CRLF line ends, hex in either case.
enum class ChecksumAlgorithm
{
    Md5,
    Crc32,
};

struct ChecksumEntry
{
    std::string name; // as the file writes it, without any folder part
    ChecksumAlgorithm algorithm = ChecksumAlgorithm::Md5;
    std::string expected; // lower-case hex
};

struct ChecksumFile
{
    enum Format
    {
        Md5Sum,
        Crc32Ini,
        Unrecognised, // named like a checksum file, but holding nothing we can read
    };
    std::string fileName;
    Format format = Unrecognised;
    std::vector<ChecksumEntry> entries;
    int unreadLines = 0; // lines of a known format that say nothing we understand
};

// What `bytes` hold, judged by content first: a file of either format is
// one whatever its name; a file that holds neither but is named like a
// checksum file ("*.md5", "*.crc", "*.sfv", "*checksum*") is Unrecognised;
// anything else is no checksum file at all.
std::optional<ChecksumFile> parseChecksumFile(const std::string& fileName,
                                              const std::string& bytes);

bool looksLikeChecksumFileName(const std::string& fileName);

// ASCII case-insensitive equality, as names in checksum files are matched.
bool sameNameIgnoringCase(const std::string& a, const std::string& b);

// The most of a file that is read to judge whether it is a checksum file:
// a listing of a disc's few files is far smaller.
inline constexpr std::uint64_t kMaxChecksumFileBytes = 1 << 20;
