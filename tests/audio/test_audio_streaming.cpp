// The disk streaming driven without a device: process() is called directly
// with the frame counts a device might ask for, and the output is compared
// with the image sample by sample.
#include "AudioTestSupport.h"

#include "ddp/DiscImage.h"

#include "audio/DiskStreaming.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cmath>

using namespace Audio;
using namespace audiotest;

namespace {

constexpr unsigned kFadeFrames = 440;
// Five refill chunks and a short one: several buffer switches, then the end.
constexpr std::uint32_t kImageFrames = 2048 * 5 + 700;

// The image at `path` as three files cut at odd byte offsets.
std::shared_ptr<const DiscImage> splitImage(const QString& path)
{
    QFile whole(path);
    if (!whole.open(QIODevice::ReadOnly))
        return nullptr;
    const QByteArray bytes = whole.readAll();
    const int cuts[] = {0, 40003, 40003 + 8191, int(bytes.size())};
    std::vector<DiscImage::Segment> segments;
    for (int k = 0; k < 3; ++k) {
        DiscImage::Segment segment;
        segment.kind = DiscImage::Segment::Kind::File;
        segment.path = path + QStringLiteral(".part%1").arg(k);
        // A file may start with bytes that are not the stream's.
        segment.fileOffset = 7;
        segment.length = std::uint64_t(cuts[k + 1] - cuts[k]);
        QFile file(segment.path);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(QByteArray(7, 'x') + bytes.mid(cuts[k], cuts[k + 1] - cuts[k])) < 0)
            return nullptr;
        segments.push_back(segment);
    }
    return DiscImage::open(segments);
}

} // namespace

class TestAudioStreaming : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_image;

    void openAndPrime(DiskStreaming& streaming, std::int32_t offset = 0,
                      std::function<void()> endOfFile = {})
    {
        streaming.openFile(m_image, std::move(endOfFile));
        streaming.setCurrentSampleInFile(offset);
        QVERIFY(streaming.waitForReader());
    }

private slots:
    void init()
    {
        if (m_image.isEmpty())
            m_image = writeImage(m_dir.path(), kImageFrames);
        QVERIFY(!m_image.isEmpty());
    }

    void sampleExactAcrossBufferSwitches_data()
    {
        QTest::addColumn<unsigned>("perCall");
        QTest::addColumn<bool>("split");
        for (unsigned n : {1u, 255u, 256u, 1024u, 4096u})
            QTest::addRow("%u frames", n) << n << false;
        // The same image as three files cut inside a sample and inside a read
        // chunk: the streams of a split DDP must play as one.
        QTest::addRow("split image, 256 frames") << 256u << true;
        QTest::addRow("split image, 4096 frames") << 4096u << true;
    }

    void sampleExactAcrossBufferSwitches()
    {
        QFETCH(unsigned, perCall);
        QFETCH(bool, split);
        DiskStreaming streaming;
        if (split) {
            const std::shared_ptr<const DiscImage> image = splitImage(m_image);
            QVERIFY(image);
            QCOMPARE(image->length(), std::uint64_t(kImageFrames * 4));
            streaming.openImage(image, {});
            streaming.setCurrentSampleInFile(0);
            QVERIFY(streaming.waitForReader());
        } else {
            openAndPrime(streaming);
        }
        streaming.play();
        const std::vector<float> out = drive(streaming, perCall, kImageFrames + 3000);

        QCOMPARE(checkStartsAt({out.begin(), out.begin() + 2 * kImageFrames}, 0), QString());
        // Past the end nothing is invented: the callback's cleared first half
        // stays silent and the rest is left as the device had it.
        for (std::size_t i = 2 * kImageFrames; i < out.size(); ++i)
            QVERIFY(out[i] == 0.0f || out[i] == -99.0f);
        QCOMPARE(streaming.position(), float(kImageFrames * 4));
        QCOMPARE(streaming.underrunCount(), std::uint64_t(0));
        QVERIFY(streaming.isPlaying());
    }

    void fadeInAndPauseResumeWhereItLeft()
    {
        DiskStreaming streaming;
        openAndPrime(streaming);
        streaming.play();
        std::vector<float> out = drive(streaming, 256, 1024);
        // The fade-in rises by 1/440 a frame from the first frame on.
        for (unsigned f = 0; f < kFadeFrames - 1; ++f) {
            const float want = expectedAt(f, 0);
            if (std::abs(want) < 0.05f)
                continue;
            const double ratio = double(out[2 * f]) / double(want);
            QVERIFY2(std::abs(ratio - (f + 1) / 440.0) < 1e-4, qPrintable(QString::number(f)));
        }
        QCOMPARE(streaming.fadeState(), std::uint32_t(Idle));
        QCOMPARE(checkTail(out, streaming, 500), QString());

        streaming.pause();
        QVERIFY(streaming.isPlaying()); // until the fade-out has run
        const float before = streaming.position();
        out = drive(streaming, 256, 1024);
        QVERIFY(streaming.isPaused());
        int sounding = 0;
        for (unsigned f = 0; f < 1024; ++f)
            sounding += out[2 * f] != 0.0f || out[2 * f + 1] != 0.0f ? 1 : 0;
        QVERIFY2(sounding >= 438 && sounding <= 442, qPrintable(QString::number(sounding)));
        const float pausedAt = streaming.position();
        QVERIFY(pausedAt > before && pausedAt <= before + 443 * 4);
        drive(streaming, 256, 2048);
        QCOMPARE(streaming.position(), pausedAt);

        // Resuming plays on from the very next sample.
        streaming.play();
        out = drive(streaming, 256, 1024);
        QCOMPARE(checkTail(out, streaming, 500), QString());
        QCOMPARE(streaming.position(), pausedAt + 1024 * 4);
    }

    void jumpLandsOnFrameBoundary()
    {
        DiskStreaming streaming;
        openAndPrime(streaming);
        streaming.play();
        drive(streaming, 256, 1024);

        std::atomic<int> done{0};
        const std::int32_t offset = 4 * 500 + 3; // inside frame 500
        QVERIFY(streaming.setCurrentSampleInFileAndFadeOutFadeIn(offset, [&done] { ++done; }));
        QCOMPARE(done.load(), 0);
        std::vector<float> out = drive(streaming, 256, 2048);
        QCOMPARE(done.load(), 1);
        QCOMPARE(streaming.currentSampleInFile(), std::uint32_t(offset));
        QCOMPARE(streaming.fadeState(), std::uint32_t(Idle));
        // Frames played since the jump, the silent one at the turn included.
        const auto since = static_cast<std::uint32_t>(streaming.position()) / 4;
        QVERIFY(since > 2048 - 445 && since < 2048 - 435);
        // Reading starts at 2000, the frame boundary below the offset.
        QCOMPARE(checkTail(out, streaming, 500), QString());
        // Well past the preload (4096 frames), the reader's chunks follow on.
        out = drive(streaming, 1024, 6144);
        QCOMPARE(checkTail(out, streaming, 6144), QString());
        QCOMPARE(streaming.underrunCount(), std::uint64_t(0));
    }

    void seekClampsRoundsAndRefusesDuringFade()
    {
        DiskStreaming streaming;
        openAndPrime(streaming, 4 * 1000);
        QCOMPARE(streaming.seek(-0.5, 40000), 0);
        QCOMPARE(streaming.position(), 0.0f);
        QCOMPARE(streaming.seek(7.0, 40000), 0);
        QCOMPARE(streaming.position(), 40000.0f);
        // An odd byte target: the position is target / 2 samples.
        QCOMPARE(streaming.seek(1.0, 10001), 0);
        QCOMPARE(streaming.position(), 10000.0f);

        streaming.setCurrentSampleInFile(4 * 1000);
        streaming.play();
        QCOMPARE(streaming.seek(0.5, 40000), 1); // the fade-in runs
        QCOMPARE(streaming.position(), 0.0f);
        drive(streaming, 256, 512);
        QCOMPARE(streaming.seek(0.5, 40002), 0); // 20001 bytes: read from 20000
        QCOMPARE(streaming.position(), 20000.0f);
        QCOMPARE(streaming.seek(0.9, 40000), 1); // refused while the seek fades
        const std::vector<float> out = drive(streaming, 256, 2048);
        QCOMPARE(streaming.fadeState(), std::uint32_t(Idle));
        QCOMPARE(checkTail(out, streaming, 500), QString());
    }

    void seekWhilePausedResumesAtTheTarget_data()
    {
        QTest::addColumn<unsigned>("pausedFrames");
        // The device calls on while paused, or the seek and the play fall
        // between two callbacks.
        QTest::addRow("callbacks while paused") << 2048u;
        QTest::addRow("none in between") << 0u;
    }

    void seekWhilePausedResumesAtTheTarget()
    {
        QFETCH(unsigned, pausedFrames);
        // A second of audio: the old read-ahead and the targets lie far apart.
        QTemporaryDir dir;
        const QString image = writeImage(dir.path(), 44100);
        DiskStreaming streaming;
        streaming.openFile(image, {});
        streaming.setCurrentSampleInFile(4 * 20000);
        streaming.play();
        drive(streaming, 256, 1024);
        streaming.pause();
        drive(streaming, 256, 1024);
        QVERIFY(streaming.isPaused());

        // The reader has every slot filled from the old place by now.
        QCOMPARE(streaming.seek(0.5, 4 * 20000), 0);
        QCOMPARE(streaming.position(), 4.0f * 10000);
        if (pausedFrames > 0)
            drive(streaming, 256, pausedFrames);
        QCOMPARE(streaming.position(), 4.0f * 10000);
        streaming.play();
        // Long enough to find the target even behind all the old chunks.
        const std::vector<float> out = drive(streaming, 256, 10240);
        QCOMPARE(checkStartsAt(out, 20000 + 10000), QString());
        QCOMPARE(streaming.position(), 4.0f * (10000 + 10240));

        // Back again, with no callback in between.
        streaming.pause();
        drive(streaming, 256, 1024);
        QCOMPARE(streaming.seek(0.05, 4 * 20000), 0);
        streaming.play();
        QCOMPARE(checkStartsAt(drive(streaming, 256, 10240), 20000 + 1000), QString());
    }

    void stopAndPauseTransitions()
    {
        DiskStreaming streaming;
        openAndPrime(streaming, 4 * 3000);
        QVERIFY(streaming.isStopped());

        // Stopped -> pause: paused after a fade-out of silence.
        streaming.pause();
        QVERIFY(streaming.isStopped());
        drive(streaming, 256, 512);
        QVERIFY(streaming.isPaused());
        // Paused -> pause: another fade, still paused.
        streaming.pause();
        QCOMPARE(streaming.fadeState(), std::uint32_t(FadingOut));
        drive(streaming, 256, 512);
        QVERIFY(streaming.isPaused());
        // Paused -> stop: at once.
        streaming.stop();
        QVERIFY(streaming.isStopped());

        // Playing -> stop: after the fade-out, back at currentSampleInFile.
        streaming.play();
        drive(streaming, 256, 4096);
        QCOMPARE(streaming.position(), 4096.0f * 4);
        bool done = false;
        streaming.stop([&done] { done = true; });
        QVERIFY(streaming.isPlaying());
        QVERIFY(!done);
        drive(streaming, 256, 1024);
        QVERIFY(streaming.isStopped());
        QVERIFY(done);
        QCOMPARE(streaming.position(), 0.0f);
        QCOMPARE(streaming.meterInfo().peakLeft, 0.0f); // the meter was reset

        // The next play starts at currentSampleInFile with a fresh prime.
        streaming.play();
        const std::vector<float> out = drive(streaming, 256, 2048);
        QCOMPARE(streaming.position(), 2048.0f * 4);
        QCOMPARE(checkTail(out, streaming, 1500), QString());
    }

    void requestsDuringAFadeRunInOrder()
    {
        DiskStreaming streaming;
        openAndPrime(streaming, 4 * 100);
        // A stop as playback starts, all inside one callback: the stop's own
        // zero must not be overwritten by the frames the callback counted.
        streaming.play();
        streaming.stop();
        drive(streaming, 2048, 2048);
        QVERIFY(streaming.isStopped());
        QCOMPARE(streaming.position(), 0.0f);

        // Pause, then play again before the fade-out ends: playback goes on,
        // and the pause does not linger to strike at the next jump.
        streaming.play();
        drive(streaming, 256, 1024);
        streaming.pause();
        drive(streaming, 100, 100);
        streaming.play();
        drive(streaming, 256, 2048);
        QVERIFY(streaming.isPlaying());
        QVERIFY(!streaming.hasQueuedActions());
        bool jumped = false;
        QVERIFY(streaming.setCurrentSampleInFileAndFadeOutFadeIn(4 * 5000,
                                                                 [&jumped] { jumped = true; }));
        const std::vector<float> out = drive(streaming, 256, 2048);
        QVERIFY(jumped);
        QVERIFY(streaming.isPlaying());
        QCOMPARE(checkTail(out, streaming, 1000), QString());
    }

    void endOfFileCallbackOnlyAtTheEnd()
    {
        std::atomic<int> calls{0};
        DiskStreaming streaming;
        openAndPrime(streaming, 0, [&calls] { ++calls; });
        QCOMPARE(calls.load(), 0); // four chunks ahead, the end not reached

        streaming.setCurrentSampleInFile(std::int32_t(kImageFrames * 4 - 8192));
        QVERIFY(streaming.waitForReader());
        QVERIFY(calls.load() >= 1);

        // Playing into the end: the rest of the image, then the position stays.
        streaming.play();
        drive(streaming, 256, 3000);
        QCOMPARE(streaming.position(), 8192.0f);
    }

    void volumeGlidesAndCountsTwiceInTheMeter()
    {
        DiskStreaming streaming;
        openAndPrime(streaming);
        streaming.play();
        drive(streaming, 256, 512);

        streaming.setVolume(0.0);
        std::vector<float> out = drive(streaming, 1000, 6000);
        QVERIFY(streaming.volume() > 0.0f && streaming.volume() < 0.01f);
        // While gliding the output follows the volume, frame by frame.
        for (unsigned f = 1; f < 6000; f += 997)
            QVERIFY(std::abs(out[2 * f]) <= std::abs(expectedAt(512 + f, 0)));
        drive(streaming, 1000, 2000);
        QCOMPARE(streaming.volume(), 0.0f); // snapped

        // Open the image again for a clean meter, at half volume.
        DiskStreaming half;
        openAndPrime(half);
        half.setVolume(0.5);
        drive(half, 256, 20000); // the glide settles while stopped
        QCOMPARE(half.volume(), 0.5f);
        half.play();
        drive(half, 256, 512);
        half.resetPeaks();
        out = drive(half, 256, 4096);
        QCOMPARE(checkTail(out, half, 4000, 0.5f), QString());
        float loudest = 0.0f;
        for (unsigned f = 4096 - 4000; f < 4096; ++f)
            loudest = std::max(loudest, out[2 * f]);
        // The output carries the volume once; the meter applies it again.
        QCOMPARE(half.meterInfo().peakLeft, loudest * 0.5f);
    }

    // The audio thread counts a callback's frames against the value it saw at
    // the start. A track boundary moved meanwhile must not lose that count; a
    // seek or jump stored meanwhile must win over it.
    void positionKeepsCountsAcrossShiftsNotAcrossStores()
    {
        SamplePosition position;
        position.store(1000);
        SamplePosition::Snapshot callback = position.snapshot();
        QVERIFY(position.shift(600));
        position.addSince(callback, 1512);
        QCOMPARE(position.load(), 912u);

        QVERIFY(!position.shift(913));
        QCOMPARE(position.load(), 912u);

        callback = position.snapshot();
        position.store(40);
        position.addSince(callback, 2000);
        QCOMPARE(position.load(), 40u);

        // A callback that publishes midway counts on from what it left.
        callback = position.snapshot();
        callback = position.addSince(callback, 140);
        position.addSince(callback, 240);
        QCOMPARE(position.load(), 240u);
        position.store(40);

        // A store of the same value still wins.
        callback = position.snapshot();
        position.store(40);
        position.addSince(callback, 100);
        QCOMPARE(position.load(), 40u);
    }
};

QTEST_GUILESS_MAIN(TestAudioStreaming)
#include "test_audio_streaming.moc"
