// The WAV writer and the export workers without any window: header fields,
// track ranges, file names, exact data bytes, the progress scale, and every
// way a write can fail.
#include "ExportTestSupport.h"

#include "ddp/CheckedAccess.h"
#include "export/ExportFileName.h"
#include "export/FileWriterAllTracks.h"
#include "export/FileWriterOneTrack.h"
#include "export/TrackRange.h"
#include "export/WavHeader.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

using namespace exporttest;
using testbytes::Entry;

namespace {

constexpr qint64 kPiece = FileWriter::kPieceSize;
constexpr qint64 kSecond = 176400;

struct Outcome
{
    QList<qint64> progress;
    int finished = 0;
    QStringList failures;
    QStringList written;
};

Outcome run(FileWriter& worker)
{
    Outcome outcome;
    QObject::connect(&worker, &FileWriter::processed,
                     [&](qint64 v) { outcome.progress.append(v); });
    QObject::connect(&worker, &FileWriter::finished, [&] { ++outcome.finished; });
    QObject::connect(&worker, &FileWriter::failed,
                     [&](const QString& m) { outcome.failures.append(m); });
    QObject::connect(&worker, &FileWriter::fileWritten,
                     [&](const QString& p) { outcome.written.append(p); });
    worker.process();
    return outcome;
}

// Three tracks; track 2 has an index 02, track 3 a pause of its own.
std::vector<Entry> discWithIndexes()
{
    return {
        {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0},
        {"02", 1, 1, 0, 10}, {"02", 2, 1, 30, 0}, {"03", 0, 2, 10, 74},
        {"03", 1, 2, 12, 0}, {"AA", 1, 3, 0, 0},  {"AA", 0, 3, 0, 0},
    };
}

qint64 at(int minutes, int seconds, int frames)
{
    return (minutes * 60 + seconds) * kSecond + frames * 2352;
}

} // namespace

class TestExportWriter : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_image;
    static constexpr qint64 kImageSize = 20 * kPiece + 12345;

    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_image = path(QStringLiteral("IMAGE.DAT"));
        QVERIFY(writePatternImage(m_image, kImageSize));
        // A write beyond a file size limit must fail, not kill the test.
        std::signal(SIGXFSZ, SIG_IGN);
    }

    void headerFields_data()
    {
        QTest::addColumn<quint32>("length");
        QTest::newRow("empty") << 0u;
        QTest::newRow("odd length") << 3u;
        QTest::newRow("five minutes") << 52920000u;
        QTest::newRow("74 minutes") << 783216000u;
    }
    void headerFields()
    {
        QFETCH(quint32, length);
        WavFile wav;
        wav.ok = true;
        wav.header = wavHeader(length);
        QCOMPARE(wav.header.size(), 44);
        wav.data = QByteArray(static_cast<int>(std::min<quint32>(length, 16)), 'x');
        QString why;
        if (length <= 16)
            QVERIFY2(isWavOf(wav, wav.data, &why), qPrintable(why));
        QCOMPARE(wav.u32(4), length + 36);
        QCOMPARE(wav.u32(40), length);
        QCOMPARE(wav.header.left(16), QByteArray("RIFF", 4) + wav.header.mid(4, 4) + "WAVEfmt ");
        QCOMPARE(wav.u32(24), 44100u);
        QCOMPARE(wav.u32(28), 176400u);
    }

    void trackRanges()
    {
        const auto model = makeModel(discWithIndexes());
        const std::vector<PqEntry>& e = model->entries();
        // Track 1 runs to track 2's start; track 2 keeps its index 02 and ends
        // where track 3's pause begins; the pause ends at its own track's start;
        // the last track ends at the lead-out.
        QCOMPARE(trackRange(e, 2).start, at(0, 2, 0));
        QCOMPARE(trackRange(e, 2).end, at(1, 0, 10));
        QCOMPARE(trackRange(e, 3).end, at(2, 10, 74));
        QCOMPARE(trackRange(e, 5).end, at(2, 12, 0));
        QCOMPARE(trackRange(e, 6).end, at(3, 0, 0));

        // Nothing after an index 02 closes the track: an out-of-range lookup.
        std::vector<PqEntry> open(e.begin(), e.begin() + 5);
        QVERIFY_EXCEPTION_THROWN(trackRange(open, 3), std::out_of_range);
        try {
            trackRange(open, 3);
        } catch (const std::out_of_range& error) {
            QCOMPARE(error.what(), kInvalidVectorSubscript);
        }
        QVERIFY_EXCEPTION_THROWN(trackRange(e, 99), std::out_of_range);
    }

    void exportedTracks()
    {
        // Only index-1 entries, never the lead-out's "AA" 01.
        auto model = makeModel(discWithIndexes());
        QCOMPARE(model->firstTrackNumber(), 2u);
        QCOMPARE(exportedTrackEntries(*model), (std::vector<std::size_t>{2, 3, 6}));
        model->setFirstTrackNumber(1);
        QCOMPARE(exportedTrackEntries(*model), (std::vector<std::size_t>{2, 3, 6}));

        // Lists too short to hold a track, and an entry that is not a number.
        const std::vector<Entry> all = discWithIndexes();
        for (std::size_t n = 0; n < 4; ++n) {
            const std::vector<Entry> few(all.begin(), all.begin() + static_cast<long>(n));
            auto small = std::make_shared<DDPModel>();
            std::vector<PqEntry> pq;
            for (const Entry& entry : few)
                pq.push_back(PqEntry::fromBytes(testbytes::pqEntry(entry)));
            small->setEntries(pq);
            QVERIFY(exportedTrackEntries(*small).empty());
        }
        std::vector<PqEntry> garbled = model->entries();
        garbled[3].bytes[6] = 'x';
        garbled[3].bytes[7] = 'y';
        model->setEntries(garbled);
        QCOMPARE(exportedTrackEntries(*model), (std::vector<std::size_t>{2, 6}));
        QCOMPARE(entryIndexForRow(*model, 0), std::size_t{1});
        QVERIFY_EXCEPTION_THROWN(entryIndexForRow(*model, -1), std::out_of_range);
    }

    void fileNames_data()
    {
        QTest::addColumn<bool>("cdText");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no CD-Text") << false << QString() << QStringLiteral("Track 2.wav");
        QTest::newRow("empty title") << true << QString() << QStringLiteral("Track 2.wav");
        QTest::newRow("title") << true << QStringLiteral("Blue Hour")
                               << QStringLiteral("2 - Blue Hour.wav");
        QTest::newRow("slash") << true << QStringLiteral("AC/DC / Live")
                               << QStringLiteral("2 - AC_DC _ Live.wav");
        QTest::newRow("latin-1") << true << QStringLiteral("Caf\u00e9")
                                 << QStringLiteral("2 - Caf\u00e9.wav");
    }
    void fileNames()
    {
        QFETCH(bool, cdText);
        QFETCH(QString, title);
        QFETCH(QString, expected);
        const CdTextRecord record = titles({"One", std::string(title.toLatin1().constData())});
        const auto model = makeModel(discWithIndexes(), cdText ? &record : nullptr);
        QCOMPARE(defaultFileName(*model, 3), expected);
    }

    void fileNameEdges()
    {
        // A track beyond the last CD-Text record has no title; a track number
        // loses its leading zero.
        const CdTextRecord record = titles({"One"});
        const auto model = makeModel(discWithIndexes(), &record);
        QCOMPARE(defaultFileName(*model, 2), QStringLiteral("1 - One.wav"));
        QCOMPARE(defaultFileName(*model, 6), QStringLiteral("Track 3.wav"));
        QCOMPARE(safeFileName(QStringLiteral("a:b*c?.wav")),
#ifdef Q_OS_WIN
                 QStringLiteral("a_b_c_.wav"));
#else
                 QStringLiteral("a:b*c?.wav"));
#endif
    }

    void copiesRangeUnchanged_data()
    {
        QTest::addColumn<qint64>("start");
        QTest::addColumn<qint64>("length");
        QTest::newRow("shorter than a piece") << qint64(2352 * 7) << qint64(2352 * 75);
        QTest::newRow("exactly two pieces") << qint64(0) << 2 * kPiece;
        QTest::newRow("pieces and a rest") << qint64(2 * kSecond + 2352) << 2 * kPiece + 4 * 2352;
        QTest::newRow("odd byte count") << qint64(3) << qint64(kPiece + 1);
    }
    void copiesRangeUnchanged()
    {
        QFETCH(qint64, start);
        QFETCH(qint64, length);
        const QString out = path(QStringLiteral("range.wav"));
        FileWriterOneTrack worker(out, m_image, start, start + length);
        const Outcome outcome = run(worker);
        QCOMPARE(outcome.finished, 1);
        QVERIFY(outcome.failures.isEmpty());
        QCOMPARE(outcome.written, QStringList{out});
        QString why;
        QVERIFY2(isWavOf(readWav(out), patternBytes(start, length), &why), qPrintable(why));

        // Two phases, each ending a little below its mark: the final short
        // piece is not counted.
        const QList<qint64>& p = outcome.progress;
        QVERIFY(!p.isEmpty());
        QVERIFY(std::is_sorted(p.begin(), p.end()));
        const qint64 fullPieces = length / kPiece;
        QCOMPARE(p.count(), 2 * static_cast<int>(fullPieces) + 2);
        QCOMPARE(p[static_cast<int>(fullPieces)], fullPieces * kPiece * 10000 / length);
        QCOMPARE(p.last(), 2 * fullPieces * kPiece * 10000 / length);
        QVERIFY(p.last() <= 20000);
        if (length % kPiece == 0)
            QCOMPARE(p.last(), qint64(20000));
    }

    void overwritesLongerFile()
    {
        const QString out = path(QStringLiteral("existing.wav"));
        QFile old(out);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(100000, 'z'));
        old.close();
        FileWriterOneTrack worker(out, m_image, 4, 4 + 2352);
        QCOMPARE(run(worker).finished, 1);
        QString why;
        QVERIFY2(isWavOf(readWav(out), patternBytes(4, 2352), &why), qPrintable(why));
    }

    void zeroLengthRange()
    {
        const QString out = path(QStringLiteral("empty.wav"));
        FileWriterOneTrack worker(out, m_image, 2352, 2352);
        const Outcome outcome = run(worker);
        QCOMPARE(outcome.finished, 1);
        QVERIFY(outcome.progress.isEmpty());
        QString why;
        QVERIFY2(isWavOf(readWav(out), QByteArray(), &why), qPrintable(why));
    }

    void rangeBeyondImageEndIsSilence()
    {
        // An image cut short reads as zeros where it ends, as a disc player
        // would hear it; the file keeps the length the PQ descriptor gives.
        const QString out = path(QStringLiteral("tail.wav"));
        FileWriterOneTrack worker(out, m_image, kImageSize - 8, kImageSize + 8);
        QCOMPARE(run(worker).finished, 1);
        QString why;
        QVERIFY2(isWavOf(readWav(out), patternBytes(kImageSize - 8, 8) + QByteArray(8, '\0'), &why),
                 qPrintable(why));
    }

    void failuresLeaveNoFile_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("image");
        QTest::addColumn<qint64>("length");
        const QString regular = path(QStringLiteral("plain-file"));
        QFile(regular).open(QIODevice::WriteOnly);
        QTest::newRow("folder is a file")
            << regular + QStringLiteral("/x.wav") << m_image << qint64(2352);
        QTest::newRow("folder vanished")
            << path(QStringLiteral("gone/x.wav")) << m_image << qint64(2352);
        QTest::newRow("image missing")
            << path(QStringLiteral("x.wav")) << path(QStringLiteral("NOIMAGE")) << qint64(2352);
        QTest::newRow("image is a folder")
            << path(QStringLiteral("x.wav")) << m_dir.path() << qint64(2352);
        QTest::newRow("backwards range") << path(QStringLiteral("x.wav")) << m_image << qint64(-4);
    }
    void failuresLeaveNoFile()
    {
        QFETCH(QString, output);
        QFETCH(QString, image);
        QFETCH(qint64, length);
        FileWriterOneTrack worker(output, image, 4704, 4704 + length);
        const Outcome outcome = run(worker);
        QCOMPARE(outcome.finished, 0);
        QCOMPARE(outcome.failures.size(), 1);
        QVERIFY(!outcome.failures.first().isEmpty());
        QVERIFY(!QFileInfo::exists(output));
    }

    void diskFull()
    {
        // /dev/full takes the open and refuses the data; it is not ours to remove.
        if (!QFileInfo::exists(QStringLiteral("/dev/full")))
            QSKIP("no /dev/full");
        FileWriterOneTrack worker(QStringLiteral("/dev/full"), m_image, 0, kPiece + 10);
        const Outcome outcome = run(worker);
        QCOMPARE(outcome.finished, 0);
        QCOMPARE(outcome.failures.size(), 1);
        QVERIFY(outcome.failures.first().contains(QStringLiteral("/dev/full")));
        QVERIFY(QFileInfo::exists(QStringLiteral("/dev/full")));
    }

    void failedWriteRemovesPartialFile()
    {
        // A file size limit makes the write fail after the header and part of
        // the data reached the disk (root ignores permissions, not this).
        const QString out = path(QStringLiteral("limited.wav"));
        rlimit old{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &old), 0);
        rlimit limited = old;
        limited.rlim_cur = static_cast<rlim_t>(kPiece + kPiece / 2);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
        FileWriterOneTrack worker(out, m_image, 0, 3 * kPiece);
        const Outcome outcome = run(worker);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &old), 0);
        QCOMPARE(outcome.finished, 0);
        QCOMPARE(outcome.failures.size(), 1);
        QVERIFY(outcome.failures.first().contains(out));
        QVERIFY(!QFileInfo::exists(out));
    }

    void allTracksWritesEachTrackOnce()
    {
        // Tracks longer than a piece, so that each shows progress; track 2 is
        // empty (its index 01 and track 3's pause share a time).
        const std::vector<Entry> entries = {
            {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0},
            {"02", 1, 0, 52, 0}, {"03", 0, 0, 52, 0}, {"03", 1, 0, 53, 0},
            {"03", 2, 1, 0, 0},  {"AA", 1, 1, 50, 1}, {"AA", 0, 1, 50, 1},
        };
        const CdTextRecord record = titles({"First", "", "Th/ird"});
        const auto model = makeModel(entries, &record);
        const QString folder = path(QStringLiteral("all"));
        QVERIFY(QDir().mkpath(folder));
        FileWriterAllTracks worker(folder, m_image, model);
        QList<int> starts;
        connect(&worker, &FileWriterAllTracks::trackStarted,
                [&](int ordinal, int count) { starts << ordinal << count; });
        const Outcome outcome = run(worker);
        QCOMPARE(outcome.finished, 1);
        QCOMPARE(starts, (QList<int>{1, 3, 2, 3, 3, 3}));

        const QStringList names = {QStringLiteral("1 - First.wav"), QStringLiteral("Track 2.wav"),
                                   QStringLiteral("3 - Th_ird.wav")};
        QStringList sorted = names;
        sorted.sort();
        QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name), sorted);
        const qint64 bounds[][2] = {{at(0, 2, 0), at(0, 52, 0)},
                                    {at(0, 52, 0), at(0, 52, 0)},
                                    {at(0, 53, 0), at(1, 50, 1)}};
        for (int t = 0; t < 3; ++t) {
            QString why;
            const QByteArray expected = patternBytes(bounds[t][0], bounds[t][1] - bounds[t][0]);
            QVERIFY2(isWavOf(readWav(QDir(folder).filePath(names[t])), expected, &why),
                     qPrintable(names[t] + QStringLiteral(": ") + why));
        }

        // Each non-empty track runs its own scale from the start: the values
        // fall back exactly once, between track 1 and track 3.
        const QList<qint64>& p = outcome.progress;
        int restarts = 0;
        for (int i = 1; i < p.size(); ++i)
            restarts += p[i] < p[i - 1] ? 1 : 0;
        QCOMPARE(restarts, 1);
        QVERIFY(*std::max_element(p.begin(), p.end()) <= 20000);
        QVERIFY(*std::max_element(p.begin(), p.end()) > 15000);
    }

    void reusedBufferHoldsNoStaleBytes()
    {
        // The buffer is kept from one track to the next; a later track that
        // runs past the image's end must read silence there, not the bytes
        // an earlier, longer track left behind.
        const QString image = path(QStringLiteral("short.dat"));
        QVERIFY(writePatternImage(image, at(0, 20, 0)));
        const std::vector<Entry> entries = {
            {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0},
            {"02", 1, 0, 16, 0}, {"AA", 1, 0, 24, 0}, {"AA", 0, 0, 24, 0},
        };
        const QString folder = path(QStringLiteral("stale"));
        QVERIFY(QDir().mkpath(folder));
        FileWriterAllTracks worker(folder, image, makeModel(entries));
        QCOMPARE(run(worker).finished, 1);
        QString why;
        const QByteArray tail = patternBytes(at(0, 16, 0), at(0, 4, 0)) +
                                QByteArray(static_cast<int>(at(0, 4, 0)), '\0');
        QVERIFY2(isWavOf(readWav(folder + QStringLiteral("/Track 2.wav")), tail, &why),
                 qPrintable(why));
    }

    void allTracksStopsAtFirstFailure()
    {
        // The second track's file cannot be made (a folder holds its name):
        // the first stays, the export reports one failure and goes no further.
        const auto model = makeModel(testbytes::simpleEntries(2, {3, 3, 3}));
        const QString folder = path(QStringLiteral("stops"));
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/Track 2.wav")));
        FileWriterAllTracks worker(folder, m_image, model);
        const Outcome outcome = run(worker);
        QCOMPARE(outcome.finished, 0);
        QCOMPARE(outcome.failures.size(), 1);
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{QStringLiteral("Track 1.wav")});
    }
};

QTEST_GUILESS_MAIN(TestExportWriter)
#include "test_export_writer.moc"
