#pragma once

#include "audio/MeterInfo.h"

#include <QWidget>

class LevelMeterWidget;
class MeterNumericalDisplayWidget;
class QHBoxLayout;

// The dark strip with the level meter and the numerical display side by side
// ("levelMeter" and "numericalDisplay" in "horizontalLayout1" inside
// "levelMeterHolderWidget"). Records and state go to both through it.
class MeterSectionWidget : public QWidget
{
    Q_OBJECT
public:
    explicit MeterSectionWidget(QWidget* parent = nullptr);

    LevelMeterWidget* levelMeter() const { return m_levelMeter; }
    MeterNumericalDisplayWidget* numericalDisplay() const { return m_numericalDisplay; }
    QWidget* levelMeterHolderWidget() const { return m_holder; }

public slots:
    void levelChanged(MeterInfo info);
    // Both go to the level meter: blank it (stop, new image), and tell it
    // the player's state (Audio::TransportState as a number).
    void reset();
    void setState(int state);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* m_holder = nullptr;
    QHBoxLayout* m_horizontalLayout1 = nullptr;
    LevelMeterWidget* m_levelMeter = nullptr;
    MeterNumericalDisplayWidget* m_numericalDisplay = nullptr;
};
