// tivora-ddp info [--json] PATH: what the window would show for a DDP, for
// scripts and for checking a master on a machine without a display.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"

int runInfo(const QStringList& args)
{
    const std::optional<PathArguments> arguments = parsePathArguments(args);
    if (!arguments)
        return usageError("tivora-ddp info [--json] PATH");
    const bool json = arguments->json;

    InfoReport report = makeInfoReport(arguments->path);
    if (json)
        addVerification(report);
    writeOut(json ? infoReportJson(report) : infoReportText(report));
    return report.result.kind == ErrorKind::NoError ? 0 : 1;
}
