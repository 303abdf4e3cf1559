// tivora-ddp pqsheet PATH OUT: the PQ sheet of a disc, in the format OUT's
// extension names (.pdf, .html, .txt, .json; "-" prints text). The disc is
// verified, measured and every file digested first, as the sheet prints it.
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/InfoReport.h"
#include "tools/tivora-ddp/TerminalText.h"

#include "analysis/LoudnessAnalysis.h"
#include "archive/ArchiveDdp.h"
#include "ddp/DdpFileSource.h"
#include "ddp/ErrorTexts.h"
#include "export/TrackRange.h"
#include "report/DdpFileDigests.h"
#include "report/PqSheet.h"
#include "report/PqSheetRender.h"
#include "verify/Verification.h"

#include <cstdio>
#include <exception>

namespace {

int usage()
{
    std::fputs(
        "usage: tivora-ddp pqsheet PATH OUT   (OUT: .pdf, .html, .txt, .json, or - for text)\n",
        stderr);
    return 2;
}

int fail(const QString& message)
{
    const QByteArray text =
        QStringLiteral("tivora-ddp pqsheet: %1\n").arg(terminalText(message)).toLocal8Bit();
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
    return 1;
}

// The disc's programme as the window measures it: every exported track and
// the pauses between them.
DiscLoudness measure(const DDPModel& model, const DiscImage& image)
{
    std::vector<TrackSpan> spans;
    for (std::size_t entry : exportedTrackEntries(model)) {
        try {
            const TrackRange range = trackRange(model.entries(), entry);
            spans.push_back({range.start, range.end});
        } catch (const std::exception&) {
            spans.push_back({0, 0}); // no readable end: nothing to measure, keeps its place
        }
    }
    const std::vector<PqEntry>& entries = model.entries();
    const qint64 leadOut =
        entries.size() >= 2 ? byteOffset(entries[entries.size() - leadOutEntryCount(entries)]) : 0;
    const std::atomic<bool> never{false};
    return analyzeLoudness(image, programmeParts(spans, leadOut), never);
}

} // namespace

int runPqSheet(const QStringList& args)
{
    if (args.size() != 2)
        return usage();
    const QString out = args.at(1);
    PqSheetFormat format = PqSheetFormat::Text;
    if (!pqSheetFormatForPath(out, &format))
        return fail(
            QStringLiteral("\"%1\": the extension must be .pdf, .html, .txt or .json.").arg(out));

    InfoReport report = makeInfoReport(args.at(0));
    if (report.result.kind != ErrorKind::NoError)
        return fail(
            errorTitle(report.result.kind) +
            (report.result.message.empty()
                 ? QString()
                 : QStringLiteral(" (%1)").arg(QString::fromStdString(report.result.message))));
    DDPModel& model = *report.model;
    try {
        model.setFirstTrackNumber(model.isFirstRowPause() ? 1 : 2);
    } catch (const std::exception&) {
        return fail(QStringLiteral("The DDP has no tracks."));
    }
    LoadResult imageError;
    const std::shared_ptr<const DiscImage> image = openReportImage(report, &imageError);
    if (!image)
        return fail(QStringLiteral("The audio image cannot be read (%1).")
                        .arg(QString::fromStdString(imageError.message)));

    addVerification(report);
    const DiscLoudness loudness = measure(model, *image);
    PqSheetInputs inputs;
    inputs.verification = report.verification.get();
    inputs.loudness = &loudness;
    const FolderFileSource folder(report.folder);
    const IDdpFileSource& source =
        report.archive ? static_cast<const IDdpFileSource&>(*report.archive) : folder;
    inputs.files = digestDdpFiles(source, model, report.files, image, inputs.verification);

    QString error;
    if (!writePqSheet(makePqSheet(model, inputs), format, out, &error))
        return fail(QStringLiteral("cannot write \"%1\": %2").arg(out, error));
    return 0;
}
