// Not a check but a look: writes PNG screenshots of the presentation layer,
// styled as the program runs, into <build>/screenshots for a person to judge
// (the table with a generated disc loaded, the meters at several levels, the
// control widgets, the row popup and both error boxes). It fails only when
// something cannot be rendered or written.

#include "app/ErrorDialog.h"
#include "app/MainWindow.h"
#include "app/MenuBar.h"
#include "app/SampleRateErrorDialog.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "tests/app/ModalAnswerer.h"
#include "tests/support/StyledTestApp.h"
#include "tests/support/TestFolders.h"
#include "tests/widgets/FakeDeviceSetup.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/AboutDialog.h"
#include "widgets/AttributesMenu.h"
#include "widgets/CellDelegate.h"
#include "widgets/CentralWidget.h"
#include "widgets/ContentWidget.h"
#include "widgets/ControlSectionWidget.h"
#include "widgets/CustomStyle.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/LevelMeterWidget.h"
#include "widgets/MeterNumericalDisplayWidget.h"
#include "widgets/MeterSectionWidget.h"
#include "widgets/Resources.h"
#include "widgets/SeekSlider.h"
#include "widgets/TableViewWidget.h"
#include "widgets/TimeWidget.h"
#include "widgets/ToolTipWidget.h"
#include "widgets/TransportButton.h"
#include "widgets/TransportWidget.h"
#include "widgets/VolumeSliderWidget.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {

float fromDb(double db)
{
    // The engine reports digital silence as exactly zero.
    return db <= -200.0 ? 0.0f : float(std::pow(10.0, db / 20.0));
}

// The window's parts as the main window stacks them.
struct MockWindow
{
    CentralWidget central;
    MenuBar* menuBar;
    TableViewWidget* table;
    InfoBoxWidget* infoBox;
    MeterSectionWidget* meters;
    ControlSectionWidget* controls;

    MockWindow()
    {
        auto* layout = new QVBoxLayout(&central);
        layout->setContentsMargins(1, 1, 1, 1);
        layout->setSpacing(0);
        menuBar = new MenuBar(&central);
        layout->addWidget(menuBar);
        auto* content = new ContentWidget(&central);
        auto* contentLayout = new QVBoxLayout(content);
        contentLayout->setContentsMargins(1, 1, 1, 1);
        table = new TableViewWidget(content);
        table->setObjectName(QStringLiteral("tableViewWidget"));
        contentLayout->addWidget(table);
        layout->addWidget(content, 1);
        infoBox = new InfoBoxWidget(&central);
        infoBox->setObjectName(QStringLiteral("infoBox"));
        layout->addWidget(infoBox);
        meters = new MeterSectionWidget(&central);
        layout->addWidget(meters);
        controls = new ControlSectionWidget(&central);
        layout->addWidget(controls);
    }
};

} // namespace

class Screenshots : public QObject
{
    Q_OBJECT

    QString m_folder;
    QTemporaryDir m_discDir;
    QStandardItemModel m_table;
    std::shared_ptr<DDPModel> m_model = std::make_shared<DDPModel>();

    void save(QWidget& widget, const QString& name)
    {
        const QPixmap shot = widget.grab();
        QVERIFY2(!shot.isNull(), qPrintable(name));
        QVERIFY2(shot.save(m_folder + QLatin1Char('/') + name + QStringLiteral(".png")),
                 qPrintable(name));
    }

    void loadInto(MockWindow& window)
    {
        window.table->installModel(&m_table, m_model);
        window.table->tableView()->setItemDelegate(new CellDelegate(m_model, window.table));
        window.infoBox->setModel(*m_model);
    }

    // The real window with `disc` loaded, at its smallest and at a common
    // working size.
    void saveMainWindow(const QString& disc, const QString& name, int currentRow = -1)
    {
        MainWindow window;
        window.openPath(disc);
        if (currentRow >= 0)
            window.model()->setCurrentRow(currentRow);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        for (const QSize size :
             {window.minimumSizeHint().expandedTo(window.minimumSize()), QSize(1000, 760)}) {
            window.resize(size);
            QTest::qWait(50);
            save(window,
                 QStringLiteral("%1-%2x%3").arg(name).arg(window.width()).arg(window.height()));
        }
    }

    void setLevels(MeterSectionWidget& meters, double peakDb, double rmsDb, int ticks = 3)
    {
        const MeterInfo info{fromDb(rmsDb), fromDb(rmsDb - 1.5), fromDb(peakDb),
                             fromDb(peakDb - 2.0)};
        meters.levelMeter()->setState(0);
        for (int i = 0; i < ticks; ++i) {
            meters.levelChanged(info);
            meters.levelMeter()->redrawTimerExpired();
        }
    }

private slots:
    void initTestCase()
    {
        styleAsTheProgram();
        m_folder = screenshotFolder();

        QVERIFY(m_discDir.isValid());
        QString error;
        QVERIFY2(mkddp::writeDisc(mkddp::realisticDisc(), m_discDir.path(), &error),
                 qPrintable(error));
        const LoadResult result = loadDdp(m_discDir.path(), &m_table, *m_model);
        QCOMPARE(int(result.kind), int(ErrorKind::NoError));
        m_model->setCurrentRow(3);
    }

    void emptyWindow()
    {
        MockWindow window;
        window.central.resize(466, 702);
        window.central.show();
        QTest::qWait(1100); // the overlay's fade
        save(window.central, QStringLiteral("window-empty"));
    }

    void loadedWindow()
    {
        for (const QSize size : {QSize(466, 702), QSize(1180, 720)}) {
            MockWindow window;
            window.central.resize(size);
            loadInto(window);
            setLevels(*window.meters, -3.2, -14.0);
            window.controls->timeWidget()->setTrackNumber(3);
            window.controls->timeWidget()->setTrackTime(17);
            window.controls->timeWidget()->setCdTime(96);
            window.controls->timeWidget()->seekSlider()->setMaximum(10000);
            window.controls->timeWidget()->seekSlider()->setValue(5900);
            window.controls->volumeSliderWidget()->volumeSlider()->setValue(7079);
            window.controls->volumeSliderWidget()->setDisplayedValue(7079);
            window.controls->volumeSliderWidget()->dBValueLabel()->setText(
                QStringLiteral("-3.0 dB"));
            window.table->tableView()->selectRow(3); // the window selects the current row
            window.central.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window.central));
            save(window.central, QStringLiteral("window-loaded-%1").arg(size.width()));
            save(*window.table, QStringLiteral("table-%1").arg(size.width()));
        }
    }

    // The real window with a disc loaded; then with what the info area must
    // say about a disc: a split image with a data session left out, and a
    // first pause that holds audio (a hidden track).
    void mainWindows()
    {
        ModalAnswerer answerer; // no sound device here: the window says so in a box
        saveMainWindow(m_discDir.path(), QStringLiteral("main-window"), 3);
        mkddp::DiscSpec split = mkddp::simpleDisc(3, 10);
        split.cdText = true;
        split.album = {QStringLiteral("Enhanced Album"), QStringLiteral("The Test Band")};
        split.imageStreams = 3;
        split.dataStream = true;
        mkddp::DiscSpec hidden = mkddp::simpleDisc(3, 10);
        hidden.tracks[0].pauseFrames = mkddp::cdFrames(95);
        const std::pair<const char*, mkddp::DiscSpec> discs[] = {{"split-data", split},
                                                                 {"hidden-track", hidden}};
        for (const auto& [name, spec] : discs) {
            QTemporaryDir dir;
            QVERIFY(mkddp::writeDisc(spec, dir.path()));
            saveMainWindow(dir.path(), QStringLiteral("main-window-") + QLatin1String(name));
        }
    }

    void manyTracks()
    {
        // Enough rows for the vertical scroll bar.
        QTemporaryDir dir;
        QVERIFY(mkddp::writeDisc(mkddp::simpleDisc(30, 2), dir.path()));
        QStandardItemModel table;
        auto model = std::make_shared<DDPModel>();
        QCOMPARE(int(loadDdp(dir.path(), &table, *model).kind), int(ErrorKind::NoError));
        model->setCurrentRow(12);
        TableViewWidget widget;
        widget.resize(466, 420);
        widget.installModel(&table, model);
        widget.tableView()->setItemDelegate(new CellDelegate(model, &widget));
        widget.tableView()->scrollTo(widget.proxyModel()->index(12, 0));
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        save(widget, QStringLiteral("table-many-tracks"));
    }

    void meterLevels()
    {
        const struct
        {
            const char* name;
            double peak, rms;
        } levels[] = {{"silence", -200, -200}, {"noise-floor", -90, -96}, {"quiet", -40, -52},
                      {"moderate", -12, -22},  {"loud", -1.0, -9.0},      {"full-scale", 0, -3}};
        for (const auto& l : levels) {
            MeterSectionWidget meters;
            meters.resize(466, 62);
            setLevels(meters, l.peak, l.rms);
            save(meters, QStringLiteral("meters-%1").arg(QLatin1String(l.name)));
        }
        // A falling peak with its hold marker left behind.
        MeterSectionWidget meters;
        meters.resize(700, 62);
        setLevels(meters, -2.0, -12.0);
        meters.levelChanged(MeterInfo{fromDb(-30), fromDb(-30), fromDb(-24), fromDb(-26)});
        for (int i = 0; i < 30; ++i)
            meters.levelMeter()->redrawTimerExpired();
        save(meters, QStringLiteral("meters-falling-wide"));
    }

    void controlWidgets()
    {
        ControlSectionWidget controls;
        controls.resize(466, 140);
        save(controls, QStringLiteral("controls-initial"));
        // Playing: the play button is checked.
        auto* play = controls.transportWidget()->playButton();
        play->setCheckable(true);
        play->setChecked(true);
        save(controls, QStringLiteral("controls-playing"));
    }

    void rowPopupAndMenu()
    {
        MockWindow window;
        window.central.resize(900, 702);
        loadInto(window);
        window.central.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window.central));
        ToolTipWidget popup(window.table->proxyModel(), 3, nullptr);
        popup.show();
        save(popup, QStringLiteral("row-popup"));
        popup.hide();

        // The program menu as the menu bar fills it, the attributes inside.
        AttributesMenu menu(trackTableHeaderNames(), window.table->tableView());
        window.menuBar->addOpenAction();
        window.menuBar->attachAttributesMenu(&menu);
        window.menuBar->addExportAction();
        window.menuBar->addAboutAction();
        window.menuBar->programMenu()->popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(window.menuBar->programMenu()));
        window.menuBar->programMenu()->setActiveAction(window.menuBar->openAction());
        save(*window.menuBar->programMenu(), QStringLiteral("program-menu"));
        window.menuBar->programMenu()->close();

        window.table->hideColumn(9);
        menu.synchronize();
        menu.popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        save(menu, QStringLiteral("attributes-menu"));
        menu.close();
    }

    void dialogs()
    {
        QWidget parent;
        parent.resize(800, 700);
        AboutDialog about(&parent);
        about.show();
        QVERIFY(QTest::qWaitForWindowExposed(&about));
        save(about, QStringLiteral("about-dialog"));

        ErrorDialog error(LoadResult{ErrorKind::ImageMissing, {}}, &parent);
        error.show();
        QVERIFY(QTest::qWaitForWindowExposed(&error));
        save(error, QStringLiteral("error-dialog"));

        FakeDeviceSetup setup(48000);
        SampleRateErrorDialog audio(LoadResult{ErrorKind::SampleRateNotRecommended, {}}, setup,
                                    &parent);
        audio.show();
        QVERIFY(QTest::qWaitForWindowExposed(&audio));
        audio.rescan();
        QTest::qWait(50);
        save(audio, QStringLiteral("audio-error-dialog"));
    }
};

QTEST_MAIN(Screenshots)
#include "test_widgets_screenshots.moc"
