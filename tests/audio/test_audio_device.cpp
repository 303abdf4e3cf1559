// The streaming engine on a real stream: the PulseAudio null sink that
// tools/test-env.sh starts. Skips when no PulseAudio server answers.
#include "PulseTestSupport.h"

#include "audio/DiskStreaming.h"
#include "audio/StreamingEngine.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>

using namespace Audio;
using namespace audiotest;

namespace {

// Waits until the callback has run `more` further times.
bool callbacksRun(const std::atomic<int>& calls, int more)
{
    const int target = calls.load() + more;
    QElapsedTimer timer;
    timer.start();
    while (calls.load() < target && timer.elapsed() < 5000)
        QTest::qWait(10);
    return calls.load() >= target;
}

// A process function that plays silence and counts its calls.
StreamingEngine::ProcessFunction silence(std::atomic<int>& calls)
{
    return [&calls](float* out, unsigned n) {
        std::fill(out, out + 2 * n, 0.0f);
        ++calls;
        return 0;
    };
}

std::string defaultDeviceName(StreamingEngine& engine)
{
    return engine.deviceInfo(engine.resolveDevice({})).name;
}

} // namespace

class TestAudioDevice : public QObject
{
    Q_OBJECT

private slots:
    void failedOpensAreClassified()
    {
        AudioDeviceInfo device;
        device.sampleRates = {48000, 96000};
        device.outputChannels = 2;
        QCOMPARE(classifyOpenFailure(device, "no").kind, 1u);
        device.sampleRates = {44100};
        device.outputChannels = 1;
        QCOMPARE(classifyOpenFailure(device, "no").kind, 2u);
        device.outputChannels = 8;
        const StreamingEngine::Error other = classifyOpenFailure(device, "device busy");
        QCOMPARE(other.kind, 3u);
        QCOMPARE(other.message, std::string("device busy"));
        QVERIFY(!supportsCdSampleRate(AudioDeviceInfo{}));
        // No device at all (the empty record RtAudio leaves without a sound
        // server or card) is no sample rate problem.
        const StreamingEngine::Error none =
            classifyOpenFailure(AudioDeviceInfo{}, "invalid device");
        QCOMPARE(none.kind, 3u);
        QCOMPARE(QString::fromStdString(none.message),
                 QStringLiteral("No audio output device was found. (invalid device)"));
    }

    void init()
    {
        if (QByteArray(QTest::currentTestFunction()) != "failedOpensAreClassified" &&
            !pulseAnswers())
            QSKIP("no PulseAudio server answers (start tools/test-env.sh)");
    }

    void emptyNameOpensDefault()
    {
        StreamingEngine engine;
        std::atomic<int> calls{0};
        QCOMPARE(engine.initialize("", silence(calls)).kind, 0u);
        QVERIFY(engine.isStreamRunning());
        const AudioDeviceInfo current = engine.currentDeviceInfo();
        QCOMPARE(current.name, defaultDeviceName(engine));
        QVERIFY(current.hasOutput);
        QVERIFY(supportsCdSampleRate(current));
        QVERIFY(callbacksRun(calls, 20));
        QVERIFY(bufferFrames > 0);
    }

    void monitorIsNeverChosen()
    {
        DiskStreaming streaming;
        StreamingEngine& engine = streaming.engine();
        std::string monitor;
        for (unsigned i = 0; i < engine.deviceCount(); ++i) {
            const AudioDeviceInfo device = engine.deviceInfo(i);
            if (device.name.rfind("Monitor of ", 0) == 0)
                monitor = device.name;
        }
        QVERIFY2(!monitor.empty(), "the null sink's monitor is listed");
        const StreamingEngine::Error result = streaming.initialize(monitor);
        QCOMPARE(result.kind, 0u);
        QVERIFY(engine.currentDeviceInfo().name != monitor);
        QCOMPARE(engine.currentDeviceInfo().name, defaultDeviceName(engine));
        QVERIFY(engine.currentDeviceInfo().outputChannels >= 2);
    }

    void unknownNameFallsBackToDefault()
    {
        DiskStreaming streaming;
        QCOMPARE(streaming.initialize("No Such Device 4711").kind, 0u);
        QCOMPARE(streaming.engine().currentDeviceInfo().name,
                 defaultDeviceName(streaming.engine()));
        QVERIFY(streaming.engine().isStreamRunning());
    }

    void rescanAfterTheDeviceWentAway()
    {
        // A second sink to pull away, so that the test environment's stays.
        bool loaded = false;
        const QString module =
            runCommand(QStringLiteral("pactl"),
                       {QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                        QStringLiteral("sink_name=tivora_unplugged"),
                        QStringLiteral("sink_properties=device.description=TivoraUnplugged"),
                        QStringLiteral("format=float32le"), QStringLiteral("rate=44100"),
                        QStringLiteral("channels=2")},
                       &loaded);
        QVERIFY2(loaded, "pactl load-module");
        auto unload = qScopeGuard([&module] {
            runCommand(QStringLiteral("pactl"), {QStringLiteral("unload-module"), module});
        });

        StreamingEngine engine;
        std::atomic<int> calls{0};
        QCOMPARE(engine.initialize("TivoraUnplugged", silence(calls)).kind, 0u);
        QCOMPARE(engine.currentDeviceInfo().name, std::string("TivoraUnplugged"));
        QVERIFY(callbacksRun(calls, 10));

        bool unloaded = false;
        runCommand(QStringLiteral("pactl"), {QStringLiteral("unload-module"), module}, &unloaded);
        QVERIFY(unloaded);
        QTest::qWait(200);
        for (unsigned i = 0; i < engine.deviceCount(); ++i)
            QVERIFY(engine.deviceInfo(i).name != "TivoraUnplugged");

        // The old device is gone: its stream is aborted, the default opened,
        // and the same process function runs on.
        const StreamingEngine::Error result = engine.rescan("TivoraUnplugged");
        QCOMPARE(result.kind, 0u);
        QCOMPARE(engine.currentDeviceInfo().name, defaultDeviceName(engine));
        QVERIFY(engine.isStreamRunning());
        QVERIFY(callbacksRun(calls, 10));
    }
};

QTEST_GUILESS_MAIN(TestAudioDevice)
#include "test_audio_device.moc"
