#include "app/MenuBar.h"

#include "audio/IAudioDeviceInfos.h"
#include "ddp/Settings.h"

#include <QAction>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QToolButton>
#include <QWidgetAction>

namespace {

const char* const kNoCdRateTooltip =
    "This audio device can not run the sample rate of <b>16 bit, 44100 Hz (CD Quality)</b> to "
    "be compatible with Tivora.";
const char* const kExportTooltip =
    "<font>Export all tracks from the loaded DDP-Image to separated WAV-files. If CD-Text exists "
    "the track title is used as file name. Otherwise a generic file name is used.</font>";

QToolButton* makeWindowButton(const QString& icon, const QString& objectName, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(objectName);
    button->setIcon(QIcon(icon));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

} // namespace

MenuBar::MenuBar(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("menuBar"));
    auto* layout = new QHBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);

    m_menuButton = new QPushButton(this);
    m_menuButton->setObjectName(QStringLiteral("menuButton"));
    m_menuButton->setIcon(QIcon(QStringLiteral(":menu_icon")));
    m_menuButton->setFlat(true);
    m_menuButton->setFocusPolicy(Qt::NoFocus);
    QFont bold = m_menuButton->font();
    bold.setBold(true);
    m_menuButton->setFont(bold);

    m_programMenu = new QMenu(this);
    m_programMenu->setObjectName(QStringLiteral("programMenu"));
    m_programMenu->setToolTipsVisible(true);
    m_programMenu->installEventFilter(this);
    m_menuButton->setMenu(m_programMenu);

    m_devicesMenu = new QMenu(tr("Devices"), m_programMenu);
    m_devicesMenu->setObjectName(QStringLiteral("devicesMenu"));
    m_devicesMenu->setIcon(QIcon(QStringLiteral(":/devices_icon")));
    m_devicesMenu->setToolTipsVisible(true);
    m_devicesMenu->installEventFilter(this);

    m_minimizeButton =
        makeWindowButton(QStringLiteral(":minimize_icon"), QStringLiteral("minimizeButton"), this);
    m_closeButton =
        makeWindowButton(QStringLiteral(":close_icon"), QStringLiteral("closeButton"), this);

    layout->addWidget(m_menuButton);
    layout->addStretch();
    layout->addWidget(m_minimizeButton);
    layout->addWidget(m_closeButton);
}

void MenuBar::addOpenAction()
{
    m_openAction = m_programMenu->addAction(QIcon(QStringLiteral(":/open_icon")), tr("Open"));
    m_openAction->setObjectName(QStringLiteral("actionOpen"));
}

void MenuBar::attachAttributesMenu(QMenu* attributesMenu)
{
    attributesMenu->setTitle(tr("Attributes"));
    attributesMenu->setIcon(QIcon(QStringLiteral(":/attributes_icon")));
    attributesMenu->setToolTip(tr("Customize which columns you see in the table"));
    attributesMenu->setToolTipsVisible(true);
    attributesMenu->installEventFilter(this);
    m_programMenu->addMenu(attributesMenu);
}

void MenuBar::setDeviceInfos(Audio::IAudioDeviceInfos* deviceInfos)
{
    m_deviceInfos = deviceInfos;
}

void MenuBar::buildDevicesMenu()
{
    // A placeholder lets the submenu open; the real entries come on aboutToShow.
    m_devicesMenu->clear();
    m_devicesMenu->addAction(QStringLiteral("Dummy"));
    m_programMenu->addMenu(m_devicesMenu);
    connect(m_devicesMenu, &QMenu::aboutToShow, this, &MenuBar::refillDevicesMenu,
            Qt::UniqueConnection);
}

void MenuBar::addExportAction()
{
    m_exportAction =
        m_programMenu->addAction(QIcon(QStringLiteral(":save_icon")), tr("Export as WAV"));
    m_exportAction->setObjectName(QStringLiteral("actionExportAll"));
    m_exportAction->setToolTip(tr(kExportTooltip));
    m_exportAction->setEnabled(false);
    connect(m_exportAction, &QAction::triggered, this, &MenuBar::wavExportAllTriggered);

    const struct
    {
        QAction** action;
        ExportFormat format;
        const char* text;
        const char* name;
        const char* tooltip;
    } kEncoded[] = {
        {&m_flacExportAction, ExportFormat::Flac, "Export as FLAC", "actionExportAllFlac",
         "<font>Export all tracks to FLAC files (lossless), tagged from the CD-Text, ISRCs "
         "and UPC/EAN.</font>"},
        {&m_mp3ExportAction, ExportFormat::Mp3, "Export as MP3", "actionExportAllMp3",
         "<font>Export all tracks to MP3 files at 320 kb/s for listening copies, tagged from "
         "the CD-Text, ISRCs and UPC/EAN.</font>"},
    };
    for (const auto& entry : kEncoded) {
        QAction* action =
            m_programMenu->addAction(QIcon(QStringLiteral(":save_icon")), tr(entry.text));
        action->setObjectName(QLatin1String(entry.name));
        action->setToolTip(tr(entry.tooltip));
        action->setEnabled(false);
        const ExportFormat format = entry.format;
        connect(action, &QAction::triggered, this,
                [this, format] { emit encodedExportAllTriggered(format); });
        *entry.action = action;
    }
    m_cueSheetAction = m_programMenu->addAction(QIcon(QStringLiteral(":save_icon")),
                                                tr("Export Cue Sheet for a Reference CD…"));
    m_cueSheetAction->setObjectName(QStringLiteral("actionExportCueSheet"));
    m_cueSheetAction->setToolTip(tr(
        "<font>A cue sheet and the disc's image as a BIN or WAV file beside it: burning them gives "
        "the disc's tracks, indexes, ISRCs, flags and CD-Text.</font>"));
    m_cueSheetAction->setEnabled(false);
    connect(m_cueSheetAction, &QAction::triggered, this, &MenuBar::cueSheetExportTriggered);

    m_pqSheetAction =
        m_programMenu->addAction(QIcon(QStringLiteral(":save_icon")), tr("Save PQ Sheet…"));
    m_pqSheetAction->setObjectName(QStringLiteral("actionSavePqSheet"));
    m_pqSheetAction->setToolTip(
        tr("<font>The PQ sheet for the plant: every index to the frame, ISRCs, CD-Text, "
           "checksums, the disc check and loudness, as PDF, HTML, text or JSON.</font>"));
    m_pqSheetAction->setEnabled(false);
    connect(m_pqSheetAction, &QAction::triggered, this, &MenuBar::pqSheetTriggered);
}

void MenuBar::addAboutAction()
{
    m_aboutAction = m_programMenu->addAction(QIcon(QStringLiteral(":/about_icon")), tr("About"));
    m_aboutAction->setObjectName(QStringLiteral("actionAbout"));
}

void MenuBar::setExportEnabled(bool enabled)
{
    for (QAction* action : {m_exportAction, m_flacExportAction, m_mp3ExportAction, m_cueSheetAction,
                            m_pqSheetAction}) {
        if (action)
            action->setEnabled(enabled);
    }
}

void MenuBar::refillDevicesMenu()
{
    m_devicesMenu->clear();
    if (!m_deviceInfos)
        return;
    const std::string current = m_deviceInfos->currentDeviceInfo().name;
    const unsigned count = m_deviceInfos->deviceCount();
    for (unsigned i = 0; i < count; ++i) {
        const Audio::AudioDeviceInfo device = m_deviceInfos->deviceInfo(i);
        if (!device.hasOutput)
            continue; // input-only devices (a sink's monitor) cannot play
        const QString name = QString::fromStdString(device.name);
        auto* box = new QCheckBox(name, m_devicesMenu);
        QPalette palette = box->palette();
        palette.setColor(QPalette::WindowText, palette.color(QPalette::Text));
        box->setPalette(palette);
        if (Audio::supportsCdSampleRate(device)) {
            box->setChecked(device.name == current);
            box->setToolTip(name);
        } else {
            box->setChecked(false);
            box->setEnabled(false);
            box->setToolTip(tr(kNoCdRateTooltip));
        }
        // Room after the longest name, so the text does not end at the edge.
        box->setMinimumWidth(box->sizeHint().width() + 16);
        auto* action = new QWidgetAction(m_devicesMenu);
        action->setDefaultWidget(box);
        action->setToolTip(box->toolTip());
        m_devicesMenu->addAction(action);
        connect(box, &QCheckBox::toggled, this, [this, box] { onDeviceToggled(box); });
    }
}

void MenuBar::onDeviceToggled(QCheckBox* chosen)
{
    // Exactly one device stays checked, the chosen one even when it already was.
    const auto boxes = m_devicesMenu->findChildren<QCheckBox*>();
    for (QCheckBox* box : boxes) {
        const QSignalBlocker blocker(box);
        box->setChecked(box == chosen);
    }
    const QString device = chosen->text();
    writeSetting(kAudioDeviceIdKey, device);
    emit audioDeviceChanged(device);
}

bool MenuBar::eventFilter(QObject* watched, QEvent* event)
{
    // A click on a check box entry (a device, a column) toggles it and keeps
    // the menu open, so several can be changed in one go.
    if (event->type() == QEvent::MouseButtonRelease) {
        if (auto* menu = qobject_cast<QMenu*>(watched)) {
            QAction* action = menu->activeAction();
            if (action && action->isEnabled() &&
                (action->isCheckable() || qobject_cast<QWidgetAction*>(action))) {
                action->setEnabled(false);
                action->setEnabled(true);
                event->accept();
                action->trigger();
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}
