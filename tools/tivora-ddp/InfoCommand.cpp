// tivora-ddp info [--json] PATH: what the window would show for a DDP, for
// scripts and for checking a master on a machine without a display.
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/InfoReport.h"

#include <QFileInfo>

#include <cstdio>

namespace {

int usage()
{
    std::fputs("usage: tivora-ddp info [--json] PATH\n", stderr);
    return 2;
}

} // namespace

int runInfo(const QStringList& args)
{
    bool json = false;
    QString path;
    for (const QString& arg : args) {
        if (arg == QLatin1String("--json"))
            json = true;
        else if (arg.startsWith(QLatin1String("--")) || !path.isEmpty())
            return usage();
        else
            path = arg;
    }
    if (path.isEmpty())
        return usage();

    InfoReport report = makeInfoReport(path);
    if (json)
        addVerification(report);
    const QByteArray text = json ? infoReportJson(report) : infoReportText(report);
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
    return report.result.kind == ErrorKind::NoError ? 0 : 1;
}
