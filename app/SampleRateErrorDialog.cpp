#include "app/SampleRateErrorDialog.h"

#include "audio/IDeviceSetup.h"

#include <QPushButton>

namespace {

// The result line sits on the dialog's dark background: green, yellow and
// red of the usual hues, lightened until they read at a contrast of at
// least 4.5:1 there.
const QColor kUsable(76, 166, 71);
const QColor kNotRecommended(152, 152, 0);
const QColor kFailed(199, 128, 124);

} // namespace

SampleRateErrorDialog::SampleRateErrorDialog(const LoadResult& result,
                                             Audio::IDeviceSetup& deviceSetup, QWidget* parent)
    : ErrorDialog(result, parent), m_deviceSetup(deviceSetup)
{
    setIcon(QMessageBox::Critical);
    m_okButton = addButton(tr("OK"), QMessageBox::AcceptRole);
    m_rescanButton = addButton(tr("Rescan"), QMessageBox::NoRole);
    m_rescanButton->setToolTip(
        tr("<font>Rescans the audio devices. Click this button if you changed the settings of "
           "your audio device or if you specified a new default audio device.</font>"));
    // Cut the button from the box so that a click does not close it.
    m_rescanButton->disconnect();
    connect(m_rescanButton, &QPushButton::clicked, this, &SampleRateErrorDialog::rescan);
}

void SampleRateErrorDialog::showResult(const QColor& color, const QString& resultText)
{
    // resultText starts with the '"' that closes the colour attribute.
    setText(m_text + QStringLiteral("<font color= \"") + color.name() + resultText);
}

void SampleRateErrorDialog::rescan()
{
    const std::string device = m_deviceSetup.audioDeviceInfos().currentDeviceInfo().name;
    if (m_deviceSetup.rescan(device)) {
        const std::uint32_t rate =
            m_deviceSetup.audioDeviceInfos().currentDeviceInfo().preferredSampleRate;
        if (rate == 44100) {
            showResult(kUsable, tr("\">Rescan successful! The device can be used now.</font>"));
        } else {
            showResult(kNotRecommended,
                       tr("\">Rescan successful! The device can be used now but runs with a "
                          "sample rate that is not recommended (%1 Hz).</font>")
                           .arg(rate));
        }
        return;
    }

    switch (m_deviceSetup.lastError().kind) {
    case ErrorKind::SampleRateNotCompatible:
        showResult(kFailed,
                   tr("\">The sample rate of your audio device is not set to 44100 Hz.</font>"));
        break;
    case ErrorKind::ChannelConfigurationNotCompatible:
        showResult(kFailed, tr("\">The channel configuration of your audio device is not "
                               "compatible.</font>"));
        break;
    case ErrorKind::UnknownAudioEngineError:
        showResult(kFailed, tr("\">Unexpected error with your audio device.</font>"));
        break;
    default:
        break; // nothing new to tell
    }
}
