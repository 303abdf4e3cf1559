#pragma once

#include "audio/MeterInfo.h"

#include <QBrush>
#include <QColor>
#include <QRect>
#include <QWidget>

#include <functional>

class QTimer;

// A horizontal two-channel meter: peak bars with a blue gradient, an orange
// peak-hold marker over a grey hold bar, and a thin RMS line, on a scale
// that stretches the top of the range (amplitude^0.358).
//
// Records only set targets; the 16 ms timer moves the shown values towards
// them, so the bars fall back to zero by themselves when records stop.
class LevelMeterWidget : public QWidget
{
    Q_OBJECT
public:
    // Milliseconds from any fixed origin; tests replace it to step time.
    using Clock = std::function<qint64()>;

    struct Displayed
    {
        float rmsLeft = 0.0f;
        float rmsRight = 0.0f;
        float peakLeft = 0.0f;
        float peakRight = 0.0f;
        float holdLeft = 0.0f;
        float holdRight = 0.0f;
    };

    explicit LevelMeterWidget(QWidget* parent = nullptr);

    void setClock(Clock clock);
    QTimer* redrawTimer() const { return m_redrawTimer; }
    Displayed displayed() const { return m_shown; }
    float fallFactor() const { return m_fallFactor; }
    int state() const { return m_state; }
    // The inner meter rectangle of the last paint.
    QRect meterRect() const { return m_meterRect; }

    // The fraction of the bar's width at which an amplitude, or a dB value
    // of the scale, is drawn.
    static double positionOfAmplitude(double amplitude);
    static double positionOfDecibels(double decibels);

    QSize sizeHint() const override { return QSize(300, 64); }
    QSize minimumSizeHint() const override { return QSize(120, 52); }

public slots:
    void reset();
    // The player's state: 0 playing (slow fall), 1 stopped (fast fall, RMS
    // twice as fast again), 2 paused (fast fall); others keep the factor.
    void setState(int state);
    void levelChanged(MeterInfo info);
    void redrawTimerExpired();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // One clock: the time of its last restart.
    struct Stopwatch
    {
        qint64 started = 0;
    };
    void step(float& value, float target, Stopwatch& clock, bool hold);
    void paintChannel(QPainter& p, int bandTop, int bandHeight, float hold, float peak, float rms);
    void paintScale(QPainter& p, int top, int bottom);

    MeterInfo m_target;
    Displayed m_shown;
    float m_fallFactor = 0.05f;
    Stopwatch m_rmsClock;
    Stopwatch m_peakClock;
    Stopwatch m_holdLeftClock;
    Stopwatch m_holdRightClock;
    Clock m_clock;
    QTimer* m_redrawTimer = nullptr;
    QColor m_holdBarColor{81, 81, 81};
    QColor m_holdMarkerColor{255, 174, 0};
    QBrush m_peakBrush;
    QRect m_meterRect;
    int m_state = 1;
};
