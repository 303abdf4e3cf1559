// tivora-ddp tracks PATH: the numbers `--track` takes for the disc, one a
// line, from its PQ descriptor alone. Nothing is verified and no audio is
// read, so that the shell's completion can ask while the user types.
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/InfoReport.h"

#include "ddp/ErrorTexts.h"
#include "export/TrackRange.h"

#include <cstdio>
#include <exception>

int runTracks(const QStringList& args)
{
    if (args.size() != 1 || args.at(0).startsWith(QLatin1String("--"))) {
        std::fputs("usage: tivora-ddp tracks PATH\n", stderr);
        return 2;
    }
    const InfoReport report = makeInfoReport(args.at(0));
    if (report.result.kind != ErrorKind::NoError) {
        std::fprintf(stderr, "tivora-ddp tracks: %s\n", qPrintable(errorTitle(report.result.kind)));
        return 1;
    }
    DDPModel& model = *report.model;
    try {
        // The same first row as play and export use.
        model.setFirstTrackNumber(model.isFirstRowPause() ? 1 : 2);
    } catch (const std::exception&) {
        return 0; // no tracks: nothing to list
    }
    for (std::size_t entry : exportedTrackEntries(model)) {
        try {
            std::printf("%d\n", model.entries()[entry].trackNumber());
        } catch (const std::exception&) {
            // A track number that does not read cannot be asked for either.
        }
    }
    return 0;
}
