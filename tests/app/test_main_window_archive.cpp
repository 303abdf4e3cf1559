// The window with a DDP inside a ZIP archive: stored audio plays and exports
// at once from the archive itself, compressed audio is unpacked on a worker
// with a dialog that cancels it, and the unpacked files go with the disc.
#include "app/MainWindow.h"
#include "ddp/DDPModel.h"
#include "export/WavExport.h"
#include "tests/app/ModalAnswerer.h"
#include "tests/app/WindowFlows.h"
#include "tests/archive/RunZip.h"
#include "tests/support/StyledTestApp.h"
#include "tests/support/TestFolders.h"
#include "tools/mkddp/Mkddp.h"

#include <QProgressDialog>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The folders audio is unpacked into, under the program's cache folder.
QStringList unpackFolders()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                         QStringLiteral("/tivora/unpacked");
    return QDir(base).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

} // namespace

class MainWindowArchiveTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_disc;     // the folder the archives are made from
    QString m_stored;   // DISC/ inside, every entry stored
    QString m_deflated; // at the root, compressed
    QString m_long;     // compressed, long enough to cancel while it unpacks

    // Runs "Export as WAV" into a new folder; the files written, by name.
    QStringList exportAll(MainWindow& window, const QString& name)
    {
        const QString out = m_dir.filePath(name);
        QDir().mkpath(out);
        window.exporter()->setDialogs(
            {{}, [out](QWidget*, const QString&, const QString&) { return out; }, {}});
        window.onWavExportAllTriggered();
        QElapsedTimer timer;
        timer.start();
        while (window.exporter()->isRunning() && timer.elapsed() < 20000)
            QTest::qWait(20);
        QStringList files;
        for (const QFileInfo& wav :
             QDir(out).entryInfoList({QStringLiteral("*.wav")}, QDir::Files, QDir::Name))
            files << wav.absoluteFilePath();
        return files;
    }

private slots:
    void initTestCase()
    {
        useTheProgramsSettings(QStringLiteral("Tivora archive test"));
        QVERIFY(m_dir.isValid());
        m_disc = m_dir.filePath(QStringLiteral("disc"));
        QVERIFY(mkddp::writeDisc(mkddp::realisticDisc(), m_disc));
        m_stored = m_dir.filePath(QStringLiteral("stored.zip"));
        QVERIFY(runZip(m_dir.path(), {QStringLiteral("-0"), QStringLiteral("-r"), m_stored,
                                      QStringLiteral("disc")}));
        m_deflated = m_dir.filePath(QStringLiteral("deflated.zip"));
        QVERIFY(zipFolder(m_disc, m_deflated, false));
        const QString longDisc = m_dir.filePath(QStringLiteral("long"));
        QVERIFY(mkddp::writeDisc(mkddp::simpleDisc(2, 300), longDisc));
        m_long = m_dir.filePath(QStringLiteral("long.zip"));
        QVERIFY(zipFolder(longDisc, m_long, false, 1));
    }

    // Stored audio is read in place: nothing is unpacked, the disc plays at
    // once, and an export writes exactly the bytes of the folder's image.
    void aStoredArchivePlaysAndExportsInPlace()
    {
        ModalAnswerer answerer;
        MainWindow window;
        const QStringList before = unpackFolders();
        window.openPath(m_stored);
        QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
        QVERIFY(!window.isUnpacking());
        QCOMPARE(unpackFolders(), before);
        QCOMPARE(window.ddpPath(), QFileInfo(m_stored).absoluteFilePath());
        QVERIFY(window.itemModel()->rowCount() > 5);

        doubleClickRow(window, 1);
        QVERIFY(window.player().isPlaying());
        window.player().stop();

        // Every track, byte for byte as the same disc exports from its folder.
        const QStringList fromArchive = exportAll(window, QStringLiteral("from-archive"));
        MainWindow folderWindow;
        folderWindow.openPath(m_disc);
        const QStringList fromFolder = exportAll(folderWindow, QStringLiteral("from-folder"));
        QVERIFY(fromArchive.size() > 5);
        QCOMPARE(fromArchive.size(), fromFolder.size());
        for (int i = 0; i < fromArchive.size(); ++i)
            QVERIFY(readAll(fromArchive[i]) == readAll(fromFolder[i]));
        QVERIFY(answerer.loadBoxes().isEmpty());
    }

    // Compressed audio is unpacked on a worker: the dialog shows, the disc is
    // readable meanwhile, and it plays once the worker is done. Its folder
    // goes when the next disc is loaded.
    void aDeflatedArchiveUnpacksThenPlays()
    {
        ModalAnswerer answerer;
        MainWindow window;
        const QStringList before = unpackFolders();
        window.loadArchive(m_deflated);
        QVERIFY(window.isUnpacking());
        QVERIFY(window.unpackDialog());
        QVERIFY(window.itemModel()->rowCount() > 5);
        QTRY_VERIFY_WITH_TIMEOUT(!window.isUnpacking(), 20000);
        QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
        QCOMPARE(unpackFolders().size(), before.size() + 1);

        doubleClickRow(window, 1);
        QVERIFY(window.player().isPlaying());
        window.player().stop();

        window.openPath(m_disc);
        QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
        QCOMPARE(unpackFolders(), before);
        QVERIFY(answerer.loadBoxes().isEmpty());
    }

    // Cancel in the dialog, a new load and closing the window each stop the
    // unpacking at once, remove what it wrote and leave nothing playing.
    void unpackingStopsAtOnceEveryWay()
    {
        const QStringList before = unpackFolders();
        {
            ModalAnswerer answerer;
            MainWindow window;
            window.loadArchive(m_long);
            QVERIFY(window.isUnpacking());
            QElapsedTimer timer;
            timer.start();
            window.unpackDialog()->findChild<QPushButton*>()->click();
            QVERIFY(timer.elapsed() < 1000);
            QVERIFY(!window.isUnpacking());
            QCOMPARE(unpackFolders(), before);
            doubleClickRow(window, 1);
            QVERIFY(!window.player().isPlaying());
            QTest::qWait(100); // a result queued before the cancel is dropped
            QVERIFY(!window.player().isPlaying());
            QVERIFY(answerer.loadBoxes().isEmpty());
        }
        {
            ModalAnswerer answerer;
            MainWindow window;
            window.loadArchive(m_long);
            window.openPath(m_stored);
            QVERIFY(!window.isUnpacking());
            QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
            QCOMPARE(unpackFolders(), before);
        }
        {
            ModalAnswerer answerer;
            auto* window = new MainWindow;
            window->show();
            // The first close also shuts the audio stream, which the sound
            // server takes its time over: what is timed is the second.
            window->close();
            window->show();
            window->loadArchive(m_long);
            QVERIFY(window->isUnpacking());
            QElapsedTimer timer;
            timer.start();
            window->close();
            delete window;
            QVERIFY(timer.elapsed() < 500);
            QCOMPARE(unpackFolders(), before);
        }
    }

    // A ZIP is taken by a drop and by the open dialog like a folder; a
    // damaged one is refused with the archive's own error.
    void everyWayInTakesAnArchive()
    {
        ModalAnswerer answerer;
        MainWindow window;
        QVERIFY(dropOnto(window, m_stored));
        QTRY_COMPARE(window.ddpPath(), QFileInfo(m_stored).absoluteFilePath());
        QTRY_VERIFY(window.itemModel()->rowCount() > 5);

        const QString damaged = m_dir.filePath(QStringLiteral("damaged.zip"));
        QByteArray bytes = readAll(m_stored);
        bytes.truncate(bytes.size() / 2);
        QFile file(damaged);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        for (const QString& path : {m_deflated, damaged}) {
            chooseFolder(window, path);
            window.onActionOpenTriggered();
            QTRY_VERIFY_WITH_TIMEOUT(!window.isUnpacking(), 20000);
        }
        QCOMPARE(window.lastResult().kind, ErrorKind::ArchiveInvalid);
        QCOMPARE(window.itemModel()->rowCount(), 0);
        const auto boxes = answerer.loadBoxes();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().title, QStringLiteral("ZIP Archive Invalid"));
    }

    // Not a check but a look: the window while an archive unpacks, and with
    // the disc from it open, in <build>/screenshots.
    void screenshots()
    {
        const QString shots = screenshotFolder();
        ModalAnswerer answerer;
        MainWindow window;
        window.resize(700, 560);
        window.show();
        window.loadArchive(m_long);
        QTRY_VERIFY(window.unpackDialog() && window.unpackDialog()->value() > 0);
        window.grab().save(shots + QStringLiteral("/archive-window-unpacking.png"));
        window.unpackDialog()->grab().save(shots + QStringLiteral("/archive-unpack-dialog.png"));
        window.openPath(m_stored);
        QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
        QTest::qWait(50);
        window.grab().save(shots + QStringLiteral("/archive-open.png"));
    }
};

QTEST_MAIN(MainWindowArchiveTest)
#include "test_main_window_archive.moc"
