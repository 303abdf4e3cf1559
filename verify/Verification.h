#pragma once

#include "verify/ChecksumFile.h"
#include "verify/DigestRun.h"
#include "verify/DiscCheck.h"

#include <QString>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

class DDPModel;
class DiscImage;
class IDdpFileSource;

// One file named in a checksum file, and what reading it found.
struct ChecksumVerdict
{
    enum Status
    {
        NotChecked, // not yet read, or the run was cancelled
        Match,
        Mismatch,
        Missing,    // listed, but the DDP has no such file
        Unreadable, // there, but it could not be read whole
    };
    std::string name; // as the checksum file writes it
    std::string checksumFile;
    ChecksumAlgorithm algorithm = ChecksumAlgorithm::Md5;
    std::string expected;
    std::string computed;
    Status status = NotChecked;
};

// Everything a verification says about a disc: one model that the info
// line, the details dialog and the command line each render.
struct VerificationReport
{
    enum State
    {
        Ok,             // every listed file matches
        Failed,         // a listed file is missing, unreadable or does not match
        NoChecksumFile, // nothing to verify (at most files of a format not known)
        Cancelled,
    };
    std::vector<ChecksumFile> checksumFiles; // recognised ones and those of unknown format
    std::vector<ChecksumVerdict> verdicts;
    std::vector<std::string> unlisted; // files of the DDP that no checksum file lists
    std::vector<Finding> findings;
    bool cancelled = false;

    State state() const;
    bool hasErrorFindings() const;
    // 0: every listed file matches and no finding is an error; 1: otherwise;
    // 3: nothing to verify and no error.
    int exitStatus() const;
    // The checksum files of a known format, by name: "CHECKSUM.MD5".
    QString recognisedFileNames() const;
    std::vector<std::string> unrecognisedFileNames() const;
};

// A verification ready to run: the checksum files found and parsed, the
// disc check done, and the files to read.
struct VerificationPlan
{
    VerificationReport report;
    std::vector<DigestJob> jobs;
    // For each job, the verdicts it decides.
    std::vector<std::vector<std::size_t>> verdictsOfJob;
};

// Looks for checksum files beside the DDP's own (by content, then by name),
// matches the names they list to the DDP's files ignoring case, and runs the
// disc check. The DDP's own files are those the model's load found (see
// DdpFiles.h). The audio image's streams are read through `image`, the disc
// as playback opened it (null when it has none); every other file through
// `source`. Reads only small files: safe on any thread.
VerificationPlan planVerification(const IDdpFileSource& source, const DDPModel& model,
                                  const std::shared_ptr<const DiscImage>& image);

// Reads every file once and fills in the verdicts. Stops between blocks when
// `cancel` is set; the report then says Cancelled.
void runVerification(VerificationPlan& plan, const std::atomic<bool>* cancel = nullptr,
                     const DigestProgress& progress = {});

// The whole run in one call, for the command line and tests.
VerificationReport verifyDisc(const IDdpFileSource& source, const DDPModel& model,
                              const std::shared_ptr<const DiscImage>& image);
