#include "widgets/LevelMeterWidget.h"

#include "widgets/FontTable.h"

#include <QElapsedTimer>
#include <QLinearGradient>
#include <QPainter>
#include <QTimer>

#include <cmath>
#include <limits>

namespace {

constexpr double kCurve = 0.35845402;         // amplitude exponent
constexpr double kDecibelCurve = 0.017922701; // the same curve in dB: kCurve / 20
constexpr float kSilence = 0.000002f;
constexpr qint64 kHoldMs = 1001;

} // namespace

LevelMeterWidget::LevelMeterWidget(QWidget* parent) : QWidget(parent)
{
    auto monotonic = std::make_shared<QElapsedTimer>();
    monotonic->start();
    m_clock = [monotonic] { return monotonic->elapsed(); };

    m_redrawTimer = new QTimer(this);
    m_redrawTimer->setInterval(16);
    connect(m_redrawTimer, &QTimer::timeout, this, &LevelMeterWidget::redrawTimerExpired);
    m_redrawTimer->start();
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void LevelMeterWidget::setClock(Clock clock)
{
    m_clock = std::move(clock);
    const qint64 now = m_clock();
    for (Stopwatch* c : {&m_rmsClock, &m_peakClock, &m_holdLeftClock, &m_holdRightClock})
        c->started = now;
}

double LevelMeterWidget::positionOfAmplitude(double amplitude)
{
    return std::pow(amplitude, kCurve);
}

double LevelMeterWidget::positionOfDecibels(double decibels)
{
    return std::pow(10.0, decibels * kDecibelCurve);
}

void LevelMeterWidget::reset()
{
    // The targets go too: kept, the next redraw would jump straight back to
    // the level of the audio that was just stopped.
    m_shown = Displayed();
    m_target = MeterInfo{};
    update();
}

void LevelMeterWidget::setState(int state)
{
    m_state = state;
}

void LevelMeterWidget::levelChanged(MeterInfo info)
{
    if (m_state == 0)
        m_fallFactor = 0.05f;
    else if (m_state == 1 || m_state == 2)
        m_fallFactor = 0.1f;
    m_target = info;
}

void LevelMeterWidget::step(float& value, float target, Stopwatch& clock, bool hold)
{
    if (value >= target) {
        const bool holding = hold && m_clock() - clock.started < kHoldMs;
        if (!holding)
            value = value - (value - target) * m_fallFactor;
        if (value <= kSilence)
            value = 0.0f;
    } else {
        clock.started = m_clock();
        value = target;
    }
}

void LevelMeterWidget::redrawTimerExpired()
{
    step(m_shown.peakLeft, m_target.peakLeft, m_peakClock, false);
    step(m_shown.peakRight, m_target.peakRight, m_peakClock, false);
    step(m_shown.holdLeft, m_target.peakLeft, m_holdLeftClock, true);
    step(m_shown.holdRight, m_target.peakRight, m_holdRightClock, true);
    step(m_shown.rmsLeft, m_target.rmsLeft, m_rmsClock, false);
    step(m_shown.rmsRight, m_target.rmsRight, m_rmsClock, false);
    if (m_state == 1) {
        // Stopped: the RMS lines leave faster than the peaks.
        m_shown.rmsLeft -= (m_shown.rmsLeft - m_target.rmsLeft) * m_fallFactor;
        m_shown.rmsRight -= (m_shown.rmsRight - m_target.rmsRight) * m_fallFactor;
    }
    update();
}

void LevelMeterWidget::paintChannel(QPainter& p, int bandTop, int bandHeight, float hold,
                                    float peak, float rms)
{
    const QRect& inner = m_meterRect;
    const int w = inner.width();
    // Near-silent values would put the marker on the frame, left of the
    // meter: nothing is drawn outside it.
    p.save();
    p.setClipRect(inner);

    // A steady level below the silence threshold alternates between the
    // level and zero from tick to tick; it is drawn as nothing either way.
    auto audible = [](float v) { return v > kSilence ? double(v) : 0.0; };
    const double holdPos = positionOfAmplitude(audible(hold));
    if (holdPos > 0.0) {
        const int xr = inner.left() - 1 + int(w - (1.0 - holdPos) * w);
        p.fillRect(QRect(QPoint(inner.left(), bandTop), QPoint(xr, bandTop + bandHeight - 1)),
                   m_holdBarColor);
        p.fillRect(QRect(xr - 1, bandTop, 2, bandHeight), m_holdMarkerColor);
    }

    const double peakPos = positionOfAmplitude(audible(peak));
    if (peakPos > 0.0) {
        const int xe = inner.left() + int(w - (1.0 - peakPos) * w - 2);
        QLinearGradient gradient(QPointF(inner.left(), bandTop),
                                 QPointF(xe, bandTop + inner.height() / 2));
        gradient.setColorAt(0.0, QColor(11, 105, 159));
        gradient.setColorAt(1.0, QColor(62, 193, 248));
        m_peakBrush = QBrush(gradient);
        if (xe > inner.left())
            p.fillRect(
                QRect(QPoint(inner.left(), bandTop), QPoint(xe - 1, bandTop + bandHeight - 1)),
                m_peakBrush);
    }

    const double rmsPos = positionOfAmplitude(audible(rms));
    if (rmsPos > kSilence) {
        const int x = int(inner.left() + w * rmsPos);
        p.fillRect(QRect(x, bandTop, 1, bandHeight), QColor(11, 105, 159));
    }
    p.restore();
}

void LevelMeterWidget::paintScale(QPainter& p, int top, int bottom)
{
    const QRect& inner = m_meterRect;
    const QFont scaleFont = FontTable::font(2);
    const QFontMetrics metrics(scaleFont);
    p.setFont(scaleFont);

    const double ticks[] = {
        -std::numeric_limits<double>::infinity(), -48, -24, -12, -6, -3, -1, -0.0};
    bool first = true;
    for (double d : ticks) {
        const int x = std::isinf(d) ? inner.left()
                                    : int(inner.left() + inner.width() * positionOfDecibels(d));
        p.setPen(Qt::darkGray);
        p.drawLine(x, top - 3, x, top - 7);
        if (!std::isinf(d)) {
            const QString label = QString::number(d, 'g', 6);
            const int shift = first ? 0 : metrics.horizontalAdvance(label) / 2;
            p.setPen(Qt::white);
            p.drawText(x - shift, bottom + metrics.height(), label);
        }
        first = false;
    }

    const int span = bottom - top + 1;
    p.setPen(Qt::white);
    p.drawText(0, top - 1 + span / 4 + metrics.height() / 2, QStringLiteral("L"));
    p.drawText(0, int(top + 0.75 * span + metrics.height() / 2.0 - 1), QStringLiteral("R"));

    const QFont unitFont = FontTable::font(0);
    p.setFont(unitFont);
    p.setPen(Qt::gray);
    p.drawText(0, bottom + QFontMetrics(unitFont).height(), QStringLiteral("dB"));
}

void LevelMeterWidget::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    const int W = width();
    const int H = height();

    const int top = int(0.2 * H);
    int bottom = int(0.7 * H);
    if ((bottom - top + 1) % 2 != 0)
        ++bottom;
    p.fillRect(QRect(QPoint(12, top), QPoint(W - 4, bottom)), Qt::black);

    m_meterRect = QRect(QPoint(13, top + 1), QPoint(W - 5, bottom - 1));
    p.fillRect(m_meterRect, QColor(52, 52, 52));
    const int h = m_meterRect.height();
    const int leftBand = m_meterRect.top();
    const int rightBand = int(m_meterRect.top() + 0.5 * h);
    paintChannel(p, leftBand, h / 2, m_shown.holdLeft, m_shown.peakLeft, m_shown.rmsLeft);
    paintChannel(p, rightBand, h / 2, m_shown.holdRight, m_shown.peakRight, m_shown.rmsRight);

    const int middle = top + (bottom - top + 1) / 2;
    p.setPen(Qt::black);
    p.drawLine(m_meterRect.left(), middle, W - 4, middle);

    paintScale(p, top, bottom);
}
