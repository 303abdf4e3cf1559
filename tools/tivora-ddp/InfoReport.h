#pragma once

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/ErrorKind.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

class ArchiveDdp;
class DiscImage;
class QStandardItemModel;
struct VerificationReport;

// Everything `tivora-ddp info` reports about one path, gathered the way the
// window does it: the path must exist (4), the open dialog's check (6, then
// 5), then the load (7 to 12).
struct InfoReport
{
    QString folder;                      // the DDP folder; for an archive, the archive
    std::shared_ptr<ArchiveDdp> archive; // set when the DDP lies in a ZIP archive
    LoadResult result;
    std::shared_ptr<QStandardItemModel> table;
    std::shared_ptr<DDPModel> model;
    // Checksums and the disc check, when they were asked for ("checksums"
    // and "findings" in the JSON).
    std::shared_ptr<const VerificationReport> verification;
};

// Verifies a loaded report's disc: its checksum files and the disc check.
void addVerification(InfoReport& report);

// PATH is a DDP folder, a file inside one, which stands for its folder, or a
// ZIP archive holding a DDP (a regular file whose name ends in ".zip").
InfoReport makeInfoReport(const QString& path);

// The disc's audio of a loaded report, wherever it lies. Compressed audio in
// an archive is unpacked first, with `progress` called as it goes (done and
// total bytes). Nothing on failure, with `error` saying why.
std::shared_ptr<const DiscImage>
openReportImage(const InfoReport& report, LoadResult* error,
                const std::function<void(std::uint64_t, std::uint64_t)>& progress = {});

// One JSON object and a new line.
QByteArray infoReportJson(const InfoReport& report);
// A table for a person.
QByteArray infoReportText(const InfoReport& report);
