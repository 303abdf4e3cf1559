// The whole program on a real display (Xvfb) and a real audio device (the
// PulseAudio null sink): load a generated disc, press Space, record what
// reaches the sink, press the next-track button, and compare the recording
// with the image bit for bit.
#include "app/MainWindow.h"
#include "audio/StreamingConstants.h"
#include "tests/app/ModalAnswerer.h"
#include "tests/support/StyledTestApp.h"
#include "tests/support/TestFolders.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/TransportButton.h"
#include "widgets/TransportWidget.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
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

// Whether the recording falls silent (exact zeros, at least 10 ms) after the
// audio has begun: a dropout, since the test image is never silent.
bool hasDropout(const std::vector<float>& recording)
{
    std::size_t f = 0;
    while (f + 1 < recording.size() && recording[f] == 0.0f && recording[f + 1] == 0.0f)
        f += 2;
    long run = 0;
    for (; f + 1 < recording.size(); f += 2) {
        run = recording[f] == 0.0f && recording[f + 1] == 0.0f ? run + 1 : 0;
        if (run >= 441)
            return true;
    }
    return false;
}

// How a comparison of `expected` with the recording from frame `at` ended.
struct Comparison
{
    long matched = 0;     // frames equal bit for bit
    long silentAfter = 0; // silent frames where the comparison stopped
    QString text;
};

Comparison compare(const std::vector<float>& recording, long at, const std::vector<float>& expected)
{
    Comparison c;
    for (std::size_t i = 0; i + 1 < expected.size(); i += 2, ++c.matched) {
        const std::size_t r = static_cast<std::size_t>(at) * 2 + i;
        if (r + 1 >= recording.size() ||
            std::memcmp(&recording[r], &expected[i], 2 * sizeof(float)) != 0)
            break;
    }
    if (c.matched == long(expected.size() / 2))
        return c;
    const std::size_t r = static_cast<std::size_t>(at + c.matched) * 2;
    for (std::size_t i = r;
         i + 1 < recording.size() && recording[i] == 0.0f && recording[i + 1] == 0.0f; i += 2)
        ++c.silentAfter;
    const std::size_t e = static_cast<std::size_t>(c.matched) * 2;
    c.text = QStringLiteral("mismatch after %1 of %2 frames, %3 silent frames follow")
                 .arg(c.matched)
                 .arg(expected.size() / 2)
                 .arg(c.silentAfter);
    if (r + 1 < recording.size())
        c.text += QStringLiteral(" (got %1 %2, expected %3 %4)")
                      .arg(recording[r])
                      .arg(recording[r + 1])
                      .arg(expected[e])
                      .arg(expected[e + 1]);
    return c;
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
    }

    // A stall of the whole machine longer than the buffers makes the sound
    // server (or the player, which counts its own underruns) play silence in
    // place of the stream; such a run is tried again. A wrong sample fails
    // at once.
    void playsTheImageBitForBitAndSkips()
    {
        for (int attempt = 1; attempt <= 3; ++attempt) {
            QString serverDropout;
            playAndCompare(&serverDropout);
            if (QTest::currentTestFailed() || serverDropout.isEmpty())
                return;
            qWarning("attempt %d: the sound server dropped audio: %s", attempt,
                     qPrintable(serverDropout));
        }
        QFAIL("the sound server dropped audio in every attempt");
    }

private:
    void playAndCompare(QString* serverDropout)
    {
        QTemporaryDir dir;
        const QString disc = dir.filePath(QStringLiteral("disc"));
        const mkddp::DiscSpec spec = mkddp::simpleDisc(3, 8);
        QVERIFY(mkddp::writeDisc(spec, disc));
        const mkddp::TestPattern pattern(spec);
        const quint32 track1 = static_cast<quint32>(mkddp::indexPosition(spec, 1, 1) / 4);
        const quint32 track2 = static_cast<quint32>(mkddp::indexPosition(spec, 2, 1) / 4);

        // The recorder runs first: a null sink with a listener at low latency
        // renders in small blocks, so the player's stream flows at once.
        const QString recordingPath = dir.filePath(QStringLiteral("recording.raw"));
        QProcess parec;
        parec.start(
            QStringLiteral("parec"),
            {QStringLiteral("--device=%1.monitor").arg(qEnvironmentVariable("TIVORA_NULL_SINK")),
             QStringLiteral("--format=float32le"), QStringLiteral("--rate=44100"),
             QStringLiteral("--channels=2"), QStringLiteral("--raw"),
             QStringLiteral("--latency-msec=20"), recordingPath});
        QVERIFY(parec.waitForStarted());

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

        // Press Space only once the device takes audio at its pace, so that
        // the waits below are seconds of playback.
        const Audio::DiskStreaming& streaming = window.player().streaming();
        bool flowing = false;
        for (int tries = 0; tries < 100 && !flowing; ++tries) {
            const std::uint64_t before = streaming.framesProcessed();
            QTest::qWait(100);
            flowing = streaming.framesProcessed() - before >= 2205;
        }
        QVERIFY2(flowing, "the device does not take audio");

        QTest::keyClick(&window, Qt::Key_Space);
        QVERIFY(window.player().isPlaying());
        QTest::qWait(3000);
        // The fade-out of "next" starts no earlier than this.
        const long playedOfFirst = long(window.player().position()) / 4;
        window.transportWidget()->nextButton()->click();
        QTest::qWait(2500);

        const QString shots = screenshotFolder();
        window.grab().save(shots + QStringLiteral("/window-playing.png"));

        parec.terminate();
        QVERIFY(parec.waitForFinished(5000));
        window.player().stop();
        const std::uint64_t underruns = streaming.underrunCount();

        QFile file(recordingPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        std::vector<float> recording(static_cast<std::size_t>(bytes.size()) / sizeof(float));
        std::memcpy(recording.data(), bytes.constData(), recording.size() * sizeof(float));
        QVERIFY2(recording.size() > 44100 * 2 * 4, "less than four seconds recorded");

        // A comparison that stops at silence is the server's dropout; one that
        // stops at a wrong sample is the player's fault.
        const auto check = [&](const Comparison& c, const std::vector<float>& expected) {
            if (c.matched == long(expected.size() / 2))
                return true;
            if (c.silentAfter > 0)
                *serverDropout =
                    c.text + QStringLiteral(", %1 underruns of the player's own").arg(underruns);
            else
                QTest::qFail(qPrintable(c.text), __FILE__, __LINE__);
            return false;
        };

        // Track 1 from its start: past the 440-frame fade-in, everything up to
        // the skip (at least a second and a half) arrives unchanged.
        const int skip = 1000;
        const int span = int(std::min<long>(2 * 44100, playedOfFirst - skip));
        QVERIFY2(span >= 66150, "less than 1.5 s of the first track played before the skip");
        const std::vector<float> first = expectedFloats(pattern, track1 + skip, span);
        const long at1 = findInRecording(recording, first, 0);
        if (at1 < 0 && hasDropout(recording)) {
            *serverDropout = QStringLiteral("silence where the first track's start should be");
            return;
        }
        QVERIFY2(at1 >= 0, "the first track's audio was not found in the recording");
        if (!check(compare(recording, at1, first), first))
            return;

        // After "next", the second track from its start, one second unchanged.
        const std::vector<float> second = expectedFloats(pattern, track2 + skip, 44100);
        const long at2 = findInRecording(recording, second, at1);
        if (at2 < 0 && hasDropout(recording)) {
            *serverDropout = QStringLiteral("silence where the second track's start should be");
            return;
        }
        QVERIFY2(at2 > at1, "the second track's start was not found after the skip");
        check(compare(recording, at2, second), second);
    }
};

int main(int argc, char** argv)
{
    // A real window on the X server, not the offscreen platform of the
    // other tests.
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    useTheProgramsSettings();
    QApplication::setStyle(new CustomStyle);
    EndToEndTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_e2e_window.moc"
