// `tivora-ddp play` on the test environment's null sink, recorded from the
// sink's monitor with parec: past the fade-in the recording must be the
// image's samples x 3.051851e-5, bit for bit, across track ends. Skips
// without PulseAudio.
#include "PulseTestSupport.h"
#include "tests/archive/RunZip.h"

#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <QElapsedTimer>

#include <cmath>
#include <csignal>
#include <cstring>
#include <sys/types.h>

using namespace audiotest;

namespace {

QString tivoraDdp()
{
    return QDir(qEnvironmentVariable("TIVORA_BINARY_DIR"))
        .filePath(QStringLiteral("tools/tivora-ddp/tivora-ddp"));
}

constexpr float kConversion = 3.051851e-5f;
constexpr int kFadeFrames = 440;
constexpr int kCompareFrames = 2 * 44100;

} // namespace

class TestAudioPlayCommand : public QObject
{
    Q_OBJECT

    void playAndCompare(const QString& form, QString* dropout)
    {
        // One-second tracks: the two seconds compared cross two track ends,
        // where playback must run on without a break.
        QTemporaryDir dir;
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 1);
        if (form == QLatin1String("two files"))
            spec.imageStreams = 2;
        QString error;
        QString disc = dir.filePath(QStringLiteral("disc"));
        QVERIFY2(mkddp::writeDisc(spec, disc, &error), qPrintable(error));
        const mkddp::TestPattern pattern(spec);
        if (form.endsWith(QLatin1String("zip"))) {
            const QString zipPath = dir.filePath(QStringLiteral("disc.zip"));
            QVERIFY(zipFolder(disc, zipPath, form.startsWith(QLatin1String("stored")), 9));
            disc = zipPath;
        }

        const QString recordingPath = dir.filePath(QStringLiteral("recording.raw"));
        QProcess recorder;
        recorder.setStandardOutputFile(recordingPath);
        recorder.start(QStringLiteral("parec"),
                       {QStringLiteral("--device=%1.monitor").arg(nullSinkName()),
                        QStringLiteral("--format=float32le"), QStringLiteral("--rate=44100"),
                        QStringLiteral("--channels=2"), QStringLiteral("--raw"),
                        QStringLiteral("--latency-msec=20")});
        QVERIFY(recorder.waitForStarted(5000));
        QTest::qWait(500);

        QProcess player;
        player.start(tivoraDdp(), {QStringLiteral("play"), disc, QStringLiteral("--seconds"),
                                   QStringLiteral("3.5")});
        QVERIFY(player.waitForFinished(20000));
        QCOMPARE(player.exitCode(), 0);
        QTest::qWait(500);
        recorder.terminate();
        QVERIFY(recorder.waitForFinished(5000));

        QFile file(recordingPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        const auto* recording = reinterpret_cast<const float*>(bytes.constData());
        const int frames = bytes.size() / 8;
        int first = 0;
        while (first < frames && recording[2 * first] == 0.0f && recording[2 * first + 1] == 0.0f)
            ++first;
        const int start = first + kFadeFrames + 4;
        QVERIFY2(
            frames - start >= kCompareFrames,
            qPrintable(
                QStringLiteral("only %1 frames recorded after the fade-in").arg(frames - start)));

        // Align by the frame counter the pattern carries: the track starts at
        // the end of the 2-second pause, and the counter fixes the frame.
        const auto left = static_cast<qint16>(std::lrint(recording[2 * start] / kConversion));
        const auto right = static_cast<qint16>(std::lrint(recording[2 * start + 1] / kConversion));
        const quint32 trackStart = 2 * 44100;
        const quint32 guess = trackStart + static_cast<quint32>(start - first);
        quint32 imageFrame = (guess & ~0xFFFFu) | mkddp::patternCounter(left, right);
        if (imageFrame + 0x8000u < guess)
            imageFrame += 0x10000u;
        else if (imageFrame > guess + 0x8000u)
            imageFrame -= 0x10000u;

        for (int k = 0; k < kCompareFrames; ++k) {
            for (int c = 0; c < 2; ++c) {
                const float want =
                    static_cast<float>(pattern.sample(imageFrame + static_cast<quint32>(k), c)) *
                    kConversion;
                const float got = recording[2 * (start + k) + c];
                if (std::memcmp(&got, &want, sizeof(float)) == 0)
                    continue;
                const QString where =
                    QStringLiteral("recorded frame %1 (image frame %2) channel %3: "
                                   "%4, want %5")
                        .arg(start + k)
                        .arg(imageFrame + static_cast<quint32>(k))
                        .arg(c)
                        .arg(double(got), 0, 'g', 9)
                        .arg(double(want), 0, 'g', 9);
                const float* frame = recording + 2 * (start + k);
                if (frame[0] == 0.0f && frame[1] == 0.0f)
                    *dropout = where;
                else
                    QFAIL(qPrintable(where));
                return;
            }
        }
    }

private slots:
    // The same disc as a folder, inside a ZIP archive stored and compressed, and
    // with its audio split over two files: every form plays the same samples.
    void recordingIsTheImageBitForBit_data()
    {
        QTest::addColumn<QString>("form");
        for (const char* form : {"folder", "stored zip", "deflated zip", "two files"})
            QTest::newRow(form) << QString::fromLatin1(form);
    }

    // A stall of the whole machine longer than the sound server's buffer makes
    // the server play silence in place of the stream; such a run is tried
    // again. A wrong sample fails at once.
    void recordingIsTheImageBitForBit()
    {
        if (!pulseAnswers())
            QSKIP("no PulseAudio server answers (start tools/test-env.sh)");
        if (QStandardPaths::findExecutable(QStringLiteral("parec")).isEmpty())
            QSKIP("parec is not installed");
        QVERIFY(QFile::exists(tivoraDdp()));
        for (int attempt = 1; attempt <= 3; ++attempt) {
            QString dropout;
            QFETCH(QString, form);
            playAndCompare(form, &dropout);
            if (QTest::currentTestFailed() || dropout.isEmpty())
                return;
            qWarning("attempt %d: the sound server dropped audio: %s", attempt,
                     qPrintable(dropout));
        }
        QFAIL("the sound server dropped audio in every attempt");
    }

    void interruptStopsAndExitsWithZero()
    {
        if (!pulseAnswers())
            QSKIP("no PulseAudio server answers (start tools/test-env.sh)");
        QTemporaryDir dir;
        QVERIFY(mkddp::writeDisc(mkddp::simpleDisc(1, 20), dir.filePath(QStringLiteral("disc"))));
        QProcess player;
        player.start(tivoraDdp(), {QStringLiteral("play"), dir.filePath(QStringLiteral("disc"))});
        QVERIFY(player.waitForStarted(5000));
        QTest::qWait(1500);
        QCOMPARE(player.state(), QProcess::Running);
        QElapsedTimer timer;
        timer.start();
        ::kill(static_cast<pid_t>(player.processId()), SIGINT);
        QVERIFY(player.waitForFinished(5000));
        QCOMPARE(player.exitStatus(), QProcess::NormalExit);
        QCOMPARE(player.exitCode(), 0);
        QVERIFY(timer.elapsed() < 2000);
    }

    void failuresExitWithOne()
    {
        QVERIFY(QFile::exists(tivoraDdp()));
        QTemporaryDir dir;
        QString text;
        auto play = [&text](const QString& argument) {
            QProcess player;
            player.start(tivoraDdp(), {QStringLiteral("play"), argument});
            const bool finished = player.waitForFinished(20000);
            text = QString::fromLocal8Bit(player.readAllStandardError());
            return finished ? player.exitCode() : -1;
        };
        QCOMPARE(play(dir.filePath(QStringLiteral("missing"))), 1);
        QVERIFY2(text.startsWith(QStringLiteral("Error 4: ")), qPrintable(text));
        // A folder without DDPID: kind 6.
        QCOMPARE(play(dir.path()), 1);
        QVERIFY2(text.startsWith(QStringLiteral("Error 6: ")), qPrintable(text));
        QCOMPARE(play(QStringLiteral("--seconds")), 2);
    }
};

QTEST_GUILESS_MAIN(TestAudioPlayCommand)
#include "test_audio_play_command.moc"
