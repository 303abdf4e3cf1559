// The test pattern and its inverse, the written folder, the demo disc and the
// tivora-mkddp command.
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace mkddp;

namespace {

qint16 sampleAt(const QByteArray& bytes, qint64 offset)
{
    return qint16(quint8(bytes.at(int(offset))) | quint8(bytes.at(int(offset + 1))) << 8);
}

// Runs tivora-mkddp; its exit status, -1 when it did not finish.
int mkddpCommand(const QStringList& args, QByteArray* out = nullptr)
{
    QProcess p;
    p.start(QDir(qEnvironmentVariable("TIVORA_BINARY_DIR"))
                .filePath(QStringLiteral("tools/mkddp/tivora-mkddp")),
            args);
    if (!p.waitForFinished(30000))
        return -1;
    if (out)
        *out = p.readAllStandardOutput();
    return p.exitCode();
}

// Empty when the folder holds exactly these files with these bytes; else
// what differs.
QString folderDiffers(const QString& folder, const DiscFiles& files)
{
    const QStringList names = QDir(folder).entryList(QDir::Files);
    if (names.size() != int(files.size()))
        return names.join(QLatin1Char(' '));
    for (const auto& [name, bytes] : files) {
        QFile file(QDir(folder).filePath(name));
        if (!file.open(QIODevice::ReadOnly) || file.readAll() != bytes)
            return name;
    }
    return QString();
}

} // namespace

class TestMkddpAudio : public QObject
{
    Q_OBJECT

private slots:
    void patternValues()
    {
        // Track 1 at frame 0: the bottom of the triangle, counter 0.
        QCOMPARE(patternSample(0, 0, 1), qint16(-100 * 256));
        QCOMPARE(patternSample(0, 1, 1), qint16(-100 * 256));
        // Half a period (199 frames) later: near the top.
        QCOMPARE(patternSample(99, 0, 1) >> 8, 98);
        // In a pause only the counter is left.
        QCOMPARE(patternSample(0x12345, 0, 0), qint16(0x45));
        QCOMPARE(patternSample(0x12345, 1, 0), qint16(0x23));
        // Tones differ from track to track.
        QVERIFY(patternSample(150, 0, 1) != patternSample(150, 0, 2));
        for (int tone = 0; tone <= 99; tone += 11) {
            for (quint32 f : {0u, 77u, 65535u, 65536u, 1000003u}) {
                const qint16 l = patternSample(f, 0, tone);
                const qint16 r = patternSample(f, 1, tone);
                QCOMPARE(patternCounter(l, r), quint16(f & 0xFFFF));
                QVERIFY(std::abs(l >> 8) <= 100);
            }
        }
    }

    // The pattern follows the disc: tone 0 in pauses, the track number from
    // each index 01 on, and the bytes of any range, aligned or not.
    void patternOverADisc()
    {
        const DiscSpec spec = realisticDisc();
        const TestPattern pattern(spec);
        QCOMPARE(pattern.imageSize(), imageSize(spec));
        const auto frameAt = [](qint64 position) { return quint32(position / 4); };
        QCOMPARE(pattern.toneAt(0), 0);
        QCOMPARE(pattern.toneAt(frameAt(indexPosition(spec, 1, 1))), 1);
        QCOMPARE(pattern.toneAt(frameAt(indexPosition(spec, 3, 0))), 0);
        QCOMPARE(pattern.toneAt(frameAt(indexPosition(spec, 3, 0)) - 1), 2);
        QCOMPARE(pattern.toneAt(frameAt(indexPosition(spec, 3, 2))), 3);
        QCOMPARE(pattern.toneAt(frameAt(imageSize(spec)) - 1), 7);

        const qint64 start = indexPosition(spec, 5, 1);
        const QByteArray block = pattern.bytes(start - 8, 16);
        QCOMPARE(block.size(), 16);
        QCOMPARE(sampleAt(block, 0), patternSample(frameAt(start) - 2, 0, 0));
        QCOMPARE(sampleAt(block, 8), patternSample(frameAt(start), 0, 5));
        QCOMPARE(sampleAt(block, 10), patternSample(frameAt(start), 1, 5));
        QCOMPARE(pattern.bytes(start - 5, 7), block.mid(3, 7));

        // Clipped at the image's end.
        QCOMPARE(pattern.bytes(imageSize(spec) - 6, 100).size(), 6);
        QVERIFY(pattern.bytes(imageSize(spec), 100).isEmpty());

        // Consecutive frames carry consecutive counters across a track change.
        const QByteArray across = pattern.bytes(indexPosition(spec, 2, 1) - 4000, 8000);
        for (int i = 4; i < across.size(); i += 4) {
            const quint16 previous =
                patternCounter(sampleAt(across, i - 4), sampleAt(across, i - 2));
            const quint16 current = patternCounter(sampleAt(across, i), sampleAt(across, i + 2));
            QCOMPARE(quint16(previous + 1), current);
        }
    }

    // Silent pauses are all zeros in the written image, from their first
    // byte to the last, while the tracks keep the pattern unchanged.
    void silentPauses()
    {
        QTemporaryDir dir;
        DiscSpec spec = simpleDisc(2, 2);
        spec.tracks[0].pauseFrames = cdFrames(4);
        spec.tracks[1].pauseFrames = 40;
        const QByteArray audible = TestPattern(spec).bytes(0, imageSize(spec));
        spec.silentPauses = true;
        QVERIFY(writeDisc(spec, dir.path()));
        QFile file(QDir(dir.path()).filePath(QStringLiteral("IMAGE.DAT")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray image = file.readAll();
        QCOMPARE(image.size(), audible.size());
        const auto zeros = [](qint64 n) { return QByteArray(int(n), '\0'); };
        const qint64 track1 = indexPosition(spec, 1, 1);
        const qint64 pause2 = indexPosition(spec, 2, 0);
        const qint64 track2 = indexPosition(spec, 2, 1);
        QCOMPARE(image.left(int(track1)), zeros(track1));
        QCOMPARE(image.mid(int(track1), int(pause2 - track1)),
                 audible.mid(int(track1), int(pause2 - track1)));
        QCOMPARE(image.mid(int(pause2), int(track2 - pause2)), zeros(track2 - pause2));
        QCOMPARE(image.mid(int(track2)), audible.mid(int(track2)));
        QVERIFY(audible.left(int(track1)) != zeros(track1)); // the default is not silent
    }

    // The folder holds exactly the built files, the image being the pattern;
    // writing again with a file left out removes the old one.
    void writtenFolder()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        DiscSpec spec = simpleDisc(3, 2);
        spec.tracks[1].pauseFrames = 40;
        QString error;
        QVERIFY2(writeDisc(spec, dir.path(), &error), qPrintable(error));
        const DiscFiles files = buildFiles(spec, true);
        QCOMPARE(folderDiffers(dir.path(), files), QString());
        const QByteArray image = files.at(QStringLiteral("IMAGE.DAT"));
        QCOMPARE(qint64(image.size()), imageSize(spec));
        const TestPattern pattern(spec);
        QCOMPARE(image, pattern.bytes(0, imageSize(spec)));
        for (qint64 offset : {qint64(0), indexPosition(spec, 2, 0) - 2, indexPosition(spec, 3, 1),
                              imageSize(spec) - 64})
            QCOMPARE(image.mid(int(offset), 64), pattern.bytes(offset, 64));

        spec.faults = {Fault::NoDdpid};
        QVERIFY(writeDisc(spec, dir.path(), &error));
        QVERIFY(!QDir(dir.path()).exists(QStringLiteral("DDPID")));
    }

    void longDiscSize()
    {
        const DiscSpec spec = longDisc(74);
        QCOMPARE(imageSize(spec), qint64(783216000));
        QCOMPARE(spec.tracks.first().pauseFrames, cdFrames(2));
        QCOMPARE(pqLayout(spec).last().minutes(), 74);
    }

    // The demo is music: 15 to 30 s tracks, loud enough, never clipped, with
    // the 2 s first pause and one index 02.
    void demoDiscIsMusic()
    {
        const DiscSpec spec = demoDisc();
        QVERIFY(spec.tracks.size() >= 3 && spec.tracks.size() <= 4);
        int index2 = 0;
        for (const TrackSpec& t : spec.tracks) {
            QVERIFY(t.seconds() >= 15 && t.seconds() <= 30);
            QVERIFY(!t.text.title.isEmpty());
            index2 += t.indexOffsets.size();
        }
        QCOMPARE(index2, 1);
        QCOMPARE(spec.tracks.first().pauseFrames, cdFrames(2));
        QVERIFY(spec.cdText);

        const QByteArray image = buildFiles(spec, true).at(QStringLiteral("IMAGE.DAT"));
        QCOMPARE(qint64(image.size()), imageSize(spec));
        int peak = 0;
        double sum = 0;
        const qint64 first = indexPosition(spec, 1, 1);
        for (qint64 i = 0; i < first; i += 2)
            QCOMPARE(sampleAt(image, i), qint16(0)); // the pause is silent
        for (qint64 i = first; i < image.size(); i += 2) {
            const int s = sampleAt(image, i);
            peak = qMax(peak, std::abs(s));
            sum += double(s) * s;
        }
        const double rms = std::sqrt(sum / double((image.size() - first) / 2)) / 32768.0;
        QVERIFY2(peak < 32000, qPrintable(QString::number(peak)));
        QVERIFY2(rms > 0.05, qPrintable(QString::number(rms)));
    }

    void command()
    {
        QTemporaryDir dir;
        const QString folder = QDir(dir.path()).filePath(QStringLiteral("disc"));
        QCOMPARE(mkddpCommand({QStringLiteral("test"), folder, QStringLiteral("--tracks"),
                               QStringLiteral("2"), QStringLiteral("--seconds"),
                               QStringLiteral("3"), QStringLiteral("--cdtext"),
                               QStringLiteral("--fault"), QStringLiteral("no-image-file")}),
                 0);
        QStringList names = QDir(folder).entryList(QDir::Files);
        QCOMPARE(names, (QStringList{QStringLiteral("CDTEXT.BIN"), QStringLiteral("DDPID"),
                                     QStringLiteral("DDPMS"), QStringLiteral("PQDESCR")}));
        QFile pq(QDir(folder).filePath(QStringLiteral("PQDESCR")));
        QVERIFY(pq.open(QIODevice::ReadOnly));
        QCOMPARE(pq.size(), 64 * 6); // lead-in, pause, two tracks, two lead-out entries

        QCOMPARE(mkddpCommand({QStringLiteral("test"), folder, QStringLiteral("--fault"),
                               QStringLiteral("no-such-fault")}),
                 2);
        QByteArray help;
        QCOMPARE(mkddpCommand({QStringLiteral("--help")}, &help), 0);
        QVERIFY(help.contains("pq-not-a-number"));
    }

    void exportNameOptions_data()
    {
        // The command's options make the same disc as these changes to its DiscSpec.
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("tracks");
        QTest::addColumn<int>("change");
        QTest::newRow("empty track")
            << QStringList{QStringLiteral("--empty-track"), QStringLiteral("2")} << 3 << 0;
        QTest::newRow("long title") << QStringList{QStringLiteral("--long-title")} << 3 << 1;
        QTest::newRow("control characters")
            << QStringList{QStringLiteral("--control-text")} << 3 << 2;
        QTest::newRow("numbers past 99")
            << QStringList{QStringLiteral("--tracks"), QStringLiteral("150")} << 150 << 3;
    }
    void exportNameOptions()
    {
        QFETCH(QStringList, options);
        QFETCH(int, tracks);
        QFETCH(int, change);
        DiscSpec spec = simpleDisc(tracks, 1);
        if (change == 0)
            spec.tracks[1].frames = 0;
        else if (change == 1)
            spec.cdText = true, spec.tracks[0].text.title = longLatin1Title();
        else if (change == 2)
            putControlCharacters(spec);
        QTemporaryDir dir;
        QCOMPARE(mkddpCommand(QStringList{QStringLiteral("test"), dir.path(),
                                          QStringLiteral("--seconds"), QStringLiteral("1")} +
                              options),
                 0);
        QCOMPARE(folderDiffers(dir.path(), buildFiles(spec, true)), QString());
        if (change == 3)
            QCOMPARE(pqBytes(spec).mid(101 * 64 + 4, 2), QByteArray("00")); // track 100
    }
};

QTEST_GUILESS_MAIN(TestMkddpAudio)
#include "test_mkddp_audio.moc"
