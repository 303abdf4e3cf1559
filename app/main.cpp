// Tivora: a player for DDP disc images.
//   tivora [PATH]   PATH is a DDP folder or a file inside one, opened at start
#include "app/MainWindow.h"
#include "widgets/CustomStyle.h"

#include <QApplication>
#include <QSettings>
#include <QStringList>

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Korvane"));
    const QString major = QStringLiteral("1");
    const QString minor = QStringLiteral("5");
    QApplication::setApplicationName(QStringLiteral("Tivora %1.%2").arg(major, minor));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QApplication::setStyle(new CustomStyle);

    MainWindow window;
    window.show();

    // An optional path, for "Open With" and scripts: loaded as a drop would be.
    const QStringList args = QApplication::arguments();
    if (args.size() > 1) {
        const QString path = args.at(1);
        QMetaObject::invokeMethod(
            &window, [&window, path] { window.openPath(path); }, Qt::QueuedConnection);
    }
    return QApplication::exec();
}
