// tivora-ddp tracks PATH: the numbers `--track` takes for the disc, one a
// line, from its PQ descriptor alone. Nothing is verified and no audio is
// read, so that the shell's completion can ask while the user types.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"

#include "ddp/TrackRange.h"

#include <cstdio>
#include <exception>

int runTracks(const QStringList& args)
{
    if (args.size() != 1 || args.at(0).startsWith(QLatin1String("--")))
        return usageError("tivora-ddp tracks PATH");
    InfoReport report = makeInfoReport(args.at(0));
    if (report.result.kind != ErrorKind::NoError)
        return commandFailed("tracks", loadErrorTitle(report.result));
    // A disc without tracks lists nothing.
    if (report.model->indexList().empty())
        return 0;
    QByteArray out;
    for (std::size_t entry : exportedTrackEntries(*report.model)) {
        try {
            out += QByteArray::number(report.model->entries()[entry].trackNumber()) + '\n';
        } catch (const std::exception&) {
            // A track number that does not read cannot be asked for either.
        }
    }
    writeOut(out);
    return 0;
}
