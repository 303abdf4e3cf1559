#pragma once

#include "export/TrackEncoder.h"

#include <QWidget>

class QAction;
class QCheckBox;
class QMenu;
class QPushButton;
class QToolButton;

namespace Audio {
class IAudioDeviceInfos;
}

// The strip at the top of the frameless window: the program menu button, then
// minimize and close. The devices submenu is rebuilt every time it opens, so
// a device plugged in while the program runs shows up without a restart.
class MenuBar : public QWidget
{
    Q_OBJECT
public:
    explicit MenuBar(QWidget* parent = nullptr);

    // Called by the window, in this order, once it has created the menu bar.
    void addOpenAction();
    void attachAttributesMenu(QMenu* attributesMenu);
    void setDeviceInfos(Audio::IAudioDeviceInfos* deviceInfos);
    void buildDevicesMenu();
    void addExportAction();
    void addAboutAction();

    void setExportEnabled(bool enabled);

    QAction* openAction() const { return m_openAction; }
    QAction* aboutAction() const { return m_aboutAction; }
    QAction* exportAction() const { return m_exportAction; }
    // "Export as FLAC", "Export as MP3" and "Export Cue Sheet…", beside
    // "Export as WAV" and enabled with it.
    QAction* flacExportAction() const { return m_flacExportAction; }
    QAction* mp3ExportAction() const { return m_mp3ExportAction; }
    QAction* cueSheetAction() const { return m_cueSheetAction; }
    // "Save PQ Sheet…", enabled with the exports.
    QAction* pqSheetAction() const { return m_pqSheetAction; }
    QToolButton* closeButton() const { return m_closeButton; }
    QToolButton* minimizeButton() const { return m_minimizeButton; }
    QPushButton* menuButton() const { return m_menuButton; }
    QMenu* programMenu() const { return m_programMenu; }
    QMenu* devicesMenu() const { return m_devicesMenu; }

signals:
    // The user chose a device; it is already stored under "audioDeviceId".
    void audioDeviceChanged(const QString& device);
    void wavExportAllTriggered();
    void encodedExportAllTriggered(ExportFormat format);
    void cueSheetExportTriggered();
    void pqSheetTriggered();
    void rescanTriggered();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refillDevicesMenu();
    void onDeviceToggled(QCheckBox* box);

    QPushButton* m_menuButton;
    QToolButton* m_minimizeButton;
    QToolButton* m_closeButton;
    QMenu* m_programMenu;
    QMenu* m_devicesMenu;
    QAction* m_openAction = nullptr;
    QAction* m_exportAction = nullptr;
    QAction* m_flacExportAction = nullptr;
    QAction* m_mp3ExportAction = nullptr;
    QAction* m_cueSheetAction = nullptr;
    QAction* m_pqSheetAction = nullptr;
    QAction* m_aboutAction = nullptr;
    Audio::IAudioDeviceInfos* m_deviceInfos = nullptr;
};
