#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class DiscImage;

// One file to digest: a range of a DiscImage (a file opened on its own, or
// one stream of the disc's audio), and which digests it needs.
struct DigestJob
{
    std::shared_ptr<const DiscImage> image;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool md5 = false;
    bool crc32 = false;
};

struct DigestResult
{
    enum Status
    {
        Done,
        ShortRead, // the file held less than it claimed, or a read failed
        Cancelled,
    };
    Status status = Cancelled;
    std::string md5;   // lower-case hex, when asked for and Done
    std::string crc32; // lower-case hex, 8 digits, when asked for and Done
};

// Bytes done and bytes in all, after every block.
using DigestProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

// Every digest a file needs from one read of it, in large blocks: MD5 with
// QCryptographicHash, CRC-32 with zlib. `cancel` is looked at between
// blocks; a cancelled run leaves the rest of the results Cancelled.
std::vector<DigestResult> runDigests(const std::vector<DigestJob>& jobs,
                                     const std::atomic<bool>* cancel = nullptr,
                                     const DigestProgress& progress = {});

inline constexpr std::uint64_t kDigestBlockBytes = 4 << 20;
