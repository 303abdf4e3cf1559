#pragma once

#include "app/ErrorDialog.h"

class QPushButton;

namespace Audio {
class IDeviceSetup;
}

// The box for every audio-device problem. Besides OK it has "Rescan", which
// re-opens the device and appends the outcome as one coloured line; the box
// stays open so the user can fix the device settings and try again.
class SampleRateErrorDialog : public ErrorDialog
{
    Q_OBJECT
public:
    SampleRateErrorDialog(const LoadResult& result, Audio::IDeviceSetup& deviceSetup,
                          QWidget* parent = nullptr);

    QPushButton* rescanButton() const { return m_rescanButton; }
    QPushButton* okButton() const { return m_okButton; }

    // The rescan step; the Rescan button runs it.
    void rescan();

private:
    void showResult(const QColor& color, const QString& resultText);

    Audio::IDeviceSetup& m_deviceSetup;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_rescanButton = nullptr;
};
