#include "ddp/ErrorTexts.h"

#include "ddp/DdpFileLookup.h"
#include "ddp/ImageLayout.h"
#include "ddp/PqEntry.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("ErrorDialog", text);
}

// The list ends in "</ul" without ">": that is how the text has always read.
const char* const kProper =
    "<br><br>A proper DDP must contain the following parts:<ul><li>Audio images (IMAGE "
    "files)</li><li>DDP Identifier(DDPID)</li><li>DDP Stream descriptor(DDPMS)</li><li>Subcode "
    "descriptor(PQDESCR)</li></ul";
const char* const kUnsupported =
    "<br>The Korvane Tivora does not support your DDP.<br><br>Note: The Korvane Tivora is "
    "designed to load DDPs that were created with Quorvex.";
const char* const kNotValid = "The file that you have selected is not a valid DDP.";

} // namespace

QString errorTitle(ErrorKind kind)
{
    switch (kind) {
    case ErrorKind::SampleRateNotRecommended:
        return tr("Audio Device Sample Rate Not Recommended");
    case ErrorKind::SampleRateNotCompatible:
        return tr("Audio Device Sample Rate Not Compatible");
    case ErrorKind::ChannelConfigurationNotCompatible:
        return tr("Audio Device Channel Configuration Not Compatible");
    case ErrorKind::UnknownAudioEngineError:
        return tr("Unknown Audio Engine Error");
    case ErrorKind::InvalidPath:
        return tr("Invalid Path");
    case ErrorKind::DdpmsMissing:
    case ErrorKind::DdpidMissing:
        return tr("No DDP Selected");
    case ErrorKind::ImageMissing:
        return tr("IMAGE Missing");
    case ErrorKind::DdpidInvalid:
        return tr("DDPID Invalid");
    case ErrorKind::DdpmsInvalid:
        return tr("DDPMS Invalid");
    case ErrorKind::PqdescrInvalid:
        return tr("PQDESCR Invalid");
    case ErrorKind::UnknownError:
        return tr("Unknown Error");
    case ErrorKind::ArchiveInvalid:
        return tr("ZIP Archive Invalid");
    case ErrorKind::NoError:
        break;
    }
    return QString();
}

QString errorText(ErrorKind kind, const std::string& message)
{
    const QString proper = tr(kProper);
    const QString unsupported = tr(kUnsupported);
    switch (kind) {
    case ErrorKind::SampleRateNotRecommended:
        return tr("Your audio device is running with a sample rate that is not recommended for "
                  "Tivora. <br><br>Set the sample rate of your audio device to <b>16 bit, 44100 "
                  "Hz (CD Quality)</b>, and click <b>Rescan</b>. Otherwise a samplerate "
                  "conversion is done during playback. To select another audio device in Tivora, "
                  "open the Tivora menu and select the audio device from the <b>Devices</b> "
                  "menu.<br><br>");
    case ErrorKind::SampleRateNotCompatible:
#ifdef Q_OS_WIN
        return tr("Your audio device runs with a sample rate that is not compatible with Tivora. "
                  "<br><br>Set the sample rate of your audio device to <b>16 bit, 44100 Hz (CD "
                  "Quality)</b> and click <b>Rescan</b>. To change the sample rate of your audio "
                  "device, open the Control Panel in Windows and select <b>Sound > Properties > "
                  "Advanced > Default Format</b>. <br><br>To select another audio device in "
                  "Tivora, open the Tivora menu and select it from the <b>Devices</b> "
                  "menu.<br><br>");
#else
        // There is no Control Panel here: the desktop's sound settings, or
        // the sound server's own configuration, set the device's format.
        return tr("Your audio device runs with a sample rate that is not compatible with Tivora. "
                  "<br><br>Set the sample rate of your audio device to <b>16 bit, 44100 Hz (CD "
                  "Quality)</b> and click <b>Rescan</b>. To change the sample rate of your audio "
                  "device, open the <b>Sound</b> settings of your desktop and choose a profile of "
                  "the output device that runs 44100 Hz, or allow 44100 Hz in the configuration "
                  "of your sound server (PulseAudio or PipeWire). <br><br>To select another audio "
                  "device in Tivora, open the Tivora menu and select it from the <b>Devices</b> "
                  "menu.<br><br>");
#endif
    case ErrorKind::ChannelConfigurationNotCompatible:
        return tr("The channel configuration of your audio device is not compatible with Tivora. "
                  "Change your audio device settings to at least stereo and click "
                  "<b>Rescan</b>. To select another audio device in Tivora, open the Tivora menu "
                  "and select the audio device from the <b>Devices</b> menu.<br>");
    case ErrorKind::UnknownAudioEngineError:
        return tr("Tivora experienced an error while initializing the audio engine. <br></br> "
                  "Make sure to select an audio device that supports the recommend sample rate "
                  "of <b>16 bit, 44100 Hz (CD Quality)</b>. <br></br><br></br> Message: %1")
            .arg(QString::fromLocal8Bit(message.c_str()), 0, QLatin1Char(' '));
    case ErrorKind::InvalidPath:
        return tr("The directory you selected does not exist. Please make sure you created and "
                  "selected a proper directory. Please make also sure to hit return, if you "
                  "created a new folder or renamed it.");
    case ErrorKind::DdpmsMissing:
    case ErrorKind::DdpidMissing:
        return tr(kNotValid) + proper;
    case ErrorKind::ImageMissing:
        return tr("Tivora cannot find the IMAGE file.") + proper + unsupported;
    case ErrorKind::DdpidInvalid:
        return tr("Tivora cannot read the DDPID file.") + proper + unsupported;
    case ErrorKind::DdpmsInvalid:
        return tr("Tivora cannot read the DDPMS file.") + proper + unsupported;
    case ErrorKind::PqdescrInvalid:
        return tr("Tivora cannot read the PQ DESCR file.") + proper + unsupported;
    case ErrorKind::UnknownError:
        return tr("Tivora went into unknown issues.") + proper;
    case ErrorKind::ArchiveInvalid:
        return tr("Tivora cannot read the DDP in this ZIP archive. The archive is damaged, "
                  "truncated or encrypted, or it holds entries that Tivora does not open for "
                  "your safety: links, names that lead out of the archive, or files larger "
                  "than any disc.<br><br>Unpack the archive with a tool you trust and open the "
                  "DDP folder, or ask for a new archive.");
    case ErrorKind::NoError:
        break;
    }
    return QString();
}

QString plainErrorText(ErrorKind kind, const std::string& message)
{
    // Line breaks and list items become new lines; the rest of the markup goes.
    QString html = errorText(kind, message);
    html.replace(QRegularExpression(QStringLiteral("<br\\s*/?>|</br>|<li>")), QStringLiteral("\n"));
    html.replace(QRegularExpression(QStringLiteral("<[^>]*>?")), QString());
    html.replace(QRegularExpression(QStringLiteral("\n{3,}")), QStringLiteral("\n\n"));
    return html.trimmed();
}

QString imageShortText(std::uint64_t missingBytes)
{
    const double seconds = static_cast<double>(missingBytes) / kBytesPerSecond;
    return QStringLiteral("The audio image is %1 bytes (%2 s) shorter than the PQ descriptor "
                          "says; the end of the disc is missing.")
        .arg(missingBytes)
        .arg(seconds, 0, 'f', 2);
}

QString skippedStreamText(const SkippedStream& stream)
{
    return QStringLiteral("Data session %1 (mode %2) is not audio: not played or exported.")
        .arg(ddpFileNameFromBytes(stream.name), QString::fromLatin1(stream.mode.c_str()).trimmed());
}
