// Tivora: a player for DDP disc images.
//   tivora [PATH]   PATH is a DDP folder, a file inside one, or a ZIP archive
//                   holding a DDP, opened at start
#include "app/MainWindow.h"
#include "archive/UnpackFolder.h"
#include "ddp/FileNameCodec.h"
#include "widgets/CustomStyle.h"

#include <QApplication>
#include <QDateTime>
#include <QSettings>
#include <QStringList>
#include <QTimer>

#include <cstdio>
#include <cstring>

// Answered before QApplication exists: the help needs no display and opens
// no window. The manual page is docs/man/tivora.1.scd.
static bool printHelpIfAsked(int argc, char* argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") != 0 && std::strcmp(argv[i], "-h") != 0)
            continue;
        std::fputs("usage: tivora [PATH]\n"
                   "\n"
                   "A player for DDP disc images. PATH, a DDP folder, any file inside one\n"
                   "or a ZIP archive holding a DDP, is opened at start.\n"
                   "\n"
                   "Options:\n"
                   "  -h, --help   print this help and exit\n"
                   "\n"
                   "See tivora(1) for more, and tivora-ddp(1) for the command line.\n",
                   stdout);
        return true;
    }
    return false;
}

int main(int argc, char* argv[])
{
    if (printHelpIfAsked(argc, argv))
        return 0;
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    QApplication app(argc, argv);
    // Before the arguments are read: folder names that are not UTF-8 open too.
    FileNameCodec::install();
    QApplication::setOrganizationName(QStringLiteral("Korvane"));
    const QString major = QStringLiteral("1");
    const QString minor = QStringLiteral("5");
    QApplication::setApplicationName(QStringLiteral("Tivora %1.%2").arg(major, minor));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QApplication::setStyle(new CustomStyle);
    // Audio unpacked by a run that crashed goes now, not at its next archive.
    UnpackFolder::removeStale(UnpackFolder::defaultBase());

    MainWindow window;
    window.show();

    // An optional path, for "Open With" and scripts: loaded as a drop would be.
    const QStringList args = QApplication::arguments();
    if (args.size() > 1) {
        const QString path = args.at(1);
        QMetaObject::invokeMethod(
            &window,
            [&window, path] {
                window.openPath(path);
                // For measuring start-up: quit once the loaded disc is on screen.
                if (qEnvironmentVariableIsSet("TIVORA_QUIT_AFTER_LOAD")) {
                    window.repaint();
                    std::fprintf(stderr, "loaded-and-shown %lld\n",
                                 static_cast<long long>(QDateTime::currentMSecsSinceEpoch()));
                    QTimer::singleShot(0, qApp, &QApplication::quit);
                }
            },
            Qt::QueuedConnection);
    }
    return QApplication::exec();
}
