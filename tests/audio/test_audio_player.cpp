// The player over a DDP model built from PQ entries, driven without a device.
#include "AudioTestSupport.h"
#include "ddp/DdpTestBytes.h"

#include "audio/Player.h"
#include "ddp/DDPModel.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Audio;
using namespace audiotest;

namespace {

constexpr std::uint32_t kCdFrame = 2352;

std::shared_ptr<DDPModel> modelOf(const std::vector<testbytes::Entry>& spec,
                                  std::initializer_list<std::uint32_t> indexList)
{
    std::vector<PqEntry> entries;
    for (const testbytes::Entry& e : spec)
        entries.push_back(PqEntry::fromBytes(testbytes::pqEntry(e)));
    auto model = std::make_shared<DDPModel>();
    model->setEntries(std::move(entries));
    for (std::uint32_t index : indexList)
        model->appendIndex(index);
    return model;
}

// Track 1 with an index 02, track 2 with a pre-gap, track 3: 75 CD frames.
// With `singleLeadOut` the descriptor closes with "AA" 01 alone, as some
// authoring tools write it.
std::shared_ptr<DDPModel> makeModel(bool firstRowPause, bool singleLeadOut = false)
{
    std::vector<testbytes::Entry> spec = {
        {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 0, 10},
        {"01", 2, 0, 0, 20}, {"02", 0, 0, 0, 30}, {"02", 1, 0, 0, 40},
        {"03", 1, 0, 0, 60}, {"AA", 1, 0, 1, 0},  {"AA", 0, 0, 1, 0},
    };
    if (singleLeadOut)
        spec.pop_back();
    if (firstRowPause)
        return modelOf(spec, {0u, 1u, 2u, 0u, 1u, 1u});
    return modelOf(spec, {1u, 2u, 0u, 1u, 1u});
}

} // namespace

class TestAudioPlayer : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_image;

    void loadInto(Player& player, const std::shared_ptr<DDPModel>& model, QString image = {})
    {
        player.setTrackSource(model);
        player.load(image.isEmpty() ? m_image : image, {});
        QVERIFY(player.streaming().waitForReader());
    }

private slots:
    void initTestCase()
    {
        m_image = writeImage(m_dir.path(), 44100);
        QVERIFY(!m_image.isEmpty());
    }

    void segmentsAndLoad()
    {
        Player player;
        auto model = makeModel(false);
        loadInto(player, model);
        const std::vector<TrackSegment> segments = player.trackSegments();
        QCOMPARE(segments.size(), std::size_t(7));
        QCOMPARE(segments[2], TrackSegment(10 * kCdFrame, 20 * kCdFrame));
        QCOMPARE(segments[6], TrackSegment(60 * kCdFrame, 75 * kCdFrame));
        // No pause row: the first track is entry 2, reported as number 0.
        QCOMPARE(model->firstTrackNumber(), 2u);
        QVERIFY(player.isStopped());
        QCOMPARE(player.entryIndex(), 2);
        QCOMPARE(player.currentTrackNumber(), 0);
        QCOMPARE(player.currentTrackStart(), 10 * kCdFrame);
        QCOMPARE(player.currentTrackLength(), 10 * kCdFrame);

        Player withPause;
        auto paused = makeModel(true);
        loadInto(withPause, paused);
        QCOMPARE(paused->firstTrackNumber(), 1u);
        QCOMPARE(withPause.currentTrackNumber(), 1);

        // Play plays the first track's audio and tells the model.
        QList<bool> heard;
        paused->setPlayingListener([&heard](bool playing) { heard.append(playing); });
        withPause.play();
        const std::vector<float> out = drive(withPause.streaming(), 256, 2048);
        QCOMPARE(checkTail(out, withPause.streaming(), 1500), QString());
        withPause.pause();
        QCOMPARE(heard, QList<bool>({true, false}));
    }

    void nextTwiceDuringFadeMovesOnceAndTakesEveryEntry()
    {
        Player player;
        loadInto(player, makeModel(false));
        player.play();
        drive(player.streaming(), 256, 1024);

        player.selectNextTrack();
        player.selectNextTrack(); // falls into the first jump's fade
        QCOMPARE(player.currentTrackNumber(), 1);
        QCOMPARE(player.entryIndex(), 2); // moves when the jump is made
        std::vector<float> out = drive(player.streaming(), 256, 2048);
        QCOMPARE(player.entryIndex(), 3); // index 02 of track 1: next takes any entry
        QCOMPARE(player.currentTrackStart(), 20 * kCdFrame);
        QCOMPARE(checkTail(out, player.streaming(), 1000), QString());

        player.selectNextTrack(); // onto the pre-gap (index 00) of track 2
        out = drive(player.streaming(), 256, 2048);
        QCOMPARE(player.entryIndex(), 4);
        QCOMPARE(player.currentTrackNumber(), 2);
        QCOMPARE(checkTail(out, player.streaming(), 1000), QString());
    }

    void previousGoesBackToIndexOne()
    {
        Player player;
        loadInto(player, makeModel(false));
        player.selectTrack(4); // entry 6, track 3: always ends in playback
        QVERIFY(player.isPlaying());
        QCOMPARE(player.entryIndex(), 6);
        drive(player.streaming(), 256, 1024);

        player.selectPreviousTrack(); // entry 5 is index 01 of track 2
        drive(player.streaming(), 256, 1024);
        QCOMPARE(player.entryIndex(), 5);
        QCOMPARE(player.currentTrackNumber(), 3);

        // Across the pre-gap (index 00) and index 02 of track 1 to its index 01.
        player.selectPreviousTrack();
        QCOMPARE(player.currentTrackNumber(), 0);
        const std::vector<float> out = drive(player.streaming(), 256, 2048);
        QCOMPARE(player.entryIndex(), 2);
        QCOMPARE(player.streaming().currentSampleInFile(), 10 * kCdFrame);
        QCOMPARE(checkTail(out, player.streaming(), 1000), QString());
    }

    void previousFromFirstTrackStops()
    {
        Player player;
        auto model = makeModel(false);
        loadInto(player, model);
        player.play();
        drive(player.streaming(), 256, 1024);
        player.selectPreviousTrack();
        QCOMPARE(player.currentTrackNumber(), 0);
        QVERIFY(!model->isPlaying());
        drive(player.streaming(), 256, 1024);
        QVERIFY(player.isStopped());
        QCOMPARE(player.position(), 0.0f);
        // The guard is free again.
        player.selectTrack(2);
        player.selectPreviousTrack();
        drive(player.streaming(), 256, 1024);
        QCOMPARE(player.entryIndex(), 2);
    }

    void nextPastLastReturnsToFirstTrackStopped()
    {
        Player player;
        auto model = makeModel(false);
        loadInto(player, model);
        player.selectTrack(4);
        drive(player.streaming(), 256, 1024);
        player.selectNextTrack();
        QCOMPARE(player.currentTrackNumber(), 0);
        QCOMPARE(player.entryIndex(), 2);
        QVERIFY(!model->isPlaying());
        // The display's end-of-track check may fire on during the fade-out (the
        // position is that of the last track): it must not skip again.
        for (int i = 0; i < 4 && player.isPlaying(); ++i) {
            player.onTrackEnded();
            drive(player.streaming(), 256, 256);
        }
        drive(player.streaming(), 256, 1024);
        QVERIFY(player.isStopped());
        QCOMPARE(player.entryIndex(), 2);
        QCOMPARE(player.position(), 0.0f);
        QCOMPARE(player.streaming().currentSampleInFile(), 10 * kCdFrame);

        // Stopped, next moves at once and play starts there.
        player.selectNextTrack();
        QCOMPARE(player.entryIndex(), 3);
        player.play();
        const std::vector<float> out = drive(player.streaming(), 256, 2048);
        QCOMPARE(player.streaming().currentSampleInFile(), 20 * kCdFrame);
        QCOMPARE(checkTail(out, player.streaming(), 1500), QString());
    }

    void lastTrackPlaysToItsEnd_data()
    {
        QTest::addColumn<bool>("singleLeadOut");
        QTest::newRow("two lead-out entries") << false;
        QTest::newRow("one lead-out entry") << true;
    }

    void lastTrackPlaysToItsEnd()
    {
        QFETCH(bool, singleLeadOut);
        Player player;
        loadInto(player, makeModel(false, singleLeadOut));
        player.selectTrack(4);
        const std::uint32_t length = player.currentTrackLength();
        QCOMPARE(length, 15 * kCdFrame);
        // The track is the end of the image: the position stops exactly there.
        drive(player.streaming(), 1024, length / 4 + 4096);
        QCOMPARE(player.position(), float(length));
        player.onTrackEnded();
        drive(player.streaming(), 256, 1024);
        QVERIFY(player.isStopped());
        QCOMPARE(player.entryIndex(), 2);
    }

    void trackEndRunsOnWithoutAJump()
    {
        Player player;
        loadInto(player, makeModel(false));
        player.play();
        const std::uint32_t length = player.currentTrackLength();
        std::vector<float> out = drive(player.streaming(), 256, 6144);
        QVERIFY(player.position() >= float(length));

        // The boundary passes during a callback that is still counting: what
        // it plays must not be lost from the new track's position.
        player.onTrackEnded();
        QCOMPARE(player.entryIndex(), 3);
        QCOMPARE(player.currentTrackNumber(), 1);
        QCOMPARE(player.currentTrackStart(), 20 * kCdFrame);
        const std::vector<float> more = drive(player.streaming(), 255, 2040);
        out.insert(out.end(), more.begin(), more.end());
        QCOMPARE(player.position(), float((6144 + 2040) * 4 - length));

        // Past the fade-in every sample arrives once and in order: no fade, no
        // step back at the boundary.
        QCOMPARE(checkTail(out, player.streaming(), 6144 + 2040 - 500), QString());
    }

    // The display sees a track's end in a float and acts on it every tick; the
    // player must move on only at the real end, and never while a jump it was
    // asked for is still fading out.
    void trackEndOnlyAtTheRealEnd()
    {
        // A track selected just before the end: the old track's end passes
        // during the fade-out, and the selected track is what plays.
        {
            Player player;
            loadInto(player, makeModel(false));
            player.play();
            const std::uint32_t length = player.currentTrackLength();
            drive(player.streaming(), 256, length / 4 - 256);
            player.selectTrack(3); // entry 5
            std::vector<float> out;
            for (int i = 0; i < 16; ++i) {
                const std::vector<float> more = drive(player.streaming(), 256, 256);
                out.insert(out.end(), more.begin(), more.end());
                if (player.position() >= float(player.currentTrackLength()))
                    player.onTrackEnded();
            }
            QCOMPARE(player.entryIndex(), 5);
            QCOMPARE(player.currentTrackNumber(), 3);
            QCOMPARE(player.currentTrackStart(), 40 * kCdFrame);
            QCOMPARE(checkTail(out, player.streaming(), 2000), QString());
        }

        // A seven-minute track one frame short of its end: the float position
        // already equals the length, yet nothing may happen until the end.
        auto model = modelOf({{"00", 0, 0, 0, 0},
                              {"01", 0, 0, 0, 0},
                              {"01", 1, 0, 0, 0},
                              {"02", 1, 7, 0, 10},
                              {"03", 1, 7, 5, 0},
                              {"AA", 1, 7, 6, 0},
                              {"AA", 0, 7, 6, 0}},
                             {1u, 1u, 1u});
        QTemporaryDir dir;
        QFile image(dir.filePath(QStringLiteral("IMAGE.DAT")));
        QVERIFY(image.open(QIODevice::WriteOnly));
        QVERIFY(image.resize(qint64(7 * 60 + 7) * 176400)); // sparse: silence
        image.close();

        Player player;
        loadInto(player, model, image.fileName());
        player.play();
        const std::uint32_t length = player.currentTrackLength();
        for (std::uint32_t done = 0; done < length / 4 - 1;) {
            const std::uint32_t n = std::min<std::uint32_t>(44100 * 10, length / 4 - 1 - done);
            drive(player.streaming(), 4096, n);
            done += n;
        }
        QCOMPARE(player.position(), float(length));
        player.onTrackEnded();
        QCOMPARE(player.entryIndex(), 2);
        QCOMPARE(player.streaming().fadeState(), std::uint32_t(Idle));
        QVERIFY(!player.streaming().hasQueuedActions());

        drive(player.streaming(), 1, 1);
        player.onTrackEnded();
        QCOMPARE(player.entryIndex(), 3);
        QCOMPARE(player.position(), 0.0f);
        QCOMPARE(player.streaming().fadeState(), std::uint32_t(Idle));
    }

    // While paused the reader has read ahead of the paused place; whatever
    // moves the position then must not let that be heard on resuming.
    void selectionWhilePausedResumesThere()
    {
        constexpr std::uint32_t kFramesPerCdFrame = kCdFrame / 4;
        Player player;
        loadInto(player, makeModel(false));
        player.play();
        drive(player.streaming(), 256, 2048);
        const auto pauseFully = [&] {
            player.pause();
            drive(player.streaming(), 256, 1024);
        };
        const auto resume = [&](unsigned frames) {
            player.play();
            return drive(player.streaming(), 256, frames);
        };
        pauseFully();
        player.selectTrack(3); // entry 5, 40 CD frames in; plays at once
        QVERIFY(player.isPlaying());
        QCOMPARE(checkStartsAt(drive(player.streaming(), 256, 8192), 40 * kFramesPerCdFrame),
                 QString());

        pauseFully();
        player.selectPreviousTrack(); // back over the pre-gap and index 02
        QCOMPARE(player.entryIndex(), 2);
        drive(player.streaming(), 256, 1024);
        QCOMPARE(checkStartsAt(resume(8192), 10 * kFramesPerCdFrame), QString());

        pauseFully();
        player.selectNextTrack(); // entry 3
        QCOMPARE(checkStartsAt(resume(8192), 20 * kFramesPerCdFrame), QString());
        QCOMPARE(player.entryIndex(), 3);

        // A seek through the player, 3/4 into entry 3 (10 CD frames long).
        pauseFully();
        QCOMPARE(player.seek(0.75), 0);
        QCOMPARE(checkStartsAt(resume(4096), 20 * kFramesPerCdFrame + 4410), QString());
    }

    void withoutTrackSourceNothingHappens()
    {
        Player player;
        player.play();
        player.selectNextTrack();
        player.selectPreviousTrack();
        player.selectTrack(3);
        QVERIFY(player.isStopped());
        QCOMPARE(player.currentTrackLength(), 0u);
        QCOMPARE(player.lastError().kind, ErrorKind::NoError);
    }
};

QTEST_GUILESS_MAIN(TestAudioPlayer)
#include "test_audio_player.moc"
