#pragma once

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QSlider;
class QVBoxLayout;

// The volume caption, its dB and percent read-outs and the slider (0 to
// 10000, linear gain × 10000). The window writes the dB text; the percent
// text comes from setDisplayedValue.
class VolumeSliderWidget : public QWidget
{
    Q_OBJECT
public:
    explicit VolumeSliderWidget(QWidget* parent = nullptr);

    // Shows a slider value as whole percent ("100 %").
    void setDisplayedValue(int value);

    QLabel* volumeLabel() const { return m_volumeLabel; }
    QLabel* dBValueLabel() const { return m_dBValueLabel; }
    QLabel* volumeValueLabel() const { return m_volumeValueLabel; }
    QSlider* volumeSlider() const { return m_volumeSlider; }

private:
    void setupUi();
    void retranslateUi();

    QVBoxLayout* m_verticalLayout = nullptr;
    QVBoxLayout* m_verticalLayout2 = nullptr;
    QHBoxLayout* m_horizontalLayout = nullptr;
    QHBoxLayout* m_horizontalLayout2 = nullptr;
    QLabel* m_volumeLabel = nullptr;
    QLabel* m_dBValueLabel = nullptr;
    QLabel* m_volumeValueLabel = nullptr;
    QSlider* m_volumeSlider = nullptr;
};
