#pragma once

#include "audio/MeterInfo.h"

#include <QWidget>

class ClickableLabel;
class QHBoxLayout;
class QLabel;
class QVBoxLayout;

// The highest peak and RMS level in dB since the user last reset them. A
// click on a value lets the next record's value through, whatever it is.
class MeterNumericalDisplayWidget : public QWidget
{
    Q_OBJECT
public:
    explicit MeterNumericalDisplayWidget(QWidget* parent = nullptr);

    ClickableLabel* levelValueLabel() const { return m_levelValueLabel; }
    ClickableLabel* rmsValueLabel() const { return m_rmsValueLabel; }

    // One decimal, no unit; minus infinity shows as the infinity sign.
    static QString decibelText(double decibels);

public slots:
    void levelChanged(MeterInfo info);
    void onUpdateRms();
    void onUpdatePeak();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void setupUi();
    void retranslateUi();

    QHBoxLayout* m_horizontalLayout1 = nullptr;
    QVBoxLayout* m_verticalLayout1 = nullptr;
    QVBoxLayout* m_verticalLayout2 = nullptr;
    QLabel* m_levelCaptionLabel = nullptr;
    ClickableLabel* m_levelValueLabel = nullptr;
    QLabel* m_rmsCaptionLabel = nullptr;
    ClickableLabel* m_rmsValueLabel = nullptr;

    double m_highestPeak;
    double m_highestRms;
    bool m_resetPeak = false;
    bool m_resetRms = false;
};
