#pragma once

#include "ddp/ErrorKind.h"

class QWidget;

namespace Audio {
class IDeviceSetup;
}

// Each runs one modal box, and nothing at all when `parent` is null (a load
// that fails without a window stays silent).
void showError(const LoadResult& result, QWidget* parent);
void showError(ErrorKind kind, QWidget* parent);
void showAudioError(const LoadResult& result, Audio::IDeviceSetup& deviceSetup, QWidget* parent);

// After the device set-up at start and after the user picks a device:
// reports an unusable device, or a usable one that is not at 44100 Hz,
// through the audio error box. `setupSucceeded` is what the set-up answered.
void checkAudioStartup(bool setupSucceeded, Audio::IDeviceSetup& deviceSetup, QWidget* parent);
