// The level meter on its own: peak hold, the 2-second RMS average, resets.
#include "audio/LevelMeter.h"

#include <QtTest>

#include <cmath>

using Audio::LevelMeter;

class TestAudioLevelMeter : public QObject
{
    Q_OBJECT

private slots:
    void negativeSignalRaisesRmsButNotPeaks()
    {
        LevelMeter meter;
        for (int i = 0; i < 44100; ++i) {
            meter.feed(-0.5f, 0, 1.0f);
            meter.feed(-0.25f, 1, 1.0f);
        }
        const MeterInfo info = meter.read();
        QCOMPARE(info.peakLeft, 0.0f);
        QCOMPARE(info.peakRight, 0.0f);
        QVERIFY(info.rmsLeft > 0.3f);
        QVERIFY(info.rmsRight > 0.15f && info.rmsRight < info.rmsLeft);
    }

    void volumeCountsTwice()
    {
        // The disk streaming hands in value x volume and the volume again.
        LevelMeter meter;
        meter.feed(0.8f * 0.5f, 0, 0.5f);
        meter.feed(0.6f * 0.5f, 1, 0.5f);
        QCOMPARE(meter.read().peakLeft, 0.2f);
        QCOMPARE(meter.read().peakRight, 0.15f);
    }

    void fullScaleSineReadsOne()
    {
        LevelMeter meter;
        const double step = 2.0 * M_PI * 997.0 / 44100.0;
        for (int i = 0; i < 44100 * 12; ++i) {
            const auto v = static_cast<float>(std::sin(step * i));
            meter.feed(v, 0, 1.0f);
            meter.feed(v, 1, 1.0f);
        }
        const MeterInfo info = meter.read();
        QVERIFY2(std::abs(info.rmsLeft - 1.0f) < 0.01f, qPrintable(QString::number(info.rmsLeft)));
        QVERIFY(std::abs(info.rmsRight - 1.0f) < 0.01f);
        QVERIFY(info.peakLeft > 0.999f && info.peakLeft <= 1.0f);
    }

    void resetPeaksKeepsAveragesResetClearsAll()
    {
        LevelMeter meter;
        for (int i = 0; i < 1000; ++i) {
            meter.feed(0.9f, 0, 1.0f);
            meter.feed(0.7f, 1, 1.0f);
        }
        const MeterInfo before = meter.read();
        meter.resetPeaks();
        MeterInfo after = meter.read();
        QCOMPARE(after.peakLeft, 0.0f);
        QCOMPARE(after.peakRight, 0.0f);
        QCOMPARE(after.rmsLeft, before.rmsLeft);
        // The average goes on from where it was.
        meter.feed(0.1f, 0, 1.0f);
        after = meter.read();
        QVERIFY(after.rmsLeft > 0.99f * before.rmsLeft && after.rmsLeft < 1.01f * before.rmsLeft);
        QCOMPARE(after.peakLeft, 0.1f);

        meter.reset();
        after = meter.read();
        QCOMPARE(after.rmsLeft, 0.0f);
        QCOMPARE(after.rmsRight, 0.0f);
        QCOMPARE(after.peakLeft, 0.0f);
    }
};

QTEST_GUILESS_MAIN(TestAudioLevelMeter)
#include "test_audio_level_meter.moc"
