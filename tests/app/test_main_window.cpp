// The window's flows, in process and offscreen: open, drop, double-click,
// volume, Space, settings across two window lifetimes, repeated loads.
#include "app/MainWindow.h"
#include "app/MenuBar.h"
#include "app/TransportController.h"
#include "ddp/DDPModel.h"
#include "ddp/Settings.h"
#include "tests/app/ModalAnswerer.h"
#include "tests/app/WindowFlows.h"
#include "tests/support/StyledTestApp.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/LevelMeterWidget.h"
#include "widgets/LoudnessColumns.h"
#include "widgets/MeterSectionWidget.h"
#include "widgets/PqSheetSaver.h"
#include "widgets/SeekSlider.h"
#include "widgets/TableViewWidget.h"
#include "widgets/TimeWidget.h"
#include "widgets/TransportButton.h"
#include "widgets/TransportWidget.h"
#include "widgets/VerificationLine.h"
#include "widgets/VolumeSliderWidget.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMenu>
#include <QShortcut>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

class MainWindowTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_disc;

    // A folder holding empty `files`.
    QString makeFolder(const QString& name, const QStringList& files = {})
    {
        const QString path = m_dir.filePath(name);
        QDir().mkpath(path);
        for (const QString& file : files)
            QFile(path + QLatin1Char('/') + file).open(QIODevice::WriteOnly);
        return path;
    }

private slots:
    void initTestCase()
    {
        useTheProgramsSettings();
        QFile::remove(settingsFilePath());
        QVERIFY(m_dir.isValid());
        m_disc = m_dir.filePath(QStringLiteral("disc"));
        QVERIFY(mkddp::writeDisc(mkddp::realisticDisc(), m_disc));
    }

    // The Open dialog names what is missing, remembers where it was and
    // loads a real disc.
    void openFlow()
    {
        ModalAnswerer answerer;
        MainWindow window;
        for (const QString& folder :
             {makeFolder(QStringLiteral("neither")),
              makeFolder(QStringLiteral("idonly"), {QStringLiteral("DDPID")}),
              makeFolder(QStringLiteral("msonly"), {QStringLiteral("DDPMS")})}) {
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

        chooseFolder(window, m_disc);
        window.onActionOpenTriggered();
        QCOMPARE(answerer.loadBoxes().size(), 3);
        QVERIFY(window.itemModel()->rowCount() > 5);
        QVERIFY(window.displayTimer() && window.displayTimer()->isActive());
    }

    // A folder without a DDP is refused while it hovers; a file dropped
    // loads its folder.
    void dropsLoadDdpsOnly()
    {
        ModalAnswerer answerer;
        MainWindow window;
        QVERIFY(!dropOnto(window, makeFolder(QStringLiteral("plain"), {QStringLiteral("DDPID")})));
        QCOMPARE(window.itemModel()->rowCount(), 0);
        QVERIFY(dropOnto(window, m_disc + QStringLiteral("/IMAGE.DAT")));
        QTRY_VERIFY(window.itemModel()->rowCount() > 5);
        QCOMPARE(window.ddpPath(), QDir(m_disc).absolutePath());
        QVERIFY(answerer.loadBoxes().isEmpty());
    }

    void doubleClickOnTheSummaryRowDoesNothing()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        QTableView* view = window.tableViewWidget()->tableView();
        const int last = view->model()->rowCount() - 1;
        doubleClickRow(window, last);
        QVERIFY(!window.player().isPlaying());
        QCOMPARE(window.model()->currentRow(), -1);
        doubleClickRow(window, 1);
        QVERIFY(window.player().isPlaying());
        QCOMPARE(window.model()->currentRow(), 1);
        window.player().stop();
    }

    // A first pause that holds audio (a hidden track) says so in its row,
    // and a double-click there plays the pause from its first frame, not
    // track 1; a silent first pause keeps its plain "Pause".
    void aHiddenTrackIsNamedAndPlaysFromThePause()
    {
        for (const bool silent : {false, true}) {
            mkddp::DiscSpec spec = mkddp::simpleDisc(2, 4);
            spec.tracks[0].pauseFrames = mkddp::cdFrames(20);
            spec.silentPauses = silent;
            const QString folder =
                m_dir.filePath(silent ? QStringLiteral("silent") : QStringLiteral("hidden"));
            QVERIFY(mkddp::writeDisc(spec, folder));
            ModalAnswerer answerer;
            MainWindow window;
            window.openPath(folder);
            QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
            QTableView* view = window.tableViewWidget()->tableView();
            QCOMPARE(view->model()->index(0, 2).data().toString(),
                     silent ? QStringLiteral("Pause") : QStringLiteral("Hidden"));
            // Drawn as a track, not dimmed as a pause: the background of
            // the Index cell beside its text matches track 1's.
            window.resize(900, 600);
            window.show();
            const QImage shot = view->viewport()->grab().toImage();
            auto background = [&](int row) {
                const QRect cell = view->visualRect(view->model()->index(row, 2));
                return shot.pixel(cell.right() - 2, cell.center().y());
            };
            QCOMPARE(background(0) == background(1), !silent);
            if (silent)
                continue;
            doubleClickRow(window, 0, 2);
            QVERIFY(window.player().isPlaying());
            QCOMPARE(window.model()->currentRow(), 0);
            QCOMPARE(window.player().currentTrackNumber(), 0);
            QCOMPARE(window.player().currentTrackStart(), 0u); // the pause's first frame
            QCOMPARE(window.player().currentTrackLength(),
                     std::uint32_t(mkddp::indexPosition(spec, 1, 1)));
            window.player().stop();
        }
    }

    void volumeZeroShowsInfinity()
    {
        ModalAnswerer answerer;
        MainWindow window;
        VolumeSliderWidget* volume = window.volumeSliderWidget();
        const std::pair<int, QString> cases[] = {{0, QString(QChar(0x221E))},
                                                 {5000, QStringLiteral("-6.0 dB")},
                                                 {10000, QStringLiteral("0.0 dB")}};
        for (const auto& [value, text] : cases) {
            volume->volumeSlider()->setValue(value);
            QCOMPARE(volume->dBValueLabel()->text(), text);
        }
    }

    void spaceTogglesPlayAndPause()
    {
        ModalAnswerer answerer;
        MainWindow window;
        QVERIFY(showActive(window));
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
        {
            MainWindow window;
            window.openPath(m_disc);
            window.show();
            window.resize(700, 650);
            window.move(40, 30);
            window.tableViewWidget()->hideColumn(6);
            window.close();
            QVERIFY(readSetting(kMainWindowGeometryKey).isValid());
            QVERIFY(!readSetting(kHeaderKey).toByteArray().isEmpty());
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
        for (int load = 0; load < 3; ++load)
            window.openPath(m_disc);
        QVERIFY(answerer.loadBoxes().isEmpty());
        // One double-click selects once: a doubled handler would skip a track.
        QTableView* view = window.tableViewWidget()->tableView();
        QSignalSpy spy(view, &QTableView::doubleClicked);
        QVERIFY(showActive(window));
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

    // The PQ sheet from the menu prints what the window has found by then:
    // the checksum verdict, the findings and the loudness of every track.
    void thePqSheetPrintsWhatTheWindowFound()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 5);
        spec.checksums = mkddp::ChecksumStyle::Md5;
        const QString folder = m_dir.filePath(QStringLiteral("checked"));
        QVERIFY(mkddp::writeDisc(spec, folder));
        ModalAnswerer answerer;
        MainWindow window;
        QVERIFY(!window.menuBarWidget()->pqSheetAction()->isEnabled());
        window.openPath(folder);
        QVERIFY(window.menuBarWidget()->pqSheetAction()->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!window.infoBox()->verificationLine()->isRunning() &&
                                     window.loudnessColumns()->result().has_value(),
                                 20000);
        const QString out = m_dir.filePath(QStringLiteral("sheet.json"));
        window.pqSheetSaver()->setFileChooser(
            [out](QWidget*, const QString&, const QString&, const QString&) { return out; });
        window.menuBarWidget()->pqSheetAction()->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(out), 20000);
        QFile file(out);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject sheet = QJsonDocument::fromJson(file.readAll()).object();
        QVERIFY(sheet[QStringLiteral("checksums")].toString().startsWith(
            QLatin1String("Checksums OK")));
        QVERIFY(sheet[QStringLiteral("discLoudness")].toString().contains(QLatin1String("LUFS")));
        QVERIFY(!sheet[QStringLiteral("findings")].toArray().isEmpty()); // no barcode: a note
        int measured = 0;
        for (const QJsonValue& row : sheet[QStringLiteral("rows")].toArray())
            measured += row[QStringLiteral("loudnessLufs")].isDouble() ? 1 : 0;
        QCOMPARE(measured, 3);
    }

    // A disc whose audio image is missing still shows its rows (tracks,
    // CD-Text, ISRCs) behind the error, but nothing of it plays or exports,
    // and nothing of the disc before either.
    void aDiscWithoutItsImageIsShownButNotPlayable()
    {
        ModalAnswerer answerer;
        MainWindow window;
        const QString broken = m_dir.filePath(QStringLiteral("broken"));
        mkddp::DiscSpec spec = mkddp::simpleDisc(2, 3);
        spec.cdText = true;
        spec.tracks[0].text.title = QStringLiteral("Opening");
        spec.faults = {mkddp::Fault::NoImageFile};
        QVERIFY(mkddp::writeDisc(spec, broken));
        QVERIFY(showActive(window));

        // As the first disc of the window: the table is set up for it.
        window.openPath(broken);
        QVERIFY(!window.tableViewWidget()->overlayLabel());
        QVERIFY(window.tableViewWidget()->header()->isVisible());
        // After a disc that played: nothing of that one stays playable.
        window.openPath(m_disc);
        QVERIFY(window.menuBarWidget()->exportAction()->isEnabled());
        answerer.clear();
        window.openPath(broken);
        const auto boxes = answerer.loadBoxes();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().title, QStringLiteral("IMAGE Missing"));
        QCOMPARE(window.lastResult().kind, ErrorKind::ImageMissing);

        // The rows are in view.
        QTableView* view = window.tableViewWidget()->tableView();
        QCOMPARE(view->model()->rowCount(), 3); // two tracks and the total
        QCOMPARE(view->model()->index(0, 5).data().toString(), QStringLiteral("Opening"));
        QCOMPARE(window.model()->entries().empty(), false);

        // Nothing plays: not the buttons, not a double-click, not Space.
        TransportController* transport = window.transportController();
        for (QAbstractButton* button : {transport->playButton(), transport->nextButton(),
                                        transport->stopButton(), transport->backButton()})
            QVERIFY(!button->isEnabled());
        QTest::mouseClick(transport->playButton(), Qt::LeftButton);
        QVERIFY(!window.player().isPlaying());
        doubleClickRow(window, 1);
        QVERIFY(!window.player().isPlaying());
        QCOMPARE(window.model()->currentRow(), -1);
        QTest::keyClick(&window, Qt::Key_Space);
        QVERIFY(!window.player().isPlaying());
        QCOMPARE(window.player().currentTrackLength(), 0u);

        // Nothing exports: not the menu, not a row.
        QVERIFY(!window.menuBarWidget()->exportAction()->isEnabled());
        QToolButton* rowExport = window.tableViewWidget()->exportButton(0);
        QVERIFY(rowExport);
        QVERIFY(!rowExport->isEnabled());

        // The next disc with its image plays and exports again.
        window.openPath(m_disc);
        QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
        QVERIFY(transport->playButton()->isEnabled());
        QVERIFY(transport->spaceShortcut()->isEnabled());
        QVERIFY(window.menuBarWidget()->exportAction()->isEnabled());
        QVERIFY(window.tableViewWidget()->exportButton(0)->isEnabled());
        QVERIFY(window.timeWidget()->seekSlider()->isEnabled());
    }

    // With no sound server and no card there is no device at all: the box
    // says so instead of blaming a sample rate.
    void noAudioDeviceAtAllIsNamedSo()
    {
        const QByteArray server = qgetenv("PULSE_SERVER");
        qputenv("PULSE_SERVER", QFile::encodeName(m_dir.filePath(QStringLiteral("no-server"))));
        ModalAnswerer answerer;
        {
            MainWindow window;
            settle();
            if (window.player().audioDeviceInfos().deviceCount() > 0) {
                qputenv("PULSE_SERVER", server);
                QSKIP("a sound card answers without the sound server");
            }
        }
        qputenv("PULSE_SERVER", server);
        const auto boxes = answerer.boxes();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().title, QStringLiteral("Unknown Audio Engine Error"));
        QVERIFY2(boxes.first().text.contains(QLatin1String("No audio output device was found.")),
                 qPrintable(boxes.first().text));
    }

    // The command line, a drop and the Open dialog ask the same questions of
    // a folder: one holding only DDPID is "no DDP" (5), whatever way it came
    // and whatever the case of its file name.
    void everyWayInChecksTheFolderAlike()
    {
        ModalAnswerer answerer;
        MainWindow window;
        const QString idOnly =
            makeFolder(QStringLiteral("idonly-anyway"), {QStringLiteral("DDPID")});
        window.openPath(idOnly);
        QCOMPARE(window.lastResult().kind, ErrorKind::DdpmsMissing);
        window.openPath(idOnly + QStringLiteral("/DDPID"));
        QCOMPARE(window.lastResult().kind, ErrorKind::DdpmsMissing);

        // A drop is checked again, not only while it hovers: here the drag
        // that was accepted is not what is dropped.
        window.openPath(m_disc);
        QVERIFY(dropOnto(window, m_disc, idOnly));
        QTRY_COMPARE(window.lastResult().kind, ErrorKind::DdpmsMissing);

        const QString lower = makeFolder(QStringLiteral("lower"), {QStringLiteral("ddpid")});
        chooseFolder(window, lower);
        window.onActionOpenTriggered();
        QCOMPARE(window.lastResult().kind, ErrorKind::DdpmsMissing);
        window.openPath(lower);
        QCOMPARE(window.lastResult().kind, ErrorKind::DdpmsMissing);

        const auto boxes = answerer.loadBoxes();
        QCOMPARE(boxes.size(), 5);
        for (const auto& box : boxes)
            QCOMPARE(box.title, QStringLiteral("No DDP Selected"));
    }

    // Stopping and loading blank the level meter at once; it stays blank
    // until playback starts again.
    void metersBlankOnStopAndOnLoad()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        LevelMeterWidget* meter = window.meterSection()->levelMeter();
        auto lit = [meter] {
            const LevelMeterWidget::Displayed shown = meter->displayed();
            return shown.peakLeft + shown.peakRight + shown.rmsLeft + shown.rmsRight +
                   shown.holdLeft + shown.holdRight;
        };
        auto light = [meter] {
            meter->levelChanged(MeterInfo{0.4f, 0.4f, 0.9f, 0.9f});
            meter->redrawTimerExpired();
        };
        doubleClickRow(window, 1);
        QVERIFY(window.player().isPlaying());
        light();
        QVERIFY(lit() > 0.0f);
        window.transportController()->onStopReleased();
        QCOMPARE(lit(), 0.0f);
        window.onTimeout();
        meter->redrawTimerExpired();
        QCOMPARE(lit(), 0.0f);

        doubleClickRow(window, 1);
        light();
        QVERIFY(lit() > 0.0f);
        window.openPath(m_disc);
        QCOMPARE(lit(), 0.0f);
        window.player().stop();
    }

    // The remaining time reads "-MM:SS", so it is never taken for the time
    // gone by.
    void remainingTimeCarriesAMinus()
    {
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        QLabel* time = window.timeWidget()->timeLabel();
        QCOMPARE(time->text(), QStringLiteral("00:00"));
        window.onTrackTimeLabelClicked();
        QVERIFY(window.showsRemainingTime());
        QVERIFY2(time->text().startsWith(QLatin1Char('-')), qPrintable(time->text()));
        QVERIFY(time->text() != QLatin1String("-00:00"));
        QCOMPARE(time->text().size(), 6);
        window.onTrackTimeLabelClicked();
        QCOMPARE(time->text(), QStringLiteral("00:00"));
    }

    // At the smallest window the table still shows two whole rows: the size
    // grip rides in the corner and no empty band sits under the transport.
    void theTableGetsTheRoomAtTheSmallestSize()
    {
        // Row heights come from the fonts; CTest runs this case again on
        // the X server as test_main_window_x11.
        if (QGuiApplication::platformName() == QLatin1String("offscreen"))
            QSKIP("needs a real display's font metrics");
        ModalAnswerer answerer;
        MainWindow window;
        window.openPath(m_disc);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.resize(window.minimumSize());
        QTest::qWait(50);
        QTableView* view = window.tableViewWidget()->tableView();
        QVERIFY2(view->viewport()->height() >= 2 * view->rowHeight(0),
                 qPrintable(QString::number(view->viewport()->height())));
        // Each header text has room after it.
        const QFontMetrics metrics(window.tableViewWidget()->header()->font());
        for (int c = 2; c < 6; ++c) {
            const QString text = view->model()->headerData(c, Qt::Horizontal).toString();
            QVERIFY2(view->columnWidth(c) >= metrics.horizontalAdvance(text) + 16,
                     qPrintable(text));
        }
    }

    // The largest disc the loader takes, 99 tracks of 99 indexes (some 9 900
    // rows), is on screen in well under a second: the row buttons are made
    // for the rows in view, not for every row.
    void theLargestDiscLoadsQuickly()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(99, 2);
        spec.content = mkddp::AudioContent::Silence;
        for (mkddp::TrackSpec& track : spec.tracks) {
            for (int offset = 1; offset <= 98; ++offset)
                track.indexOffsets.append(offset);
        }
        const QString big = m_dir.filePath(QStringLiteral("big"));
        QVERIFY(mkddp::writeDisc(spec, big));
        ModalAnswerer answerer;
        MainWindow window;
        QVERIFY(showActive(window));
        QElapsedTimer timer;
        timer.start();
        window.openPath(big);
        QApplication::processEvents();
        const qint64 ms = timer.elapsed();
        QCOMPARE(window.lastResult().kind, ErrorKind::NoError);
        QVERIFY(window.itemModel()->rowCount() > 9800);
        // Generous against a busy machine; a button set for every row took
        // seconds here.
        QVERIFY2(ms < 1000, qPrintable(QStringLiteral("%1 ms").arg(ms)));
        TableViewWidget* table = window.tableViewWidget();
        QVERIFY(table->rowsWithWidgets() < 100);

        // Rows scrolled to get their buttons.
        QTableView* view = table->tableView();
        view->scrollToBottom();
        const int last = view->model()->rowCount() - 2;
        const int bottom = view->rowAt(view->viewport()->height() - 1);
        QVERIFY(bottom > 9000);
        QVERIFY(view->indexWidget(view->model()->index(std::min(bottom, last), 1)));
    }
};

QTEST_MAIN(MainWindowTest)
#include "test_main_window.moc"
