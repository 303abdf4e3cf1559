// The edges that touch the file system: folder and drop checks, the
// case-insensitive file lookup, loading from a folder, and the settings file.
#include "DdpTestBytes.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileLookup.h"
#include "ddp/DdpFolderCheck.h"
#include "ddp/DdpLoader.h"
#include "ddp/Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QMimeData>
#include <QSettings>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace testbytes;

Q_DECLARE_METATYPE(ErrorKind)

namespace {

Files soundFiles()
{
    return discFiles(simpleEntries(2, {60, 90}));
}

} // namespace

class TestDdpFolder : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // The settings file goes into the temporary folder, not the user's.
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("xdg"))));
        QCoreApplication::setOrganizationName(QStringLiteral("Korvane"));
        QCoreApplication::setApplicationName(
            QStringLiteral("Tivora %1.%2").arg(QStringLiteral("1"), QStringLiteral("5")));
        QSettings::setDefaultFormat(QSettings::IniFormat);
    }

    void openDialogAsksForDdpidFirst_data()
    {
        QTest::addColumn<bool>("ddpid");
        QTest::addColumn<bool>("ddpms");
        QTest::addColumn<ErrorKind>("kind");
        QTest::newRow("neither") << false << false << ErrorKind::DdpidMissing;
        QTest::newRow("DDPID only") << true << false << ErrorKind::DdpmsMissing;
        QTest::newRow("DDPMS only") << false << true << ErrorKind::DdpidMissing;
        QTest::newRow("both") << true << true << ErrorKind::NoError;
    }

    void openDialogAsksForDdpidFirst()
    {
        QFETCH(bool, ddpid);
        QFETCH(bool, ddpms);
        QFETCH(ErrorKind, kind);
        const QString folder = path(QString::fromLatin1(QTest::currentDataTag()));
        Files files;
        if (ddpid)
            files["DDPID"] = testbytes::ddpid();
        if (ddpms)
            files["DDPMS"] = testbytes::ddpms();
        QVERIFY(writeFolder(folder, files));
        QCOMPARE(openDialogCheck(folder), kind);
        QCOMPARE(DdpFolderCheck(folder), kind == ErrorKind::NoError);
        QCOMPARE(DdpDropCheck(folder), kind == ErrorKind::NoError);
    }

    void dropsStandForTheirFolder()
    {
        const QString folder = path(QStringLiteral("drop"));
        QVERIFY(writeFolder(folder, soundFiles()));
        const QString image = folder + QStringLiteral("/IMAGE.DAT");
        QVERIFY(DdpDropCheck(image));
        QCOMPARE(ddpFolderForDroppedPath(image), QDir(folder).absolutePath());
        QCOMPARE(ddpFolderForDroppedPath(folder), QDir(folder).absolutePath());
        QVERIFY(!DdpDropCheck(QString()));
        QVERIFY(!DdpDropCheck(path(QStringLiteral("nothing here"))));

        QFile::remove(folder + QStringLiteral("/DDPMS"));
        QVERIFY(!DdpDropCheck(image));
        QVERIFY(!DdpDropCheck(folder));

        QMimeData mime;
        QCOMPARE(firstDroppedPath(&mime), QString());
        QCOMPARE(firstDroppedPath(nullptr), QString());
        mime.setUrls({QUrl::fromLocalFile(image), QUrl::fromLocalFile(folder)});
        QCOMPARE(firstDroppedPath(&mime), image);
    }

    void fileNamesAreFoundWhateverTheirCase()
    {
        // A DDP written on a case-insensitive system: the map says upper
        // case, the files are lower case, in a folder with a Unicode name.
        const QString folder = path(QStringLiteral("Mästerung 日本 ♪"));
        Files lower;
        for (const auto& [name, content] : soundFiles())
            lower[QString::fromStdString(name).toLower().toStdString()] = content;
        QVERIFY(writeFolder(folder, lower));
        QVERIFY(DdpFolderCheck(folder));
        QCOMPARE(openDialogCheck(folder), ErrorKind::NoError);
        QStandardItemModel table;
        DDPModel model;
        QCOMPARE(loadDdp(folder, &table, model).kind, ErrorKind::NoError);
        QCOMPARE(table.rowCount(), 3);

        // The exact name wins when both exist.
        QVERIFY(writeFolder(folder, {{"IMAGE.DAT", "x"}}));
        QCOMPARE(resolveDdpFile(folder, QStringLiteral("IMAGE.DAT")),
                 folder + QStringLiteral("/IMAGE.DAT"));
        QCOMPARE(resolveDdpFile(folder, QStringLiteral("image.dat")),
                 folder + QStringLiteral("/image.dat"));
        QVERIFY(QFile::exists(resolveDdpFile(folder, QStringLiteral("Image.Dat"))));
        QCOMPARE(resolveDdpFile(folder, QStringLiteral("none")), folder + QStringLiteral("/none"));
        // Zero padding from the map, as a caller may pass it on.
        QCOMPARE(resolveDdpFile(folder, QString::fromStdString(std::string("IMAGE.DAT\0\0\0", 12))),
                 folder + QStringLiteral("/IMAGE.DAT"));
    }

    void loadingFromAFolder()
    {
        const QString folder = path(QStringLiteral("load"));
        Files files = soundFiles();
        files["DDPMS"] = ddpms("IMAGE.DAT", "PQDESCR", "CD TEXT.BIN");
        {
            Block b;
            b.lastTrack = 2;
            b.texts[0x80] = {"Album", "One", "Two"};
            files["CDTEXT.BIN"] = cdTextBlock(b);
        }
        QVERIFY(writeFolder(folder, files));
        QStandardItemModel table;
        DDPModel model;
        QCOMPARE(loadDdp(folder, &table, model).kind, ErrorKind::NoError);
        QCOMPARE(table.item(1, 5)->text(), QStringLiteral("Two"));

        // The image name must name a file; an empty one is the folder itself.
        QFile::remove(folder + QStringLiteral("/IMAGE.DAT"));
        DDPModel second;
        QCOMPARE(loadDdp(folder, &table, second).kind, ErrorKind::ImageMissing);
        QCOMPARE(table.rowCount(), 3);
        QVERIFY(writeFolder(folder, {{"DDPMS", ddpms("", "", "")}}));
        QCOMPARE(loadDdp(folder, &table, second).kind, ErrorKind::PqdescrInvalid);
    }

    void settingsFile()
    {
        const QString file = settingsFilePath();
        QCOMPARE(file, path(QStringLiteral("xdg/Korvane/Tivora 1.5/preferences.ini")));
        QFile::remove(file);
        QVERIFY(!readSetting(kDefaultLoadDirKey).isValid());

        // Each write opens and closes the store, so both keys persist.
        writeSetting(kAudioDeviceIdKey, QStringLiteral("pulse"));
        writeSetting(kHeaderKey, QByteArray("\x01\x02", 2));
        QCOMPARE(readSetting(kAudioDeviceIdKey).toString(), QStringLiteral("pulse"));
        QCOMPARE(readSetting(kHeaderKey).toByteArray(), QByteArray("\x01\x02", 2));
        QVERIFY(QFile::exists(file));

        // One level up from the chosen folder; nothing for an empty path or
        // a folder without a parent.
        const QString ddp = path(QStringLiteral("drop"));
        rememberParentDirectory(ddp, kDefaultLoadDirKey);
        QCOMPARE(readSetting(kDefaultLoadDirKey).toString(), QDir(m_dir.path()).absolutePath());
        rememberParentDirectory(QString(), kDefaultLoadDirKey);
        rememberParentDirectory(QStringLiteral("/"), kDefaultLoadDirKey);
        QCOMPARE(readSetting(kDefaultLoadDirKey).toString(), QDir(m_dir.path()).absolutePath());
        rememberParentDirectory(ddp + QStringLiteral("/track01.wav"), kDefaultExportDirKey);
        QCOMPARE(readSetting(kDefaultExportDirKey).toString(), ddp);
        QFile::remove(file);
    }
};

QTEST_GUILESS_MAIN(TestDdpFolder)
#include "test_ddp_folder.moc"
