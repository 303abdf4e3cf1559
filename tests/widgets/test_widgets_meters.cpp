// Level meter ballistics (with a clock the test steps by hand), the pixels
// that matter for reading levels, and the numerical display's maxima.

#include "widgets/ClickableLabel.h"
#include "widgets/LevelMeterWidget.h"
#include "widgets/MeterNumericalDisplayWidget.h"
#include "widgets/Resources.h"

#include <QImage>
#include <QTest>
#include <QTimer>

namespace {

const QColor kBackground(52, 52, 52);
const QColor kHoldBar(81, 81, 81);
const QColor kHoldMarker(255, 174, 0);

MeterInfo levels(float rms, float peak)
{
    return MeterInfo{rms, rms, peak, peak};
}

} // namespace

class TestMeters : public QObject
{
    Q_OBJECT

    qint64 m_now = 0;

    // A meter whose clock only moves when the test says so.
    std::unique_ptr<LevelMeterWidget> makeMeter(int width = 400, int height = 80)
    {
        auto meter = std::make_unique<LevelMeterWidget>();
        meter->redrawTimer()->stop();
        m_now = 10000;
        meter->setClock([this] { return m_now; });
        meter->resize(width, height);
        return meter;
    }

    void tick(LevelMeterWidget& meter, int times = 1)
    {
        for (int i = 0; i < times; ++i) {
            m_now += 16;
            meter.redrawTimerExpired();
        }
    }

    // The middle row of the left channel's band.
    static int leftBandRow(const QRect& inner) { return inner.top() + inner.height() / 4; }

    // The rightmost column of the band row whose pixel is not the empty
    // meter background.
    static int lastPaintedColumn(const QImage& image, const QRect& inner, int y)
    {
        int last = -1;
        for (int x = inner.left(); x <= inner.right(); ++x)
            if (QColor(image.pixel(x, y)) != kBackground)
                last = x;
        return last;
    }

private slots:
    void initTestCase() { initResources(); }

    void holdStaysOneSecondThenFallsByTheFactor_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<float>("factor");
        QTest::newRow("playing: slow fall") << 0 << 0.05f;
        QTest::newRow("paused: fast fall") << 2 << 0.1f;
        QTest::newRow("stopped: fast fall") << 1 << 0.1f;
    }

    void holdStaysOneSecondThenFallsByTheFactor()
    {
        QFETCH(int, state);
        QFETCH(float, factor);
        auto meter = makeMeter();
        meter->setState(state);
        meter->levelChanged(levels(0.5f, 0.8f));
        tick(*meter);
        QCOMPARE(meter->displayed().holdLeft, 0.8f);
        QCOMPARE(meter->displayed().peakRight, 0.8f);
        QCOMPARE(meter->fallFactor(), factor);

        // The level drops to silence: the peak bar falls at once, the hold
        // marker waits one second.
        meter->levelChanged(levels(0.0f, 0.0f));
        tick(*meter);
        QVERIFY(meter->displayed().peakLeft < 0.8f);
        m_now += 1000 - 32; // 984 ms after the maximum, in total
        tick(*meter);       // 1000 ms: still held
        QCOMPARE(meter->displayed().holdLeft, 0.8f);
        QCOMPARE(meter->displayed().holdRight, 0.8f);
        tick(*meter); // 1016 ms: the first fall
        QCOMPARE(meter->displayed().holdLeft, 0.8f - 0.8f * factor);
        const float before = meter->displayed().holdLeft;
        tick(*meter);
        QCOMPARE(meter->displayed().holdLeft, before - before * factor);
    }

    void louderRecordMovesTheHoldAtOnceAndRestartsTheHold()
    {
        auto meter = makeMeter();
        meter->setState(0);
        meter->levelChanged(levels(0.1f, 0.3f));
        tick(*meter);
        meter->levelChanged(levels(0.1f, 0.6f));
        m_now += 900;
        tick(*meter);
        QCOMPARE(meter->displayed().holdLeft, 0.6f);
        meter->levelChanged(levels(0.1f, 0.2f));
        m_now += 900;
        tick(*meter); // 916 ms after the new maximum
        QCOMPARE(meter->displayed().holdLeft, 0.6f);
    }

    void rmsFallsTwiceAsFastWhenStopped()
    {
        // Paused has the stopped fall factor but a single step; the peaks
        // fall once per tick in every state.
        for (const int state : {2, 1}) {
            auto meter = makeMeter();
            meter->setState(state);
            meter->levelChanged(levels(0.5f, 0.5f));
            tick(*meter);
            meter->levelChanged(levels(0.0f, 0.0f));
            tick(*meter);
            QCOMPARE(meter->displayed().rmsLeft, state == 1 ? 0.5f * 0.9f * 0.9f : 0.5f * 0.9f);
            QCOMPARE(meter->displayed().peakLeft, 0.5f * 0.9f);
        }
    }

    void factorChangesOnlyWhenARecordArrives()
    {
        auto meter = makeMeter();
        QCOMPARE(meter->fallFactor(), 0.05f);
        meter->setState(2);
        QCOMPARE(meter->fallFactor(), 0.05f);
        meter->levelChanged(MeterInfo{});
        QCOMPARE(meter->fallFactor(), 0.1f);
        meter->setState(7); // unknown: keeps the factor
        meter->levelChanged(MeterInfo{});
        QCOMPARE(meter->fallFactor(), 0.1f);
    }

    void tinyValuesBecomeZeroAndResetBlanks()
    {
        auto meter = makeMeter();
        meter->setState(1);
        meter->levelChanged(levels(0.000003f, 0.000003f));
        tick(*meter);
        meter->levelChanged(levels(0.0f, 0.0f));
        tick(*meter);
        QCOMPARE(meter->displayed().peakLeft, 0.0f);

        meter->levelChanged(levels(0.7f, 0.9f));
        tick(*meter);
        meter->reset();
        auto sum = [&meter] {
            const auto shown = meter->displayed();
            return shown.peakLeft + shown.peakRight + shown.holdLeft + shown.holdRight +
                   shown.rmsLeft + shown.rmsRight;
        };
        QCOMPARE(sum(), 0.0f);
        // Blank stays blank until a record brings a level again.
        tick(*meter);
        QCOMPARE(sum(), 0.0f);
    }

    void fullScaleGeometry()
    {
        auto meter = makeMeter(400, 80);
        meter->levelChanged(MeterInfo{0.0f, 0.0f, 1.0f, 1.0f});
        tick(*meter);
        const QImage image = meter->grab().toImage();
        const QRect inner = meter->meterRect();
        // Outer rectangle 12 .. W-4, inner one pixel inside it.
        QCOMPARE(inner.left(), 13);
        QCOMPARE(inner.right(), 400 - 5);
        const int y = leftBandRow(inner);
        // The hold marker reaches the inner right edge (its two orange columns).
        QCOMPARE(QColor(image.pixel(inner.right(), y)), kHoldMarker);
        QCOMPARE(QColor(image.pixel(inner.right() - 1, y)), kHoldMarker);
        // The peak bar ends two pixels before the inner right edge (one more
        // would cover the marker's first column), over the hold bar.
        const QColor barEnd(image.pixel(inner.right() - 2, y));
        QVERIFY2(barEnd != kHoldBar && barEnd.blue() > 150 && barEnd.red() < 100,
                 "the peak bar reaches the inner right edge minus two");
        // The gradient runs from dark to light blue.
        QVERIFY(QColor(image.pixel(inner.left(), y)).blue() < barEnd.blue());
        // The right channel's band is drawn the same way.
        const int yRight = inner.top() + inner.height() * 3 / 4;
        QCOMPARE(QColor(image.pixel(inner.right(), yRight)), kHoldMarker);
    }

    void levelsBelowTheThresholdDrawNothing()
    {
        auto meter = makeMeter(400, 80);
        // A steady tiny level: shown as the level on one tick, zeroed on the
        // next; neither draws anything.
        meter->levelChanged(MeterInfo{0.0000019f, 0.0000019f, 0.0000019f, 0.0000019f});
        for (int phase = 0; phase < 2; ++phase) {
            tick(*meter);
            QCOMPARE(meter->displayed().peakLeft, phase == 0 ? 0.0000019f : 0.0f);
            const QImage image = meter->grab().toImage();
            const QRect inner = meter->meterRect();
            for (int y : {leftBandRow(inner), inner.top() + inner.height() * 3 / 4})
                QCOMPARE(lastPaintedColumn(image, inner, y), -1);
        }
        // Just above the threshold something shows.
        meter->levelChanged(MeterInfo{0.00001f, 0.00001f, 0.00001f, 0.00001f});
        tick(*meter);
        const QImage image = meter->grab().toImage();
        QVERIFY(lastPaintedColumn(image, meter->meterRect(), leftBandRow(meter->meterRect())) >= 0);
    }

    void positionFollowsTheCurve()
    {
        auto meter = makeMeter(400, 80);
        // -6 dB peak, hold at the same place.
        const float amplitude = 0.5f;
        meter->levelChanged(MeterInfo{0.0f, 0.0f, amplitude, amplitude});
        tick(*meter);
        const QImage image = meter->grab().toImage();
        const QRect inner = meter->meterRect();
        const int w = inner.width();
        const double f = LevelMeterWidget::positionOfAmplitude(amplitude);
        const int xr = inner.left() - 1 + int(w - (1.0 - f) * w);
        QCOMPARE(lastPaintedColumn(image, inner, leftBandRow(inner)), xr);
        // Scale and amplitude agree: -6.0206 dB is amplitude 0.5.
        QVERIFY(qAbs(LevelMeterWidget::positionOfDecibels(-6.0206) - f) < 1e-4);
    }

    void numericalDisplayKeepsTheHighestUntilClicked()
    {
        MeterNumericalDisplayWidget display;
        QCOMPARE(display.levelValueLabel()->text(), QStringLiteral("0 dB"));
        QCOMPARE(display.rmsValueLabel()->text(), QStringLiteral("0 dB"));

        // Silence does not beat minus infinity: the labels stay as they are.
        display.levelChanged(MeterInfo{});
        QCOMPARE(display.levelValueLabel()->text(), QStringLiteral("0 dB"));

        display.levelChanged(MeterInfo{0.25f, 0.1f, 0.5f, 0.9f});
        QCOMPARE(display.levelValueLabel()->text(), QStringLiteral("-0.9"));
        QCOMPARE(display.rmsValueLabel()->text(), QStringLiteral("-12.0"));
        display.levelChanged(MeterInfo{0.1f, 0.1f, 0.1f, 0.1f});
        QCOMPARE(display.levelValueLabel()->text(), QStringLiteral("-0.9"));

        // A click lets the next value through, whatever it is; silence shows
        // the infinity sign alone.
        QTest::mouseClick(display.levelValueLabel(), Qt::LeftButton);
        QCOMPARE(display.levelValueLabel()->text(), QStringLiteral("-0.9"));
        display.levelChanged(MeterInfo{0.1f, 0.1f, 0.0f, 0.0f});
        QCOMPARE(display.levelValueLabel()->text(), QString(QChar(0x221E)));
        QCOMPARE(display.rmsValueLabel()->text(), QStringLiteral("-12.0"));
        QTest::mouseClick(display.rmsValueLabel(), Qt::RightButton);
        display.levelChanged(MeterInfo{0.0f, 0.0f, 0.0f, 0.0f});
        QCOMPARE(display.rmsValueLabel()->text(), QString(QChar(0x221E)));
    }
};

QTEST_MAIN(TestMeters)
#include "test_widgets_meters.moc"
