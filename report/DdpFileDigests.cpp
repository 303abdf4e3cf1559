#include "report/DdpFileDigests.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DiscImage.h"
#include "verify/DdpFiles.h"
#include "verify/Verification.h"

#include <QFile>
#include <QString>

namespace {

// What the verification computed for a file, matched as the DDP matches
// names: ignoring ASCII case.
QString knownMd5(const VerificationReport* verification, const std::string& name)
{
    if (!verification)
        return {};
    const QString wanted = QString::fromStdString(name);
    for (const ChecksumVerdict& verdict : verification->verdicts)
        if (verdict.algorithm == ChecksumAlgorithm::Md5 && !verdict.computed.empty() &&
            QString::fromStdString(verdict.name).compare(wanted, Qt::CaseInsensitive) == 0)
            return QString::fromStdString(verdict.computed).toLower();
    return {};
}

} // namespace

std::vector<PqSheetFile> digestDdpFiles(const IDdpFileSource& source, const DDPModel& model,
                                        const std::shared_ptr<const DiscImage>& image,
                                        const VerificationReport* verification,
                                        const std::atomic<bool>* cancel,
                                        const DigestProgress& progress)
{
    std::vector<PqSheetFile> files;
    std::vector<DigestJob> jobs;
    std::vector<std::size_t> fileOfJob;
    auto add = [&](const std::string& name, std::shared_ptr<const DiscImage> from,
                   std::uint64_t offset, std::uint64_t length) {
        PqSheetFile file{QFile::decodeName(name.c_str()), length, knownMd5(verification, name)};
        if (file.md5.isEmpty() && from) {
            DigestJob job;
            job.image = std::move(from);
            job.offset = offset;
            job.length = length;
            job.md5 = true;
            jobs.push_back(job);
            fileOfJob.push_back(files.size());
        }
        files.push_back(file);
    };
    for (const DdpFile& file : ddpFiles(source, model)) {
        const std::optional<ImageStream>& stream = file.stream;
        if (stream && image && stream->discOffset + stream->length <= image->length()) {
            add(file.name, image, stream->discOffset, stream->length);
            continue;
        }
        const std::optional<std::uint64_t> size = source.fileSize(file.name);
        if (!size)
            continue;
        std::shared_ptr<const DiscImage> whole = source.openWholeFile(file.name);
        add(file.name, whole, 0, whole ? whole->length() : *size);
    }

    const std::vector<DigestResult> results = runDigests(jobs, cancel, progress);
    for (std::size_t i = 0; i < results.size() && i < fileOfJob.size(); ++i)
        if (results[i].status == DigestResult::Done)
            files[fileOfJob[i]].md5 = QString::fromStdString(results[i].md5);
    return files;
}
