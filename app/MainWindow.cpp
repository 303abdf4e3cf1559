#include "app/MainWindow.h"

#include "app/DisplayText.h"
#include "app/ErrorDialogs.h"
#include "app/MenuBar.h"
#include "app/OpenDdpDialog.h"
#include "app/SuspendWatcher.h"
#include "app/TransportController.h"
#include "archive/ArchiveDdp.h"
#include "archive/ImageUnpackJob.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpFileLookup.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpFolderCheck.h"
#include "ddp/DdpLoader.h"
#include "ddp/HiddenTrack.h"
#include "ddp/ImageLayout.h"
#include "ddp/Settings.h"
#include "export/WavExport.h"
#include "widgets/AboutDialog.h"
#include "widgets/AttributesMenu.h"
#include "widgets/CellDelegate.h"
#include "widgets/CentralWidget.h"
#include "widgets/ClickableLabel.h"
#include "widgets/ContentWidget.h"
#include "widgets/ContextMenuEventFilter.h"
#include "widgets/ControlSectionWidget.h"
#include "widgets/CustomStyle.h"
#include "widgets/FilterHeaderView.h"
#include "widgets/FrameHelper.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/LoudnessColumns.h"
#include "widgets/MeterSectionWidget.h"
#include "widgets/PqSheetSaver.h"
#include "widgets/Resources.h"
#include "widgets/SeekSlider.h"
#include "widgets/TableViewWidget.h"
#include "widgets/TimeWidget.h"
#include "widgets/ToolTipWidget.h"
#include "widgets/TransportWidget.h"
#include "widgets/VerificationLine.h"
#include "widgets/VolumeSliderWidget.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressDialog>
#include <QShortcut>
#include <QSizeGrip>
#include <QStandardItemModel>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

constexpr int kDisplayIntervalMs = 16;
constexpr int kSliderMaximum = 10000;

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), m_itemModel(new QStandardItemModel(this)),
      m_model(std::make_shared<DDPModel>()), m_chooseFolder(chooseDdpPath)
{
    initResources();
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("MainWindow"));
    resize(466, 702);

    buildWidgets();
    setWindowTitle(tr("MainWindow"));
    setWindowTitle(QStringLiteral("Tivora"));
    QMetaObject::connectSlotsByName(this);

    restoreGeometry(readSetting(kMainWindowGeometryKey).toByteArray());

    m_transportController = new TransportController(this);
    m_transportController->setTransport(&m_player);
    m_transportController->setTransportWidget(transportWidget());
    m_transportController->setTrackNumberModel(m_model);
    m_transportController->connectControls();

    timeWidget()->seekSlider()->setMaximum(kSliderMaximum);
    volumeSliderWidget()->volumeSlider()->setMaximum(kSliderMaximum);

    setAcceptDrops(true);
    setPalette(CustomStyle::darkPalette());

    m_attributesMenu = new AttributesMenu(LoudnessColumns::tableColumnNames(),
                                          m_tableViewWidget->tableView(), this);
    m_attributesMenu->installEventFilter(new ContextMenuEventFilter(m_attributesMenu));

    m_wavExport = new WavExport(this);
    m_loudness = new LoudnessColumns(m_itemModel, m_infoBox, this);
    m_pqSheet = new PqSheetSaver(this);

    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    m_frameHelper = new FrameHelper(this);
    m_frameHelper->setDragAreaWidget(m_menuBar);

    const QString device = readSetting(kAudioDeviceIdKey).toString();
    const bool audioReady = m_player.initialize(device.toStdString());

    m_menuBar->addOpenAction();
    m_menuBar->attachAttributesMenu(m_attributesMenu);
    m_menuBar->setDeviceInfos(&m_player.audioDeviceInfos());
    m_menuBar->buildDevicesMenu();
    m_menuBar->addExportAction();
    m_menuBar->addAboutAction();

    m_suspendWatcher = new SuspendWatcher(this);

    connectWidgets();
    refreshDisplay();

    // The audio problem is reported once the window can be seen behind it.
    QTimer::singleShot(0, this,
                       [this, audioReady] { checkAudioStartup(audioReady, m_player, this); });
}

MainWindow::~MainWindow()
{
    if (m_displayTimer)
        m_displayTimer->stop();
    m_transportController->setTrackNumberModel(nullptr);
    m_transportController->setTransport(nullptr);
}

void MainWindow::buildWidgets()
{
    m_centralWidget = new CentralWidget(this);
    m_centralWidget->setObjectName(QStringLiteral("centralWidget"));
    setCentralWidget(m_centralWidget);

    auto* layout = new QVBoxLayout(m_centralWidget);
    layout->setContentsMargins(6, 4, 6, 6);
    layout->setSpacing(6);

    m_menuBar = new MenuBar(m_centralWidget);
    layout->addWidget(m_menuBar);

    m_infoBox = new InfoBoxWidget(m_centralWidget);
    m_infoBox->setObjectName(QStringLiteral("infoBox"));
    layout->addWidget(m_infoBox);

    auto* content = new ContentWidget(m_centralWidget);
    content->setObjectName(QStringLiteral("contentWidget"));
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins(1, 1, 1, 1);
    m_tableViewWidget = new TableViewWidget(content);
    m_tableViewWidget->setObjectName(QStringLiteral("tableViewWidget"));
    contentLayout->addWidget(m_tableViewWidget);
    layout->addWidget(content, 1);

    m_meterSection = new MeterSectionWidget(m_centralWidget);
    m_meterSection->setObjectName(QStringLiteral("meterSection"));
    layout->addWidget(m_meterSection);

    m_controlSection = new ControlSectionWidget(m_centralWidget);
    m_controlSection->setObjectName(QStringLiteral("controlSection"));
    layout->addWidget(m_controlSection);

    auto* grip = new QSizeGrip(m_centralWidget);
    grip->setObjectName(QStringLiteral("sizeGrip"));
    m_centralWidget->setCornerWidget(grip);
}

TimeWidget* MainWindow::timeWidget() const
{
    return m_controlSection->timeWidget();
}
TransportWidget* MainWindow::transportWidget() const
{
    return m_controlSection->transportWidget();
}
VolumeSliderWidget* MainWindow::volumeSliderWidget() const
{
    return m_controlSection->volumeSliderWidget();
}

void MainWindow::connectWidgets()
{
    connect(m_transportController, &TransportController::update, this, &MainWindow::onUpdate);
    connect(m_transportController, &TransportController::reset, this, &MainWindow::onReset);
    connect(m_menuBar->minimizeButton(), &QToolButton::clicked, this, &MainWindow::onMinimize);
    connect(m_menuBar->closeButton(), &QToolButton::clicked, this,
            &MainWindow::onActionExitTriggered);
    connect(m_menuBar->openAction(), &QAction::triggered, this, &MainWindow::onActionOpenTriggered);
    connect(m_menuBar->aboutAction(), &QAction::triggered, this,
            &MainWindow::onActionAboutTriggered);
    connect(m_menuBar, &MenuBar::wavExportAllTriggered, this, &MainWindow::onWavExportAllTriggered);
    // FLAC, MP3 and the cue sheet go the way "Export as WAV" goes.
    connect(m_menuBar, &MenuBar::encodedExportAllTriggered, this, [this](ExportFormat format) {
        if (prepareExport())
            m_wavExport->exportAllTracks(m_loadedFolder, format);
    });
    connect(m_menuBar, &MenuBar::pqSheetTriggered, this, &MainWindow::onSavePqSheetTriggered);
    connect(m_menuBar, &MenuBar::cueSheetExportTriggered, this, [this] {
        if (prepareExport())
            m_wavExport->exportCueSheet(m_loadedFolder);
    });
    connect(m_menuBar, &MenuBar::audioDeviceChanged, this, &MainWindow::onAudioDeviceChanged);

    QSlider* volume = volumeSliderWidget()->volumeSlider();
    connect(volume, &QSlider::valueChanged, this, &MainWindow::onVolumeSliderValueChanged);
    connect(volume, &QSlider::sliderReleased, this, &MainWindow::onVolumeSliderReleased);
    SeekSlider* seek = timeWidget()->seekSlider();
    connect(seek, &QSlider::sliderMoved, this, &MainWindow::onSeekSliderPosChanged);
    connect(seek, &QSlider::sliderReleased, this, &MainWindow::onSeekSliderReleased);

    connect(timeWidget()->cdTimeLabel(), &ClickableLabel::clicked, this,
            &MainWindow::onCdTimeLabelClicked);
    connect(timeWidget()->cdTimeCaptionLabel(), &ClickableLabel::clicked, this,
            &MainWindow::onCdTimeLabelClicked);
    connect(timeWidget()->timeLabel(), &ClickableLabel::clicked, this,
            &MainWindow::onTrackTimeLabelClicked);
    connect(timeWidget()->timeCaptionLabel(), &ClickableLabel::clicked, this,
            &MainWindow::onTrackTimeLabelClicked);

    connect(m_suspendWatcher, &SuspendWatcher::suspending, this, &MainWindow::onSuspending);
    connect(m_frameHelper, &FrameHelper::resize, this, &MainWindow::onResize);
    connectPerLoad();
}

void MainWindow::connectPerLoad()
{
    // Made again on every load; dropping the old ones first means a second
    // load never doubles a handler.
    for (const QMetaObject::Connection& connection : qAsConst(m_perLoadConnections))
        disconnect(connection);
    m_perLoadConnections.clear();
    QTableView* view = m_tableViewWidget->tableView();
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_perLoadConnections << connect(view, &QTableView::doubleClicked, this,
                                    &MainWindow::onCellDoubleClicked);
    m_perLoadConnections << connect(view, &QWidget::customContextMenuRequested, this,
                                    &MainWindow::onContextMenuRequested);
    m_perLoadConnections << connect(m_tableViewWidget, &TableViewWidget::infoButtonClicked, this,
                                    &MainWindow::onInfoButtonClicked);
    m_perLoadConnections << connect(m_tableViewWidget, &TableViewWidget::exportAsWavButtonClicked,
                                    this, &MainWindow::onExportAsWavButtonClicked);
}

// ---- loading ----------------------------------------------------------------

void MainWindow::openPath(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        m_lastResult = {ErrorKind::InvalidPath, {}};
        showError(m_lastResult, this);
        return;
    }
    if (isZipArchivePath(path)) {
        m_ddpPath = info.absoluteFilePath();
        loadArchive(m_ddpPath);
        return;
    }
    m_ddpPath = ddpFolderForDroppedPath(path);
    openFolder(m_ddpPath);
}

void MainWindow::openFolder(const QString& folder)
{
    // Every way in (dialog, drop, command line) asks the same questions
    // before anything is parsed, so a folder reads the same whichever way
    // it came.
    const ErrorKind kind = openDialogCheck(folder);
    if (kind != ErrorKind::NoError) {
        m_lastResult = {kind, {}};
        showError(m_lastResult, this);
        return;
    }
    load(QDir(folder));
}

LoadResult MainWindow::load(const QDir& folder)
{
    beginLoad();
    const QString path = folder.absolutePath();
    if (!showLoaded(loadDdp(path, m_itemModel, *m_model)))
        return m_lastResult;

    // Every audio stream of the disc, opened now: a file swapped or removed
    // later is still read as it was loaded. One that was there for the
    // loader but cannot be opened (no permission, gone meanwhile) is a
    // missing image like any other, with the disc still in view.
    QString imageError;
    std::shared_ptr<const DiscImage> image =
        openDiscImage(path, m_model->imageLayout(), &imageError);
    if (!image)
        return failLoad({ErrorKind::ImageMissing, imageError.toStdString()});
    finishLoad(path, std::move(image));
    return m_lastResult;
}

LoadResult MainWindow::loadArchive(const QString& path)
{
    beginLoad();
    ArchiveDdp::Opened opened = ArchiveDdp::open(path);
    if (!opened.ddp) {
        m_itemModel->removeRows(0, m_itemModel->rowCount());
        m_infoBox->clear();
        return failLoad(opened.result);
    }
    LoadResult result = loadDdp(*opened.ddp, m_itemModel, *m_model);
    // An entry the directory lists but that does not unpack to what it
    // claims is the archive's fault, and nothing of it is shown.
    if (const std::string damage = opened.ddp->damage(); !damage.empty()) {
        result = {ErrorKind::ArchiveInvalid, damage};
        m_itemModel->removeRows(0, m_itemModel->rowCount());
    }
    if (!showLoaded(result))
        return m_lastResult;

    m_archive = opened.ddp;
    const ImageLayout& layout = m_model->imageLayout();
    if (m_archive->bytesToUnpack(layout) > 0) {
        startUnpacking(path);
        return m_lastResult;
    }
    LoadResult imageError;
    std::shared_ptr<const DiscImage> image = m_archive->openImage(layout, {}, nullptr, &imageError);
    if (!image)
        return failLoad(imageError);
    finishLoad(path, std::move(image));
    return m_lastResult;
}

void MainWindow::beginLoad()
{
    // A disc still unpacking is dropped, with what it has unpacked so far.
    cancelUnpacking();
    m_loudness->cancel();
    m_infoBox->verificationLine()->cancel();
    m_pqSheet->cancel();
    stopPlayer();
    resetDisplay();
    connectPerLoad();
    // Until this load succeeds nothing plays or exports: not the disc shown
    // before, and not what a failed load has put in the table.
    m_loadedFolder.clear();
    m_image.reset();
    m_files.reset();
    m_archive.reset();
    m_player.setTrackSource(nullptr);
    setPlayable(false);

    m_model = std::make_shared<DDPModel>();
    m_transportController->setTrackNumberModel(m_model);

    QTableView* view = m_tableViewWidget->tableView();
    auto* delegate = new CellDelegate(m_model, view);
    view->setItemDelegate(delegate);
    if (m_cellDelegate)
        m_cellDelegate->deleteLater();
    m_cellDelegate = delegate;
}

bool MainWindow::showLoaded(const LoadResult& result)
{
    m_lastResult = result;
    // Without its audio image a disc is still worth reading: the loader has
    // filled the table, and the engineer sees the tracks, CD-Text and ISRCs
    // behind the error, with nothing to play or export.
    const bool readable = result.kind == ErrorKind::NoError ||
                          (result.kind == ErrorKind::ImageMissing && m_itemModel->rowCount() > 0);
    if (readable) {
        m_loudness->addColumns();
        m_tableViewWidget->installModel(m_itemModel, m_model);
        m_attributesMenu->synchronize();
        m_infoBox->setModel(*m_model);
    } else {
        m_infoBox->clear();
    }
    if (result.kind != ErrorKind::NoError) {
        showError(result, this);
        return false;
    }
    return true;
}

LoadResult MainWindow::failLoad(const LoadResult& result)
{
    m_lastResult = result;
    m_archive.reset();
    showError(m_lastResult, this);
    return m_lastResult;
}

void MainWindow::finishLoad(const QString& location, std::shared_ptr<const DiscImage> image)
{
    m_loadedFolder = location;
    m_image = image;
    setWindowFilePath(location);
    m_player.setTrackSource(m_model);
    markHiddenTrack(*m_model, *m_itemModel, *image);
    m_loudness->start(m_model, image);
    // Checksums and the disc check, through the same files as playback.
    m_files = m_archive;
    if (!m_files)
        m_files = std::make_shared<FolderFileSource>(location);
    m_infoBox->verificationLine()->start(m_files, m_model, image);
    m_player.load(std::move(image), {});
    startDisplayTimer();
    refreshDisplay();
    setPlayable(true);
}

void MainWindow::startUnpacking(const QString& archivePath)
{
    if (!m_unpackJob) {
        m_unpackJob = new ImageUnpackJob(this);
        connect(m_unpackJob, &ImageUnpackJob::progress, this, &MainWindow::onUnpackProgress);
        connect(m_unpackJob, &ImageUnpackJob::unpacked, this, &MainWindow::onUnpacked);
    }
    // Not modal: the disc can be read meanwhile, another one dropped (which
    // cancels this), or the window closed.
    auto* dialog = new QProgressDialog(
        tr("Unpacking the audio of \"%1\"\u2026").arg(QFileInfo(archivePath).fileName()),
        tr("Cancel"), 0, 100, this);
    dialog->setObjectName(QStringLiteral("unpackProgressDialog"));
    dialog->setWindowTitle(tr("Opening Archive"));
    dialog->setWindowModality(Qt::NonModal);
    dialog->setMinimumDuration(0);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    dialog->setValue(0);
    connect(dialog, &QProgressDialog::canceled, this, &MainWindow::cancelUnpacking);
    m_unpackDialog = dialog;
    m_unpackLocation = archivePath;
    m_unpackJob->start(m_archive, m_model->imageLayout());
}

void MainWindow::cancelUnpacking()
{
    if (m_unpackJob && m_unpackJob->isRunning()) {
        m_unpackJob->cancel();
        // The archive goes with what was unpacked of it; the disc stays in
        // view with nothing to play, as when its image is missing.
        m_archive.reset();
    }
    if (m_unpackDialog) {
        m_unpackDialog->disconnect(this);
        m_unpackDialog->deleteLater();
        m_unpackDialog = nullptr;
    }
}

void MainWindow::onUnpackProgress(int percent)
{
    if (m_unpackDialog)
        m_unpackDialog->setValue(percent);
}

void MainWindow::onUnpacked(std::shared_ptr<const DiscImage> image, const LoadResult& result)
{
    if (m_unpackDialog) {
        m_unpackDialog->disconnect(this);
        m_unpackDialog->deleteLater();
        m_unpackDialog = nullptr;
    }
    if (!image) {
        failLoad(result);
        return;
    }
    finishLoad(m_unpackLocation, std::move(image));
}

void MainWindow::setPlayable(bool playable)
{
    m_menuBar->setExportEnabled(playable);
    m_tableViewWidget->setExportButtonsEnabled(playable);
    TransportController* transport = m_transportController;
    for (QAbstractButton* button : {transport->backButton(), transport->nextButton(),
                                    transport->stopButton(), transport->playButton()}) {
        if (button)
            button->setEnabled(playable);
    }
    transport->spaceShortcut()->setEnabled(playable);
    timeWidget()->seekSlider()->setEnabled(playable);
}

void MainWindow::stopPlayer()
{
    m_player.stop();
    blankMeters();
}

void MainWindow::blankMeters()
{
    // The player's own meter falls silent only after its fade-out; until
    // playback starts again the meters get silence, so they do not flicker
    // back up after being blanked.
    m_metersBlanked = true;
    m_meterSection->reset();
}

void MainWindow::startDisplayTimer()
{
    if (!m_displayTimer) {
        m_displayTimer = new QTimer(this);
        m_displayTimer->setObjectName(QStringLiteral("displayTimer"));
        connect(m_displayTimer, &QTimer::timeout, this, &MainWindow::onTimeout);
    }
    m_displayTimer->start(kDisplayIntervalMs);
}

// ---- slots --------------------------------------------------------------------

void MainWindow::onUpdate()
{
    // Every way to start playback ends here.
    if (m_player.isPlaying())
        m_metersBlanked = false;
    QTableView* view = m_tableViewWidget->tableView();
    const int row = m_model->currentRow();
    if (row >= 0 && view->model() && row < view->model()->rowCount() - 1)
        view->selectRow(row);
    view->viewport()->update();
}

void MainWindow::onReset()
{
    if (sender() != m_transportController)
        return;
    if (m_player.isStopped())
        timeWidget()->seekSlider()->setValue(0);
    onUpdate();
    blankMeters();
}

void MainWindow::resetDisplay()
{
    timeWidget()->seekSlider()->setValue(0);
    showTimes(0);
}

void MainWindow::onMinimize()
{
    showMinimized();
}

void MainWindow::onVolumeSliderValueChanged(int value)
{
    const double gain = value * 0.0001;
    m_player.setVolume(gain);
    volumeSliderWidget()->dBValueLabel()->setText(volumeDecibelText(value));
    volumeSliderWidget()->setDisplayedValue(value);
}

void MainWindow::onVolumeSliderReleased() {}

void MainWindow::onSeekSliderPosChanged(int value)
{
    const double length = currentTrackLength();
    const float bytes = static_cast<float>(length * 0.0001 * value);
    showTimes(static_cast<int>(static_cast<double>(bytes) / kBytesPerSecond));
}

void MainWindow::onSeekSliderReleased()
{
    m_player.seek(timeWidget()->seekSlider()->value() * 0.0001);
}

void MainWindow::onCellDoubleClicked(const QModelIndex& index)
{
    QTableView* view = m_tableViewWidget->tableView();
    if (!index.isValid() || !view->model() || index.row() >= view->model()->rowCount() - 1)
        return; // the summary row has no track
    if (m_loadedFolder.isEmpty())
        return; // rows shown without their audio image
    resetDisplay();
    m_player.selectTrack(index.row());
    m_model->setCurrentRow(m_player.currentTrackNumber());
    startDisplayTimer();
    onUpdate();
}

void MainWindow::onContextMenuRequested(const QPoint& pos)
{
    const QPoint global = m_tableViewWidget->tableView()->viewport()->mapToGlobal(pos);
    m_attributesMenu->move(global);
    m_attributesMenu->show();
}

void MainWindow::onActionOpenTriggered()
{
    stopPlayer();
    const QString start = readSetting(kDefaultLoadDirKey).toString();
    const QString chosen = m_chooseFolder(this, tr("Open DDP"), start);
    if (chosen.isEmpty())
        return;
    if (isZipArchivePath(chosen)) {
        m_ddpPath = QFileInfo(chosen).absoluteFilePath();
        loadArchive(m_ddpPath);
    } else {
        m_ddpPath = chosen;
        openFolder(m_ddpPath);
    }
    rememberParentDirectory(m_ddpPath, kDefaultLoadDirKey);
}

void MainWindow::onActionExitTriggered()
{
    close();
}

void MainWindow::onActionAboutTriggered()
{
    AboutDialog dialog(this);
    dialog.exec();
}

void MainWindow::onInfoButtonClicked(std::int32_t row, QToolButton* button)
{
    QAbstractItemModel* table = m_tableViewWidget->tableView()->model();
    if (!button || !table)
        return;
    auto* tip = new ToolTipWidget(table, row, this, button,
                                  m_model ? ToolTipWidget::frameTimeRows(*m_model, row)
                                          : ToolTipWidget::Rows());
    const QPoint centre((button->width() + 1) / 2, (button->height() + 1) / 2);
    tip->showAt(button->mapToGlobal(centre));
}

void MainWindow::onExportAsWavButtonClicked(std::int32_t row)
{
    if (prepareExport())
        m_wavExport->exportTrack(row, m_loadedFolder);
}

void MainWindow::onWavExportAllTriggered()
{
    if (prepareExport())
        m_wavExport->exportAllTracks(m_loadedFolder);
}

bool MainWindow::prepareExport()
{
    // Only a disc with its audio exports; playback stops for the dialogs.
    if (m_loadedFolder.isEmpty())
        return false;
    stopPlayer();
    m_wavExport->setDisc(m_model, m_image);
    return true;
}

void MainWindow::onSavePqSheetTriggered()
{
    if (m_loadedFolder.isEmpty())
        return;
    PqSheetSaver::Disc disc;
    disc.model = m_model;
    disc.image = m_image;
    disc.files = m_files;
    disc.location = m_loadedFolder;
    // What is known by now: a verification or analysis still running is
    // left out rather than waited for.
    const VerificationLine* verification = m_infoBox->verificationLine();
    if (!verification->isRunning() && !verification->report().cancelled)
        disc.verification = verification->report();
    disc.loudness = m_loudness->result();
    m_pqSheet->save(std::move(disc));
}

void MainWindow::onTimeout()
{
    SeekSlider* seek = timeWidget()->seekSlider();
    if (seek->isSliderDown())
        return;
    refreshDisplay();
}

void MainWindow::refreshDisplay()
{
    SeekSlider* seek = timeWidget()->seekSlider();
    const double length = currentTrackLength();
    const double position = m_player.position();
    if (length > 0)
        seek->setValue(static_cast<int>(position / length * kSliderMaximum));

    if (length > 0 && position >= length && m_player.isPlaying()) {
        m_player.onTrackEnded();
        m_model->setCurrentRow(m_player.currentTrackNumber());
        onUpdate();
    }

    showTrackNumber();
    showTimes(wholeSecondsOfBytes(m_player.position()));

    m_meterInfo = m_metersBlanked ? MeterInfo{} : m_player.meterInfo();
    // The meters fall slowly while playing and quickly once stopped (1) or
    // paused (2), so a silenced track does not look as if it still played.
    m_meterSection->setState(m_player.isPlaying() ? 0 : m_player.isPaused() ? 2 : 1);
    m_meterSection->levelChanged(m_meterInfo);
}

void MainWindow::showTrackNumber()
{
    // The player counts rows; the label shows the disc's own track number of
    // that row ("01" for the first track whether or not a pause row is shown).
    if (m_itemModel->rowCount() == 0)
        return; // nothing loaded: the label keeps its "01"
    const int row = m_player.currentTrackNumber();
    const QStandardItem* item =
        row >= 0 && row < m_itemModel->rowCount() - 1 ? m_itemModel->item(row, 1) : nullptr;
    if (item && !item->text().trimmed().isEmpty())
        timeWidget()->trackLabel()->setText(item->text());
    else
        timeWidget()->setTrackNumber(row);
}

void MainWindow::showTimes(int trackSeconds)
{
    const double length = currentTrackLength();
    timeWidget()->timeLabel()->setText(
        m_trackTimeRemaining
            ? remainingTimeText(static_cast<int>(length / kBytesPerSecond - trackSeconds))
            : signedTimeText(trackSeconds));

    const auto& entries = m_model->entries();
    const int cdSeconds = cdSecondsAt(entries, m_player.currentTrackStart()) + trackSeconds;
    if (m_cdTimeRemaining && entries.size() >= 2) {
        const int total = cdSecondsAt(
            entries, entries[entries.size() - leadOutEntryCount(entries)].bytePosition());
        timeWidget()->cdTimeLabel()->setText(remainingTimeText(total - cdSeconds));
    } else {
        timeWidget()->cdTimeLabel()->setText(signedTimeText(cdSeconds));
    }
}

double MainWindow::currentTrackLength() const
{
    return m_player.currentTrackLength();
}

void MainWindow::onCdTimeLabelClicked()
{
    m_cdTimeRemaining = !m_cdTimeRemaining;
    showTimes(wholeSecondsOfBytes(m_player.position()));
}

void MainWindow::onTrackTimeLabelClicked()
{
    m_trackTimeRemaining = !m_trackTimeRemaining;
    showTimes(wholeSecondsOfBytes(m_player.position()));
}

void MainWindow::onResize(int deltaX, int deltaY)
{
    resize(width() + deltaX, height() + deltaY);
}

void MainWindow::onAudioDeviceChanged(const QString& device)
{
    const bool ok = m_player.initialize(device.toStdString());
    checkAudioStartup(ok, m_player, this);
}

void MainWindow::onSuspending()
{
    stopPlayer();
}

// ---- events -------------------------------------------------------------------

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    const QString path = firstDroppedPath(event->mimeData());
    if (isZipArchivePath(path) || DdpDropCheck(path)) {
        event->setDropAction(event->proposedAction());
        event->accept();
    } else {
        QToolTip::showText(QCursor::pos(), tr("This is not a DDP image or folder."));
        event->ignore();
    }
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event)
{
    QMainWindow::dragMoveEvent(event);
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QString path = firstDroppedPath(event->mimeData());
    event->acceptProposedAction();
    // Loading may open a modal dialog: not inside the drag and drop handler.
    if (isZipArchivePath(path)) {
        m_ddpPath = QFileInfo(path).absoluteFilePath();
        const QString archive = m_ddpPath;
        QTimer::singleShot(0, this, [this, archive] { loadArchive(archive); });
        return;
    }
    m_ddpPath = ddpFolderForDroppedPath(path);
    const QString folder = m_ddpPath;
    QTimer::singleShot(0, this, [this, folder] { openFolder(folder); });
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // Closing would stop the export and remove the file it is writing: only
    // when the user says so.
    if (m_wavExport->isRunning()) {
        QMessageBox box(QMessageBox::Warning, tr("Export Running"),
                        tr("A WAV export is still running. Stop it and close Tivora?"),
                        QMessageBox::Yes | QMessageBox::No, this);
        box.setDefaultButton(QMessageBox::No);
        box.setEscapeButton(QMessageBox::No);
        if (box.exec() != QMessageBox::Yes) {
            event->ignore();
            return;
        }
    }
    cancelUnpacking();
    m_loudness->cancel();
    m_infoBox->verificationLine()->cancel();
    m_pqSheet->cancel();
    writeSetting(kMainWindowGeometryKey, saveGeometry());
    m_tableViewWidget->saveHeaderState();
    // Closing the device can take a moment (PulseAudio plays out what it
    // holds): the window goes first so the program feels closed at once.
    hide();
    m_player.stop();
    m_player.closeStream();
    QMainWindow::closeEvent(event);
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
}

bool MainWindow::nativeEvent(const QByteArray& eventType, void* message, long* result)
{
    if (m_frameHelper && m_frameHelper->handleNativeEvent(eventType, message, result))
        return true;
#ifdef Q_OS_WIN
    MSG* msg = static_cast<MSG*>(message);
    if (msg->message == WM_POWERBROADCAST && msg->wParam == PBT_APMSUSPEND)
        m_player.stop();
#endif
    return QMainWindow::nativeEvent(eventType, message, result);
}
