#pragma once

#include "audio/MeterInfo.h"
#include "audio/Player.h"
#include "ddp/ErrorKind.h"

#include <QDir>
#include <QMainWindow>
#include <QModelIndex>
#include <QPointer>

#include <functional>
#include <memory>

class ArchiveDdp;
class AttributesMenu;
class CellDelegate;
class CentralWidget;
class ControlSectionWidget;
class DDPModel;
class DiscImage;
class ImageUnpackJob;
class FrameHelper;
class InfoBoxWidget;
class IDdpFileSource;
class LoudnessColumns;
class PqSheetSaver;
class MenuBar;
class MeterSectionWidget;
class QProgressDialog;
class QStandardItemModel;
class QTimer;
class QToolButton;
class SuspendWatcher;
class TableViewWidget;
class TimeWidget;
class TransportController;
class TransportWidget;
class VolumeSliderWidget;
class WavExport;

// The program's only window: it owns the loaded disc's model and the player,
// builds the widget tree, takes a DDP by the "Open DDP" dialog, a drop or the
// command line, loads it, reports failures in one dialog each, and drives the
// display from a 16 ms timer while a disc is loaded.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    // A DDP folder, a file inside one (it stands for its folder), or a ZIP
    // archive holding a DDP, as a drop would give it. Used for the
    // command-line argument.
    void openPath(const QString& path);
    // What the last open or load came to (NoError once a disc plays), the
    // kind its dialog showed.
    LoadResult lastResult() const { return m_lastResult; }
    // The load flow on a folder; the error dialog shows any failure.
    LoadResult load(const QDir& folder);
    // The same for a DDP inside a ZIP archive. Stored audio is read in place
    // and plays at once; compressed audio is unpacked first on a worker, with
    // a progress dialog that can cancel it, and the disc plays when it is
    // done (isUnpacking() until then).
    LoadResult loadArchive(const QString& path);
    bool isUnpacking() const { return m_unpackDialog != nullptr; }
    QProgressDialog* unpackDialog() const { return m_unpackDialog; }

    // The folder dialog of the open flow, replaceable so that tests can
    // answer it.
    using FolderChooser =
        std::function<QString(QWidget* parent, const QString& caption, const QString& start)>;
    void setFolderChooser(FolderChooser chooser) { m_chooseFolder = std::move(chooser); }

    Audio::Player& player() { return m_player; }
    const std::shared_ptr<DDPModel>& model() const { return m_model; }
    QStandardItemModel* itemModel() const { return m_itemModel; }
    TableViewWidget* tableViewWidget() const { return m_tableViewWidget; }
    TimeWidget* timeWidget() const;
    TransportWidget* transportWidget() const;
    VolumeSliderWidget* volumeSliderWidget() const;
    MeterSectionWidget* meterSection() const { return m_meterSection; }
    InfoBoxWidget* infoBox() const { return m_infoBox; }
    MenuBar* menuBarWidget() const { return m_menuBar; }
    TransportController* transportController() const { return m_transportController; }
    AttributesMenu* attributesMenu() const { return m_attributesMenu; }
    WavExport* exporter() const { return m_wavExport; }
    LoudnessColumns* loudnessColumns() const { return m_loudness; }
    PqSheetSaver* pqSheetSaver() const { return m_pqSheet; }
    FrameHelper* frameHelper() const { return m_frameHelper; }
    QTimer* displayTimer() const { return m_displayTimer; }
    // The disc's location: its folder, or the archive it came in.
    QString ddpPath() const { return m_ddpPath; }
    bool showsRemainingTime() const { return m_trackTimeRemaining; }

public slots:
    void onUpdate();
    void onReset();
    void onMinimize();
    void onVolumeSliderValueChanged(int value);
    void onVolumeSliderReleased();
    void onSeekSliderPosChanged(int value);
    void onSeekSliderReleased();
    void onCellDoubleClicked(const QModelIndex& index);
    void onContextMenuRequested(const QPoint& pos);
    void onActionOpenTriggered();
    void onActionExitTriggered();
    void onActionAboutTriggered();
    void onInfoButtonClicked(std::int32_t row, QToolButton* button);
    void onExportAsWavButtonClicked(std::int32_t row);
    void onWavExportAllTriggered();
    void onSavePqSheetTriggered();
    void onTimeout();
    void onCdTimeLabelClicked();
    void onTrackTimeLabelClicked();
    void onResize(int deltaX, int deltaY);
    void onAudioDeviceChanged(const QString& device);
    void onSuspending();
    void onUnpackProgress(int percent);
    void onUnpacked(std::shared_ptr<const DiscImage> image, const LoadResult& result);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool nativeEvent(const QByteArray& eventType, void* message, long* result) override;

private:
    void buildWidgets();
    void connectWidgets();
    void connectPerLoad();
    void openFolder(const QString& folder);
    // The steps every load shares: forget the disc before, show what the
    // loader read (false, with its error shown, when it failed), fail, and
    // make the disc playable from `location` (its folder or archive).
    void beginLoad();
    bool showLoaded(const LoadResult& result);
    LoadResult failLoad(const LoadResult& result);
    void finishLoad(const QString& location, std::shared_ptr<const DiscImage> image);
    void startUnpacking(const QString& archivePath);
    // Before every export: false when no disc with its audio is loaded.
    bool prepareExport();
    void cancelUnpacking();
    // Transport, seek, double-click and every export: on only while a disc
    // with its audio image is loaded.
    void setPlayable(bool playable);
    void stopPlayer();
    void blankMeters();
    void resetDisplay();
    void refreshDisplay();
    void showTimes(int trackSeconds);
    void showTrackNumber();
    double currentTrackLength() const;
    void startDisplayTimer();

    // Declaration order is construction order; destruction runs backwards.
    CentralWidget* m_centralWidget = nullptr;
    QStandardItemModel* m_itemModel = nullptr;
    std::shared_ptr<DDPModel> m_model;
    Audio::Player m_player;

    MenuBar* m_menuBar = nullptr;
    InfoBoxWidget* m_infoBox = nullptr;
    TableViewWidget* m_tableViewWidget = nullptr;
    MeterSectionWidget* m_meterSection = nullptr;
    ControlSectionWidget* m_controlSection = nullptr;

    TransportController* m_transportController = nullptr;
    QPointer<CellDelegate> m_cellDelegate;
    AttributesMenu* m_attributesMenu = nullptr;
    WavExport* m_wavExport = nullptr;
    LoudnessColumns* m_loudness = nullptr;
    PqSheetSaver* m_pqSheet = nullptr;
    FrameHelper* m_frameHelper = nullptr;
    SuspendWatcher* m_suspendWatcher = nullptr;
    QTimer* m_displayTimer = nullptr;
    FolderChooser m_chooseFolder;

    QString m_ddpPath;
    QString m_loadedFolder; // the folder or archive of the disc that plays; empty when none
    std::shared_ptr<const DiscImage> m_image;      // the audio that plays and exports
    std::shared_ptr<ArchiveDdp> m_archive;         // the archive it came from, if any
    std::shared_ptr<const IDdpFileSource> m_files; // the DDP's files: the folder or the archive
    ImageUnpackJob* m_unpackJob = nullptr;
    QProgressDialog* m_unpackDialog = nullptr;
    QString m_unpackLocation;
    MeterInfo m_meterInfo;
    bool m_metersBlanked = false; // silence to the meters until playback starts again
    LoadResult m_lastResult{ErrorKind::NoError, {}};
    bool m_cdTimeRemaining = false;
    bool m_trackTimeRemaining = false;
    QList<QMetaObject::Connection> m_perLoadConnections;
};
