#include "verify/Verification.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DiscImage.h"
#include "ddp/ReadLimits.h"
#include "verify/DdpFiles.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <map>

namespace {

std::string lowered(std::string name)
{
    for (char& c : name)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

bool isDdpFile(const std::vector<DdpFile>& files, const std::string& name)
{
    return std::any_of(files.begin(), files.end(),
                       [&name](const DdpFile& f) { return sameNameIgnoringCase(f.name, name); });
}

} // namespace

VerificationReport::State VerificationReport::state() const
{
    if (cancelled)
        return Cancelled;
    if (verdicts.empty())
        return NoChecksumFile;
    const bool allMatch = std::all_of(verdicts.begin(), verdicts.end(), [](const auto& v) {
        return v.status == ChecksumVerdict::Match;
    });
    return allMatch ? Ok : Failed;
}

bool VerificationReport::hasErrorFindings() const
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& f) { return f.severity == Finding::Error; });
}

int VerificationReport::exitStatus() const
{
    if (hasErrorFindings())
        return 1;
    switch (state()) {
    case Ok:
        return 0;
    case NoChecksumFile:
        return 3;
    case Failed:
    case Cancelled:
        break;
    }
    return 1;
}

QString VerificationReport::recognisedFileNames() const
{
    QStringList names;
    for (const ChecksumFile& file : checksumFiles)
        if (file.format != ChecksumFile::Unrecognised)
            names << QFile::decodeName(file.fileName.c_str());
    return names.join(QStringLiteral(", "));
}

std::vector<std::string> VerificationReport::unrecognisedFileNames() const
{
    std::vector<std::string> names;
    for (const ChecksumFile& file : checksumFiles)
        if (file.format == ChecksumFile::Unrecognised)
            names.push_back(file.fileName);
    return names;
}

VerificationPlan planVerification(const IDdpFileSource& source, const DDPModel& model,
                                  const std::shared_ptr<const DiscImage>& image)
{
    VerificationPlan plan;
    VerificationReport& report = plan.report;

    std::string cdTextBytes;
    if (const std::string& cdText = model.fileNames().cdText; !cdText.empty()) {
        FileContent content = source.readFile(ddpDiskName(cdText), kMaxCdTextBytes);
        if (content.status == FileContent::Read)
            cdTextBytes = std::move(content.bytes);
    }
    report.findings = checkDisc(model, cdTextBytes);

    const std::vector<DdpFile> ddp = ddpFiles(source, model);
    for (const std::string& name : source.fileNames()) {
        if (isDdpFile(ddp, name))
            continue;
        const FileContent content = source.readFile(name, kMaxChecksumFileBytes);
        if (content.status == FileContent::TooLarge && looksLikeChecksumFileName(name))
            report.checksumFiles.push_back({name, ChecksumFile::Unrecognised, {}, 0});
        if (content.status != FileContent::Read)
            continue;
        if (std::optional<ChecksumFile> file = parseChecksumFile(name, content.bytes))
            report.checksumFiles.push_back(std::move(*file));
    }

    std::map<std::string, std::size_t> jobOfName; // lower-case name -> job
    for (const ChecksumFile& file : report.checksumFiles) {
        for (const ChecksumEntry& entry : file.entries) {
            // A checksum file listing another (or itself) is not the DDP's business.
            if (std::any_of(report.checksumFiles.begin(), report.checksumFiles.end(),
                            [&entry](const ChecksumFile& f) {
                                return sameNameIgnoringCase(f.fileName, entry.name);
                            }))
                continue;
            const std::size_t verdict = report.verdicts.size();
            report.verdicts.push_back(
                {entry.name, file.fileName, entry.algorithm, entry.expected, {}, {}});
            const std::string key = lowered(entry.name);
            auto found = jobOfName.find(key);
            if (found == jobOfName.end()) {
                DigestJob job;
                // The audio streams are read as playback reads them.
                for (const ImageStream& stream : model.imageLayout().streams) {
                    if (image && stream.discOffset <= image->length() &&
                        sameNameIgnoringCase(ddpDiskName(stream.name), entry.name)) {
                        job.image = image;
                        job.offset = stream.discOffset;
                        job.length = std::min(stream.length, image->length() - stream.discOffset);
                    }
                }
                if (!job.image) {
                    // No second try through readFile: what it would read opens
                    // whole (IDdpFileSource::openWholeFile).
                    job.image = source.openWholeFile(entry.name);
                    if (job.image)
                        job.length = job.image->length();
                }
                if (!job.image) {
                    report.verdicts[verdict].status = source.exists(entry.name)
                                                          ? ChecksumVerdict::Unreadable
                                                          : ChecksumVerdict::Missing;
                    continue;
                }
                found = jobOfName.emplace(key, plan.jobs.size()).first;
                plan.jobs.push_back(job);
                plan.verdictsOfJob.emplace_back();
            }
            DigestJob& job = plan.jobs[found->second];
            (entry.algorithm == ChecksumAlgorithm::Md5 ? job.md5 : job.crc32) = true;
            plan.verdictsOfJob[found->second].push_back(verdict);
        }
    }

    if (!report.verdicts.empty()) {
        for (const DdpFile& file : ddp) {
            const bool listed =
                std::any_of(report.verdicts.begin(), report.verdicts.end(), [&file](const auto& v) {
                    return sameNameIgnoringCase(v.name, file.name);
                });
            if (!listed && source.exists(file.name))
                report.unlisted.push_back(file.name);
        }
    }
    return plan;
}

void runVerification(VerificationPlan& plan, const std::atomic<bool>* cancel,
                     const DigestProgress& progress)
{
    const std::vector<DigestResult> results = runDigests(plan.jobs, cancel, progress);
    for (std::size_t j = 0; j < results.size(); ++j) {
        const DigestResult& result = results[j];
        if (result.status == DigestResult::Cancelled)
            plan.report.cancelled = true;
        for (std::size_t v : plan.verdictsOfJob[j]) {
            ChecksumVerdict& verdict = plan.report.verdicts[v];
            switch (result.status) {
            case DigestResult::Cancelled:
                verdict.status = ChecksumVerdict::NotChecked;
                break;
            case DigestResult::ShortRead:
                verdict.status = ChecksumVerdict::Unreadable;
                break;
            case DigestResult::Done:
                verdict.computed =
                    verdict.algorithm == ChecksumAlgorithm::Md5 ? result.md5 : result.crc32;
                verdict.status = verdict.computed == verdict.expected ? ChecksumVerdict::Match
                                                                      : ChecksumVerdict::Mismatch;
                break;
            }
        }
    }
}

VerificationReport verifyDisc(const IDdpFileSource& source, const DDPModel& model,
                              const std::shared_ptr<const DiscImage>& image)
{
    VerificationPlan plan = planVerification(source, model, image);
    runVerification(plan);
    return std::move(plan.report);
}
