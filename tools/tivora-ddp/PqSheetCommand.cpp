// tivora-ddp pqsheet PATH OUT: the PQ sheet of a disc, in the format OUT's
// extension names (.pdf, .html, .txt, .json; "-" prints text). The disc is
// verified, measured and every file digested first, as the sheet prints it.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"

#include "analysis/ProgrammeParts.h"
#include "archive/ArchiveDdp.h"
#include "ddp/DdpFileSource.h"
#include "report/DdpFileDigests.h"
#include "report/PqSheet.h"
#include "report/PqSheetRender.h"
#include "verify/Verification.h"

#include <optional>

namespace {

int fail(const QString& message)
{
    return commandFailed("pqsheet", message);
}

// The disc's programme as the window measures it; nothing when a track has
// no readable end, as in the window, and the sheet goes without loudness.
std::optional<DiscLoudness> measure(const DDPModel& model, const DiscImage& image)
{
    QString error;
    const std::optional<DiscProgramme> programme = discProgramme(model, &error);
    if (!programme) {
        commandFailed("pqsheet", error + QStringLiteral(" The sheet has no loudness."));
        return std::nullopt;
    }
    const std::atomic<bool> never{false};
    return analyzeLoudness(image, programme->parts, never);
}

} // namespace

int runPqSheet(const QStringList& args)
{
    if (args.size() != 2)
        return usageError(
            "tivora-ddp pqsheet PATH OUT   (OUT: .pdf, .html, .txt, .json, or - for text)");
    const QString out = args.at(1);
    PqSheetFormat format = PqSheetFormat::Text;
    if (!pqSheetFormatForPath(out, &format))
        return fail(
            QStringLiteral("\"%1\": the extension must be .pdf, .html, .txt or .json.").arg(out));

    InfoReport report;
    QString error;
    const std::shared_ptr<const DiscImage> image = loadDiscAndImage(args.at(0), report, &error);
    if (!image)
        return fail(error);
    const DDPModel& model = *report.model;

    addVerification(report);
    const std::optional<DiscLoudness> loudness = measure(model, *image);
    PqSheetInputs inputs;
    inputs.verification = report.verification.get();
    inputs.loudness = loudness ? &*loudness : nullptr;
    const FolderFileSource folder(report.folder);
    const IDdpFileSource& source =
        report.archive ? static_cast<const IDdpFileSource&>(*report.archive) : folder;
    inputs.files = digestDdpFiles(source, model, image, inputs.verification);

    if (!writePqSheet(makePqSheet(model, inputs), format, out, &error))
        return fail(QStringLiteral("cannot write \"%1\": %2").arg(out, error));
    return 0;
}
