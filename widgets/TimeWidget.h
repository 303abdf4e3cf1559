#pragma once

#include <QWidget>

class ClickableLabel;
class QGridLayout;
class QLabel;
class QVBoxLayout;
class SeekSlider;

// Track number, track time and CD time over the seek slider. The window sets
// the texts; a click on a time caption or value emits the label's clicked().
class TimeWidget : public QWidget
{
    Q_OBJECT
public:
    explicit TimeWidget(QWidget* parent = nullptr);

    // Whole seconds as "MM:SS" (minutes run past 59).
    void setTrackTime(int seconds);
    void setCdTime(int seconds);
    // Two digits, "01".
    void setTrackNumber(int number);

    QLabel* trackCaptionLabel() const { return m_trackCaptionLabel; }
    ClickableLabel* timeCaptionLabel() const { return m_timeCaptionLabel; }
    ClickableLabel* cdTimeCaptionLabel() const { return m_cdTimeCaptionLabel; }
    QLabel* trackLabel() const { return m_trackLabel; }
    ClickableLabel* timeLabel() const { return m_timeLabel; }
    ClickableLabel* cdTimeLabel() const { return m_cdTimeLabel; }
    SeekSlider* seekSlider() const { return m_seekSlider; }

private:
    void setupUi();
    void retranslateUi();

    QVBoxLayout* m_verticalLayout = nullptr;
    QGridLayout* m_gridLayout = nullptr;
    QLabel* m_trackCaptionLabel = nullptr;
    ClickableLabel* m_timeCaptionLabel = nullptr;
    ClickableLabel* m_cdTimeCaptionLabel = nullptr;
    QLabel* m_trackLabel = nullptr;
    ClickableLabel* m_timeLabel = nullptr;
    ClickableLabel* m_cdTimeLabel = nullptr;
    SeekSlider* m_seekSlider = nullptr;
};
