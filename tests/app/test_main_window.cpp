// The window's flows, in process and offscreen: open, drop, double-click,
// volume, Space, settings across two window lifetimes, repeated loads.
#include "app/MainWindow.h"
#include "app/MenuBar.h"
#include "ddp/DDPModel.h"
#include "ddp/Settings.h"
#include "tests/app/ModalAnswerer.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/FilterHeaderView.h"
#include "widgets/TableViewWidget.h"
#include "widgets/TimeWidget.h"
#include "widgets/TransportWidget.h"
#include "widgets/VolumeSliderWidget.h"

#include "widgets/TransportButton.h"

#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSettings>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

class MainWindowTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_disc;

    QString makeFolder(const QString& name, bool ddpid, bool ddpms)
    {
        const QString path = m_dir.filePath(name);
        QDir().mkpath(path);
        if (ddpid) {
            QFile f(path + QStringLiteral("/DDPID"));
            f.open(QIODevice::WriteOnly);
        }
        if (ddpms) {
            QFile f(path + QStringLiteral("/DDPMS"));
            f.open(QIODevice::WriteOnly);
        }
        return path;
    }

    static void dragAndDrop(MainWindow& window, const QString& path, bool* accepted)
    {
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton,
                              Qt::NoModifier);
        QApplication::sendEvent(&window, &enter);
        *accepted = enter.isAccepted();
        if (!*accepted)
            return;
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &drop);
    }

    // The start-up check may have opened a box about the audio device (there
    // may be none here); input reaches the window once the answerer closed it.
    static void settle()
    {
        QTest::qWait(50);
        QTRY_VERIFY(!QApplication::activeModalWidget());
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QApplication::setOrganizationName(QStringLiteral("Korvane"));
        QApplication::setApplicationName(QStringLiteral("Tivora 1.5"));
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QFile::remove(settingsFilePath());
        QVERIFY(m_dir.isValid());
        m_disc = m_dir.filePath(QStringLiteral("disc"));
        QVERIFY(mkddp::writeDisc(mkddp::realisticDisc(), m_disc));
    }

    void openFlowReportsWhatIsMissing()
    {
        ModalAnswerer answerer;
        MainWindow window;
        const QString neither = makeFolder(QStringLiteral("neither"), false, false);
        const QString idOnly = makeFolder(QStringLiteral("idonly"), true, false);
        const QString msOnly = makeFolder(QStringLiteral("msonly"), false, true);
        for (const QString& folder : {neither, idOnly, msOnly}) {
            window.setFolderChooser([folder](QWidget*, const QString& caption, const QString&) {
                return caption == QLatin1String("Open DDP") ? folder : QString();
            });
            window.onActionOpenTriggered();
        }
        const auto boxes = answerer.loadBoxes();
        QCOMPARE(boxes.size(), 3);
        for (const auto& box : boxes) {
            QCOMPARE(box.title, QStringLiteral("No DDP Selected"));
            QVERIFY(box.text.startsWith(
                QLatin1String("The file that you have selected is not a valid DDP.")));
        }
        // The next dialog starts one level above the folder last chosen.
        QCOMPARE(readSetting(kDefaultLoadDirKey).toString(), QDir(m_dir.path()).absolutePath());

        // A cancelled dialog shows nothing and remembers nothing new.
        writeSetting(kDefaultLoadDirKey, QStringLiteral("/kept"));
        window.setFolderChooser([](QWidget*, const QString&, const QString&) { return QString(); });
        window.onActionOpenTriggered();
        QCOMPARE(answerer.loadBoxes().size(), 3);
        QCOMPARE(readSetting(kDefaultLoadDirKey).toString(), QStringLiteral("/kept"));
    }

    void openFlowLoadsADisc()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.setFolderChooser(
            [this](QWidget*, const QString&, const QString&) { return m_disc; });
        window.onActionOpenTriggered();
        QVERIFY(answerer.loadBoxes().isEmpty());
        QVERIFY(window.itemModel()->rowCount() > 5);
        QVERIFY(window.displayTimer() && window.displayTimer()->isActive());
        QCOMPARE(window.displayTimer()->interval(), 16);
    }

    void dropOfAFileLoadsItsFolder()
    {
        ModalAnswerer answerer;
        MainWindow window;
        bool accepted = false;
        dragAndDrop(window, m_disc + QStringLiteral("/IMAGE.DAT"), &accepted);
        QVERIFY(accepted);
        QTRY_VERIFY(window.itemModel()->rowCount() > 5);
        QCOMPARE(window.ddpPath(), QDir(m_disc).absolutePath());
        QVERIFY(answerer.loadBoxes().isEmpty());
    }

    void nonDdpDragIsRefused()
    {
        ModalAnswerer answerer;
        MainWindow window;
        bool accepted = true;
        dragAndDrop(window, makeFolder(QStringLiteral("plain"), true, false), &accepted);
        QVERIFY(!accepted);
        QCOMPARE(window.itemModel()->rowCount(), 0);
    }

    void doubleClickOnTheSummaryRowDoesNothing()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        QTableView* view = window.tableViewWidget()->tableView();
        const int last = view->model()->rowCount() - 1;
        window.onCellDoubleClicked(view->model()->index(last, 1));
        QVERIFY(!window.player().isPlaying());
        QCOMPARE(window.model()->currentRow(), -1);
        window.onCellDoubleClicked(view->model()->index(1, 1));
        QVERIFY(window.player().isPlaying());
        QCOMPARE(window.model()->currentRow(), 1);
        window.player().stop();
    }

    void volumeZeroShowsInfinity()
    {
        ModalAnswerer answerer;
        MainWindow window;
        VolumeSliderWidget* volume = window.volumeSliderWidget();
        volume->volumeSlider()->setValue(0);
        QCOMPARE(volume->dBValueLabel()->text(), QString(QChar(0x221E)));
        volume->volumeSlider()->setValue(5000);
        QCOMPARE(volume->dBValueLabel()->text(), QStringLiteral("-6.0 dB"));
        volume->volumeSlider()->setValue(10000);
        QCOMPARE(volume->dBValueLabel()->text(), QStringLiteral("0.0 dB"));
    }

    void spaceTogglesPlayAndPause()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        settle();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        window.openPath(m_disc);
        if (window.player().lastSetupResult().kind != 0)
            QSKIP("no audio device: pausing waits for the fade-out on the audio thread");
        QTest::keyClick(&window, Qt::Key_Space);
        QVERIFY(window.player().isPlaying());
        QVERIFY(window.transportWidget()->playButton()->isChecked());
        QTest::keyClick(&window, Qt::Key_Space);
        QTRY_VERIFY(window.player().isPaused());
        QVERIFY(!window.transportWidget()->playButton()->isChecked());
        QTest::keyClick(&window, Qt::Key_Space);
        QVERIFY(window.player().isPlaying());
        window.player().stop();
    }

    void settingsPersistAcrossTwoWindows()
    {
        ModalAnswerer answerer;
        QByteArray header;
        {
            MainWindow window;
            window.openPath(m_disc);
            window.show();
            window.resize(700, 650);
            window.move(40, 30);
            window.tableViewWidget()->hideColumn(6);
            window.close();
            QVERIFY(readSetting(kMainWindowGeometryKey).isValid());
            header = readSetting(kHeaderKey).toByteArray();
            QVERIFY(!header.isEmpty());
        }
        MainWindow second;
        QCOMPARE(second.size(), QSize(700, 650));
        second.openPath(m_disc);
        QVERIFY(second.tableViewWidget()->tableView()->isColumnHidden(6));
        second.tableViewWidget()->showColumn(6);
        second.close();
    }

    void secondLoadDoesNotDoubleTheConnections()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        window.openPath(m_disc);
        window.openPath(m_disc);
        QVERIFY(answerer.loadBoxes().isEmpty());
        // One double-click selects once: a doubled handler would skip a track.
        QTableView* view = window.tableViewWidget()->tableView();
        QSignalSpy spy(view, &QTableView::doubleClicked);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        settle();
        const QRect cell = view->visualRect(view->model()->index(2, 2));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.center());
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(spy.count(), 1);
        QCOMPARE(window.model()->currentRow(), 2);
        QCOMPARE(window.player().currentTrackNumber(), 2);
        window.player().stop();
    }

    void devicesMenuListsOutputsOnly()
    {
        ModalAnswerer answerer;
        MainWindow window;
        if (window.player().lastSetupResult().kind != 0)
            QSKIP("no audio device");
        QMenu* devices = window.menuBarWidget()->devicesMenu();
        emit devices->aboutToShow();
        const auto boxes = devices->findChildren<QCheckBox*>();
        QVERIFY(!boxes.isEmpty());
        int checked = 0;
        for (QCheckBox* box : boxes) {
            QVERIFY2(!box->text().startsWith(QLatin1String("Monitor of")), qPrintable(box->text()));
            checked += box->isChecked() ? 1 : 0;
        }
        QCOMPARE(checked, 1); // the device in use
        // Choosing one stores it and keeps exactly one ticked.
        boxes.first()->setChecked(false);
        boxes.first()->setChecked(true);
        QCOMPARE(readSetting(kAudioDeviceIdKey).toString(), boxes.first()->text());
        // Opening again rebuilds the list rather than adding to it.
        emit devices->aboutToShow();
        QCOMPARE(devices->findChildren<QCheckBox*>().size(), boxes.size());
    }

    void suspendStopsPlayback()
    {
        ModalAnswerer answerer;
        MainWindow window;
        if (window.player().lastSetupResult().kind != 0)
            QSKIP("no audio device: stopping waits for the fade-out on the audio thread");
        window.openPath(m_disc);
        window.player().play();
        window.onSuspending();
        QTRY_VERIFY(window.player().isStopped());
    }

    // Nothing of the disc before stays playable or exportable behind the
    // error of a failed load.
    void aFailedLoadLeavesNothingLoaded()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        QVERIFY(window.itemModel()->rowCount() > 0);
        QVERIFY(window.menuBarWidget()->exportAction()->isEnabled());
        const QString broken = m_dir.filePath(QStringLiteral("broken"));
        mkddp::DiscSpec spec = mkddp::simpleDisc(2, 3);
        spec.faults = {mkddp::Fault::NoImageFile};
        QVERIFY(mkddp::writeDisc(spec, broken));
        window.openPath(broken);
        const auto boxes = answerer.loadBoxes();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().title, QStringLiteral("IMAGE Missing"));
        QVERIFY(window.model()->entries().empty());
        QVERIFY(!window.menuBarWidget()->exportAction()->isEnabled());
        QCOMPARE(window.player().currentTrackLength(), 0u);
        window.player().play();
        QVERIFY(!window.player().isPlaying());
    }
};

QTEST_MAIN(MainWindowTest)
#include "test_main_window.moc"
