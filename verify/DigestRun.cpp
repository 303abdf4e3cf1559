#include "verify/DigestRun.h"

#include "ddp/DiscImage.h"

#include <QCryptographicHash>

#include <zlib.h>

#include <algorithm>
#include <cstdio>

namespace {

std::string crcHex(uLong crc)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08lx", static_cast<unsigned long>(crc & 0xFFFFFFFFul));
    return text;
}

} // namespace

std::vector<DigestResult> runDigests(const std::vector<DigestJob>& jobs,
                                     const std::atomic<bool>* cancel,
                                     const DigestProgress& progress)
{
    std::vector<DigestResult> results(jobs.size());
    std::uint64_t total = 0;
    for (const DigestJob& job : jobs)
        total += job.length;
    std::uint64_t done = 0;
    std::vector<char> block(kDigestBlockBytes);

    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const DigestJob& job = jobs[i];
        DigestResult& result = results[i];
        QCryptographicHash md5(QCryptographicHash::Md5);
        uLong crc = crc32(0L, Z_NULL, 0);
        std::uint64_t position = 0;
        result.status = DigestResult::Done;
        while (position < job.length) {
            if (cancel && cancel->load(std::memory_order_relaxed)) {
                result.status = DigestResult::Cancelled;
                return results;
            }
            const std::uint64_t want = std::min<std::uint64_t>(block.size(), job.length - position);
            const std::uint64_t got =
                job.image ? job.image->read(job.offset + position, block.data(), want) : 0;
            if (job.md5)
                md5.addData(block.data(), static_cast<int>(got));
            if (job.crc32)
                crc = crc32(crc, reinterpret_cast<const Bytef*>(block.data()),
                            static_cast<uInt>(got));
            position += got;
            done += got;
            if (progress)
                progress(done, total);
            if (got < want) {
                result.status = DigestResult::ShortRead;
                break;
            }
        }
        if (result.status != DigestResult::Done)
            continue;
        if (job.md5)
            result.md5 = md5.result().toHex().toStdString();
        if (job.crc32)
            result.crc32 = crcHex(crc);
    }
    return results;
}
