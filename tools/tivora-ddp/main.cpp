// tivora-ddp: the player's loader, audio engine and export from the command
// line, for scripts and for machines without a display.
#include "tools/tivora-ddp/Commands.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

static int usage()
{
    std::fputs("usage: tivora-ddp info [--json] PATH\n"
               "       tivora-ddp play PATH [--track N] [--seconds S] [--device NAME]\n"
               "       tivora-ddp export PATH OUTDIR [--track N]\n",
               stderr);
    return 2;
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty())
        return usage();
    const QString command = args.takeFirst();
    if (command == QLatin1String("info"))
        return runInfo(args);
    if (command == QLatin1String("play"))
        return runPlay(args);
    if (command == QLatin1String("export"))
        return runExport(args);
    return usage();
}
