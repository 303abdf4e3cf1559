// The whole program on a real display (Xvfb) and a real audio device (the
// PulseAudio null sink): load a generated disc, press Space, record what
// reaches the sink, press the next-track button, and compare the recording
// with the image bit for bit.
#include "app/MainWindow.h"
#include "audio/StreamingConstants.h"
#include "tests/app/ModalAnswerer.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/CustomStyle.h"
#include "widgets/TransportButton.h"
#include "widgets/TransportWidget.h"

#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

namespace {

// The floats the device must receive for `count` frames from `firstFrame`.
std::vector<float> expectedFloats(const mkddp::TestPattern& pattern, quint32 firstFrame, int count)
{
    std::vector<float> out;
    out.reserve(static_cast<std::size_t>(count) * 2);
    for (int i = 0; i < count; ++i)
        for (int channel = 0; channel < 2; ++channel)
            out.push_back(static_cast<float>(pattern.sample(firstFrame + i, channel)) *
                          Audio::kSampleConversion);
    return out;
}

// The frame of the recording where `expected` starts, or -1. The first
// 2000 floats (past any fade) must match bit for bit to count as found.
long findInRecording(const std::vector<float>& recording, const std::vector<float>& expected,
                     long from)
{
    const std::size_t probe = 2000;
    for (std::size_t f = static_cast<std::size_t>(from) * 2; f + probe <= recording.size();
         f += 2) {
        if (std::memcmp(&recording[f], expected.data(), probe * sizeof(float)) == 0)
            return static_cast<long>(f / 2);
    }
    return -1;
}

// How many frames from `at` equal `expected` bit for bit.
long matchingFrames(const std::vector<float>& recording, long at,
                    const std::vector<float>& expected)
{
    long n = 0;
    for (std::size_t i = 0; i + 1 < expected.size(); i += 2, ++n) {
        const std::size_t r = static_cast<std::size_t>(at) * 2 + i;
        if (r + 1 >= recording.size() ||
            std::memcmp(&recording[r], &expected[i], 2 * sizeof(float)) != 0)
            break;
    }
    return n;
}

} // namespace

class EndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (qEnvironmentVariableIsEmpty("TIVORA_NULL_SINK") ||
            qEnvironmentVariableIsEmpty("DISPLAY"))
            QSKIP("needs the test environment's null sink and Xvfb (tools/test-env.sh)");
        QStandardPaths::setTestModeEnabled(true);
    }

    void playsTheImageBitForBitAndSkips()
    {
        QTemporaryDir dir;
        const QString disc = dir.filePath(QStringLiteral("disc"));
        const mkddp::DiscSpec spec = mkddp::simpleDisc(3, 8);
        QVERIFY(mkddp::writeDisc(spec, disc));
        const mkddp::TestPattern pattern(spec);
        const quint32 track1 = static_cast<quint32>(mkddp::indexPosition(spec, 1, 1) / 4);
        const quint32 track2 = static_cast<quint32>(mkddp::indexPosition(spec, 2, 1) / 4);

        ModalAnswerer answerer;
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.openPath(disc);
        QTest::qWait(100);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(window.player().lastSetupResult().kind, 0u);
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        const QString recordingPath = dir.filePath(QStringLiteral("recording.raw"));
        QProcess parec;
        parec.start(
            QStringLiteral("parec"),
            {QStringLiteral("--device=%1.monitor").arg(qEnvironmentVariable("TIVORA_NULL_SINK")),
             QStringLiteral("--format=float32le"), QStringLiteral("--rate=44100"),
             QStringLiteral("--channels=2"), QStringLiteral("--raw"),
             QStringLiteral("--latency-msec=20"), recordingPath});
        QVERIFY(parec.waitForStarted());
        QTest::qWait(500);

        QTest::keyClick(&window, Qt::Key_Space);
        QVERIFY(window.player().isPlaying());
        QTest::qWait(3000);
        window.transportWidget()->nextButton()->click();
        QTest::qWait(2500);

        const QString shots =
            qEnvironmentVariable("TIVORA_BINARY_DIR") + QStringLiteral("/screenshots");
        QDir().mkpath(shots);
        window.grab().save(shots + QStringLiteral("/window-playing.png"));

        parec.terminate();
        QVERIFY(parec.waitForFinished(5000));
        window.player().stop();

        QFile file(recordingPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        std::vector<float> recording(static_cast<std::size_t>(bytes.size()) / sizeof(float));
        std::memcpy(recording.data(), bytes.constData(), recording.size() * sizeof(float));
        QVERIFY2(recording.size() > 44100 * 2 * 4, "less than four seconds recorded");

        // Track 1 from its start: past the 440-frame fade-in, two seconds
        // arrive unchanged.
        const int skip = 1000;
        const std::vector<float> first = expectedFloats(pattern, track1 + skip, 2 * 44100);
        const long at1 = findInRecording(recording, first, 0);
        QVERIFY2(at1 >= 0, "the first track's audio was not found in the recording");
        QCOMPARE(matchingFrames(recording, at1, first), long(first.size() / 2));

        // After "next", the second track from its start, one second unchanged.
        const std::vector<float> second = expectedFloats(pattern, track2 + skip, 44100);
        const long at2 = findInRecording(recording, second, at1);
        QVERIFY2(at2 > at1, "the second track's start was not found after the skip");
        QCOMPARE(matchingFrames(recording, at2, second), long(second.size() / 2));
    }
};

int main(int argc, char** argv)
{
    // A real window on the X server, not the offscreen platform of the
    // other tests.
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Korvane"));
    QApplication::setApplicationName(QStringLiteral("Tivora 1.5"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QApplication::setStyle(new CustomStyle);
    EndToEndTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_e2e_window.moc"
