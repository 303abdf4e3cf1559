#include "app/ErrorDialogs.h"

#include "app/ErrorDialog.h"
#include "app/SampleRateErrorDialog.h"
#include "audio/IDeviceSetup.h"

void showError(const LoadResult& result, QWidget* parent)
{
    if (!parent)
        return;
    ErrorDialog dialog(result, parent);
    dialog.exec();
}

void showError(ErrorKind kind, QWidget* parent)
{
    showError(LoadResult{kind, std::string()}, parent);
}

void showAudioError(const LoadResult& result, Audio::IDeviceSetup& deviceSetup, QWidget* parent)
{
    if (!parent)
        return;
    SampleRateErrorDialog dialog(result, deviceSetup, parent);
    dialog.exec();
}

void checkAudioStartup(bool setupSucceeded, Audio::IDeviceSetup& deviceSetup, QWidget* parent)
{
    if (setupSucceeded) {
        const std::uint32_t rate =
            deviceSetup.audioDeviceInfos().currentDeviceInfo().preferredSampleRate;
        if (rate != 44100)
            showAudioError(LoadResult{ErrorKind::SampleRateNotRecommended, std::string()},
                           deviceSetup, parent);
        return;
    }
    const LoadResult error = deviceSetup.lastError();
    switch (error.kind) {
    case ErrorKind::SampleRateNotCompatible:
    case ErrorKind::ChannelConfigurationNotCompatible:
        showAudioError(LoadResult{error.kind, std::string()}, deviceSetup, parent);
        break;
    case ErrorKind::UnknownAudioEngineError:
        showAudioError(LoadResult{error.kind, error.message}, deviceSetup, parent);
        break;
    default:
        break;
    }
}
