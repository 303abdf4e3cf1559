#pragma once

#include <QWidget>

class TimeWidget;
class TransportWidget;
class VolumeSliderWidget;

// The transport panel: the time display with its seek slider across the
// top, the transport buttons and the volume below ("timeWidget",
// "transportWidget", "volumeSliderWidget").
class ControlSectionWidget : public QWidget
{
    Q_OBJECT
public:
    explicit ControlSectionWidget(QWidget* parent = nullptr);

    TimeWidget* timeWidget() const { return m_timeWidget; }
    TransportWidget* transportWidget() const { return m_transportWidget; }
    VolumeSliderWidget* volumeSliderWidget() const { return m_volumeSliderWidget; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    TimeWidget* m_timeWidget = nullptr;
    TransportWidget* m_transportWidget = nullptr;
    VolumeSliderWidget* m_volumeSliderWidget = nullptr;
};
