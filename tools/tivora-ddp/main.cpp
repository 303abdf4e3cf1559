// tivora-ddp: the player's loader, audio engine and export from the command
// line, for scripts and for machines without a display. Its manual page is
// docs/man/tivora-ddp.1.scd.
#include "tools/tivora-ddp/Commands.h"

#include "ddp/FileNameCodec.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QStringList>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

static int usage()
{
    std::fputs("usage: tivora-ddp info [--json] PATH\n"
               "       tivora-ddp verify [--json] PATH\n"
               "       tivora-ddp play PATH [--track N] [--seconds S] [--device NAME]\n"
               "       tivora-ddp export PATH OUTDIR [--track N] [--format wav|flac|mp3]\n"
               "       tivora-ddp cue PATH OUT.cue [--bin | --wav]\n"
               "       tivora-ddp analyze [--json] PATH\n"
               "       tivora-ddp pqsheet PATH OUT\n"
               "       tivora-ddp tracks PATH\n"
               "       tivora-ddp --help\n",
               stderr);
    return 2;
}

// The whole help, on standard output: asked for, it is the answer, not an
// error. The manual page lists the same options; a test holds them together.
static int help()
{
    std::fputs("usage: tivora-ddp COMMAND ARGUMENTS\n"
               "\n"
               "The Tivora window's loader, player, checks and export without a display.\n"
               "PATH is a DDP folder, any file inside one, or a ZIP archive holding a DDP.\n"
               "\n"
               "Commands:\n"
               "  info [--json] PATH        files, tracks, indexes, ISRCs and CD-Text of the\n"
               "                            disc; --json prints one JSON object and adds the\n"
               "                            checksums and findings (reading the whole disc)\n"
               "  verify [--json] PATH      the checksum files against the files they list,\n"
               "                            then the disc against the rules a plant applies\n"
               "  play PATH [--track N] [--seconds S] [--device NAME]\n"
               "                            play from track N (default: the first), stop\n"
               "                            after S seconds, on the audio device NAME\n"
               "  export PATH OUTDIR [--track N] [--format wav|flac|mp3]\n"
               "                            every track, or track N, into the folder OUTDIR\n"
               "  cue PATH OUT.cue [--bin | --wav]\n"
               "                            a cue sheet for a reference CD, with the audio\n"
               "                            beside it as OUT.bin (the default) or OUT.wav\n"
               "  analyze [--json] PATH     loudness, loudness range and true peak of every\n"
               "                            track and of the disc\n"
               "  pqsheet PATH OUT          the PQ sheet, as OUT's extension says: .pdf,\n"
               "                            .html, .txt or .json; OUT - prints text\n"
               "  tracks PATH               the numbers --track takes, one a line (quick:\n"
               "                            nothing verified, no audio read)\n"
               "\n"
               "Options:\n"
               "  -h, --help                print this help and exit\n"
               "\n"
               "Exit status: 0 success; 1 failure (a disc that does not load, a missing\n"
               "image, a file that cannot be written, a failed check); 2 a usage error;\n"
               "verify only: 3 when there is no checksum file to verify and no error.\n"
               "\n"
               "See tivora-ddp(1) for more.\n",
               stdout);
    return 0;
}

static bool isHelp(const QString& arg)
{
    return arg == QLatin1String("--help") || arg == QLatin1String("-h");
}

// `play` is tivora-ddp-play, next to this executable: handing the process
// over keeps the terminal, Ctrl+C and the exit status as they are.
static int handOverToPlay(const QStringList& args)
{
    const QString player =
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tivora-ddp-play"));
    if (!QFileInfo(player).isExecutable()) {
        std::fprintf(stderr, "tivora-ddp: %s is missing\n", qPrintable(player));
        return 1;
    }
#ifdef Q_OS_UNIX
    std::vector<QByteArray> storage{QFile::encodeName(player)};
    for (const QString& arg : args)
        storage.push_back(arg.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& arg : storage)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    std::fflush(nullptr);
    ::execv(argv[0], argv.data());
    std::perror("tivora-ddp: cannot start tivora-ddp-play");
    return 1;
#else
    const int status = QProcess::execute(player, args);
    return status < 0 ? 1 : status;
#endif
}

int main(int argc, char** argv)
{
    // The PQ sheet's PDF lays text out in fonts, which takes Qt's GUI side;
    // it draws on no display. Every other command stays without it.
    std::unique_ptr<QCoreApplication> app;
    if (argc > 1 && std::strcmp(argv[1], "pqsheet") == 0) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    // Before the arguments are read: folder names that are not UTF-8 open
    // too, and reach tivora-ddp-play byte for byte.
    FileNameCodec::install();
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty())
        return usage();
    // "tivora-ddp --help" and "tivora-ddp COMMAND --help" alike.
    if (isHelp(args.first()) || (args.size() == 2 && isHelp(args.at(1))))
        return help();
    const QString command = args.takeFirst();
    if (command == QLatin1String("info"))
        return runInfo(args);
    if (command == QLatin1String("play"))
        return handOverToPlay(args);
    if (command == QLatin1String("export"))
        return runExport(args);
    if (command == QLatin1String("verify"))
        return runVerify(args);
    if (command == QLatin1String("cue"))
        return runCue(args);
    if (command == QLatin1String("analyze"))
        return runAnalyze(args);
    if (command == QLatin1String("pqsheet"))
        return runPqSheet(args);
    if (command == QLatin1String("tracks"))
        return runTracks(args);
    return usage();
}
