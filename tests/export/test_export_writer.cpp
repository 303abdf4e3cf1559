// The WAV writer and the export workers without any window.
#include "ExportTestSupport.h"

#include "ddp/DiscImage.h"
#include "ddp/DiscTexts.h"
#include "ddp/TrackRange.h"
#include "export/CueSheet.h"
#include "export/ExportFileName.h"
#include "export/FileWriterAllTracks.h"
#include "export/FileWriterOneTrack.h"
#include "export/ImageRange.h"
#include "export/TrackTags.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <unistd.h>

using namespace exporttest;
using testbytes::Entry;

namespace {

constexpr qint64 kPiece = FileWriter::kPieceSize;

struct Outcome
{
    QList<qint64> progress;
    int finished = 0;
    QStringList failures;
};

Outcome run(FileWriter& worker)
{
    Outcome o;
    QObject::connect(&worker, &FileWriter::processed, [&](qint64 v) { o.progress << v; });
    QObject::connect(&worker, &FileWriter::finished, [&] { ++o.finished; });
    QObject::connect(&worker, &FileWriter::failed, [&](const QString& m) { o.failures << m; });
    worker.process();
    return o;
}

// Three tracks; track 2 has an index 02, track 3 a pause of its own.
std::vector<Entry> discWithIndexes()
{
    return {{"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0},
            {"02", 1, 1, 0, 10}, {"02", 2, 1, 30, 0}, {"03", 0, 2, 10, 74},
            {"03", 1, 2, 12, 0}, {"AA", 1, 3, 0, 0},  {"AA", 0, 3, 0, 0}};
}

void mappedOrBuffered()
{
    QTest::addColumn<bool>("mapped");
    QTest::newRow("mapped") << true;
    QTest::newRow("buffered") << false;
}

} // namespace

class TestExportWriter : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_image;
    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_image = path(QStringLiteral("IMAGE.DAT"));
        QVERIFY(writePatternImage(m_image, 3 * kPiece));
        // A write beyond the file size limit must fail, not end the test.
        std::signal(SIGXFSZ, SIG_IGN);
    }

    void trackRanges()
    {
        const auto model = makeModel(discWithIndexes());
        const std::vector<PqEntry>& e = model->entries();
        // Index 02 belongs to its track; a track ends at the next pause or
        // start; the last one at the lead-out.
        QCOMPARE(trackRange(e, 2).start, at(0, 2, 0));
        QCOMPARE(trackRange(e, 2).end, at(1, 0, 10));
        QCOMPARE(trackRange(e, 3).end, at(2, 10, 74));
        QCOMPARE(trackRange(e, 5).end, at(2, 12, 0));
        QCOMPARE(trackRange(e, 6).end, at(3, 0, 0));
        // Nothing closes the track: an out-of-range lookup, not a crash.
        QVERIFY_EXCEPTION_THROWN(trackRange({e.begin(), e.begin() + 5}, 3), std::out_of_range);

        // The all-tracks list: index-1 entries only, never the lead-out's "AA" 01.
        QCOMPARE(exportedTrackEntries(*model), (std::vector<std::size_t>{2, 3, 6}));
        std::vector<PqEntry> garbled = e;
        garbled[3].bytes[7] = 'x';
        model->setEntries(garbled);
        QCOMPARE(exportedTrackEntries(*model), (std::vector<std::size_t>{2, 6}));
        model->setEntries({e.begin(), e.begin() + 2});
        QVERIFY(exportedTrackEntries(*model).empty());
    }

    void fileNames_data()
    {
        QTest::addColumn<bool>("cdText");
        QTest::addColumn<int>("entry");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no CD-Text") << false << 3 << QStringLiteral("Track 2.wav");
        QTest::newRow("title") << true << 2 << QStringLiteral("1 - Blue Hour.wav");
        QTest::newRow("empty title") << true << 3 << QStringLiteral("Track 2.wav");
        QTest::newRow("no record") << true << 6 << QStringLiteral("Track 3.wav");
        QTest::newRow("pause row") << true << 5 << QStringLiteral("Track 3.wav");
    }
    void fileNames()
    {
        QFETCH(bool, cdText);
        QFETCH(int, entry);
        QFETCH(QString, expected);
        const CdTextRecord record = titles({"Blue Hour", ""});
        const auto model = makeModel(discWithIndexes(), cdText ? &record : nullptr);
        QCOMPARE(defaultFileName(*model, static_cast<std::size_t>(entry)), expected);
    }

    void namesThatWouldMeet()
    {
        // Numbers given twice, a long title given twice (its copy keeps the
        // " (2)" and is cut shorter), and track fields that are no number and
        // differ only in case: all distinct, also where the file system
        // ignores case, and the same on every call.
        const CdTextRecord record = titles({"Song", "", "Third", std::string(159, '\xE9')});
        std::vector<Entry> entries = {{"00", 0, 0, 0, 0}, {"01", 0, 0, 0, 0}};
        for (const char* track : {"01", "03", "01", "xa", "XA", "03", "04", "04"})
            entries.push_back({track, 1, 0, 2 + static_cast<int>(entries.size()), 0});
        entries.push_back({"AA", 1, 1, 0, 0});
        entries.push_back({"AA", 0, 1, 0, 0});
        const auto model = makeModel(entries, &record);
        const QStringList names = exportFileNames(*model);
        QCOMPARE(names.size(), 8);
        QCOMPARE(
            names.mid(0, 6),
            (QStringList{QStringLiteral("1 - Song.wav"), QStringLiteral("3 - Third.wav"),
                         QStringLiteral("1 - Song (2).wav"), QStringLiteral("Track xa.wav"),
                         QStringLiteral("Track XA (2).wav"), QStringLiteral("3 - Third (2).wav")}));
        const QString cut = QStringLiteral("4 - ") + QString(107, QChar(0xE9));
        QCOMPARE(names.at(6), cut + QStringLiteral(".wav"));
        QCOMPARE(names.at(7), cut.left(cut.size() - 2) + QStringLiteral(" (2).wav"));
        QCOMPARE(exportFileNames(*model), names);
        // The window's one-track export proposes the same names.
        const std::vector<std::size_t> tracks = exportedTrackEntries(*model);
        QCOMPARE(int(tracks.size()), names.size());
        for (std::size_t n = 0; n < tracks.size(); ++n)
            QCOMPARE(defaultFileName(*model, tracks[n]), names.at(static_cast<int>(n)));
    }

    void longNamesFit_data()
    {
        QTest::addColumn<QString>("stem");
        QTest::addColumn<QString>("tail");
        QTest::addColumn<int>("characterBytes");         // of the repeated character
        const QString latin1 = mkddp::longLatin1Title(); // 159 letters, 318 bytes
        QTest::newRow("Latin-1 title")
            << QStringLiteral("1 - ") + latin1 << QStringLiteral(".wav") << 2;
        QTest::newRow("with a copy's number")
            << QStringLiteral("12 - ") + latin1 << QStringLiteral(" (12).wav") << 2;
        // Three bytes a character, and four (a surrogate pair in the string).
        QTest::newRow("CJK") << QString(120, QChar(0x66F2)) << QStringLiteral(".wav") << 3;
        QTest::newRow("surrogate pairs")
            << QStringLiteral("1 - ") + QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(80)
            << QStringLiteral(".wav") << 4;
        QTest::newRow("odd surrogate offset")
            << QStringLiteral("12 - ") + QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(80)
            << QStringLiteral(".wav") << 4;
        // A letter and its combining accent stay together.
        QTest::newRow("combining accents")
            << QStringLiteral("1 - ") + QString::fromUtf8("e\xCC\x81").repeated(100)
            << QStringLiteral(".wav") << 3;
        QTest::newRow("short enough") << QStringLiteral("1 - Intro") << QStringLiteral(".wav") << 1;
    }
    void longNamesFit()
    {
        QFETCH(QString, stem);
        QFETCH(QString, tail);
        QFETCH(int, characterBytes);
        const QString name = fittedFileName(stem, tail);
        const QByteArray bytes = name.toUtf8();
        QVERIFY2(bytes.size() <= kMaxFileNameBytes, bytes.constData());
        // The writer's temporary name fits too: "<name>.<random>.part".
        QVERIFY(bytes.size() + 20 <= 255);
        QVERIFY(name.endsWith(tail));
        const QString kept = name.left(name.size() - tail.size());
        QVERIFY(stem.startsWith(kept));
        QCOMPARE(QString::fromUtf8(bytes), name); // no broken sequence
        if (kept.size() < stem.size()) {
            QVERIFY(!kept.isEmpty());
            QVERIFY(!kept.back().isHighSurrogate());
            QVERIFY(!stem.at(kept.size()).isLowSurrogate());
            QVERIFY(stem.at(kept.size()).category() != QChar::Mark_NonSpacing);
            // It took as much as fits: one more character would not.
            QVERIFY(bytes.size() + characterBytes > kMaxFileNameBytes);
        } else {
            QCOMPARE(name, stem + tail);
        }
    }

    void controlCharactersNeverInNames()
    {
        QString all;
        for (ushort u = 0; u < 0xA0; ++u)
            all += QChar(u);
        const QString safe = safeFileName(all);
        QCOMPARE(safe.size(), all.size());
        QVERIFY(!hasControlCharacter(safe));
        QCOMPARE(safe.mid(0x20, 0x7F - 0x20),
                 all.mid(0x20, 0x7F - 0x20).replace(QLatin1Char('/'), QLatin1Char('_')));
    }

    // A UPC/EAN of zeros stands for "no code": tags and the cue sheet's
    // CATALOG pass over it to the next place that holds one, while the window
    // shows the disc as it is. Blank or NUL padding is no code for either.
    void barcodeOfZeros()
    {
        const auto model = makeModel(discWithIndexes());
        const auto setPqCode = [&](const std::string& code) {
            std::vector<PqEntry> entries = model->entries();
            for (PqEntry& e : entries)
                std::copy(code.begin(), code.end(), e.bytes.begin() + 32);
            model->setEntries(entries);
        };
        const auto exported = [&] {
            const QString tag = trackTags(*model, 2, 3).barcode;
            const QByteArray sheet =
                cueSheet(*model, QStringLiteral("X.bin"), CueAudioFile::Binary);
            const bool inSheet = tag.isEmpty()
                                     ? !sheet.contains("CATALOG")
                                     : sheet.contains("CATALOG " + tag.toLatin1() + "\r\n");
            return inSheet ? tag : QStringLiteral("(the cue sheet differs)");
        };
        const QString zeros = QStringLiteral("0000000000000");

        model->setDdpIdUpcEan("4006381333931");
        setPqCode(zeros.toStdString());
        QCOMPARE(exported(), QStringLiteral("4006381333931"));
        QCOMPARE(discUpcEan(*model), zeros);

        setPqCode(std::string(13, '\0'));
        model->setDdpIdUpcEan(zeros.toStdString());
        QCOMPARE(exported(), QString());
        QCOMPARE(discUpcEan(*model), zeros);

        // CD-Text's code comes first, unless it is zeros.
        setPqCode("5012345678900");
        CdTextRecord record = titles({"A", "B", "C"});
        const auto setTextCode = [&](const char* code) {
            CdTextRecord::Slot& slot = record.tracks[0][CdTextRecord::Code];
            slot.fill(0);
            std::copy(code, code + std::strlen(code), slot.begin());
            model->setCdText(record);
        };
        setTextCode("0000000000000");
        QCOMPARE(exported(), QStringLiteral("5012345678900"));
        QCOMPARE(discUpcEan(*model), zeros);
        setTextCode("4006381333931");
        QCOMPARE(exported(), QStringLiteral("4006381333931"));
        QCOMPARE(discUpcEan(*model), QStringLiteral("4006381333931"));
    }

    void copiesRangeUnchanged_data()
    {
        QTest::addColumn<qint64>("start");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<bool>("mapped");
        QTest::newRow("shorter than a piece") << qint64(2352 * 7) << qint64(2352 * 75) << true;
        QTest::newRow("exactly two pieces") << qint64(0) << 2 * kPiece << true;
        QTest::newRow("pieces and an odd rest")
            << qint64(2 * 176400 + 3) << 2 * kPiece + 4711 << true;
        QTest::newRow("the same, read into a buffer")
            << qint64(2 * 176400 + 3) << 2 * kPiece + 4711 << false;
        QTest::newRow("empty") << qint64(2352) << qint64(0) << true;
    }
    void copiesRangeUnchanged()
    {
        QFETCH(qint64, start);
        QFETCH(qint64, length);
        QFETCH(bool, mapped);
        // An existing, longer file is replaced, not patched.
        const QString out = path(QStringLiteral("range.wav"));
        QVERIFY(writeFile(out, QByteArray(100000, 'z')));

        FileWriterOneTrack worker(out, m_image, start, start + length);
        worker.setMappedReads(mapped);
        const Outcome o = run(worker);
        QCOMPARE(o.finished, 1);
        QString why;
        QVERIFY2(isWavOf(out, patternBytes(start, length), &why), qPrintable(why));

        // Reading climbs to about 10000, writing on to about 20000; the short
        // last piece of each phase is not counted. An empty range has no scale.
        const int full = static_cast<int>(length / kPiece);
        QCOMPARE(o.progress.size(), length ? 2 * full + 2 : 0);
        if (length == 0)
            return;
        QVERIFY(std::is_sorted(o.progress.begin(), o.progress.end()));
        QCOMPARE(o.progress[full], full * kPiece * 10000 / length);
        QCOMPARE(o.progress.last(), 2 * full * kPiece * 10000 / length);
    }

    void failuresLeaveNoFile_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("image");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<qint64>("sizeLimit");
        const QString regular = path(QStringLiteral("regular"));
        QVERIFY(writeFile(regular, {}));
        const QString out = path(QStringLiteral("x.wav"));
        QTest::newRow("folder is a file")
            << regular + QStringLiteral("/x.wav") << m_image << qint64(2352) << qint64(0);
        QTest::newRow("folder vanished")
            << path(QStringLiteral("gone/x.wav")) << m_image << qint64(2352) << qint64(0);
        QTest::newRow("image missing")
            << out << path(QStringLiteral("NONE")) << qint64(2352) << qint64(0);
        QTest::newRow("backwards range") << out << m_image << qint64(-4) << qint64(0);
        // Root ignores permission bits but not a file size limit: the write
        // fails after the header and a piece reached the disk.
        QTest::newRow("write fails midway") << out << m_image << 3 * kPiece << kPiece + 100;
    }
    void failuresLeaveNoFile()
    {
        QFETCH(QString, output);
        QFETCH(QString, image);
        QFETCH(qint64, length);
        QFETCH(qint64, sizeLimit);
        rlimit old{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &old), 0);
        if (sizeLimit) {
            rlimit limited = old;
            limited.rlim_cur = static_cast<rlim_t>(sizeLimit);
            QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
        }
        FileWriterOneTrack worker(output, image, 4704, 4704 + length);
        const Outcome o = run(worker);
        setrlimit(RLIMIT_FSIZE, &old);
        QCOMPARE(o.finished, 0);
        QCOMPARE(o.failures.size(), 1);
        QVERIFY(!QFileInfo::exists(output));
        QVERIFY(!QFileInfo::exists(output + QStringLiteral(".part")));
    }

    void neverWritesOverTheImage()
    {
        // However the image is named, the master stays as it is.
        const QFileInfo image(m_image);
        const QByteArray before = patternBytes(0, image.size());
        for (const QString& output :
             {m_image, image.absolutePath() + QStringLiteral("/./") + image.fileName()}) {
            FileWriterOneTrack worker(output, m_image, 0, 4704);
            const Outcome o = run(worker);
            QCOMPARE(o.finished, 0);
            QCOMPARE(o.failures.size(), 1);
            QFile file(m_image);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY(file.readAll() == before);
        }
    }

    void diskFull()
    {
        // A device is not a partial file and stays.
        FileWriterOneTrack worker(QStringLiteral("/dev/full"), m_image, 0, kPiece + 10);
        const Outcome o = run(worker);
        QCOMPARE(o.failures.size(), 1);
        QVERIFY(o.failures.first().contains(QStringLiteral("/dev/full")));
        QVERIFY(QFileInfo::exists(QStringLiteral("/dev/full")));
    }

    // An image cut while it is read is a failed read, mapped or buffered,
    // never a range of zeros.
    void imageCutDuringTheRead_data() { mappedOrBuffered(); }
    void imageCutDuringTheRead()
    {
        QFETCH(bool, mapped);
        const QString imagePath = path(QStringLiteral("cut%1.dat").arg(mapped));
        const qint64 size = 4 * 1024 * 1024;
        QVERIFY(writePatternImage(imagePath, size));
        const std::shared_ptr<const DiscImage> image = DiscImage::openFile(imagePath);
        QVERIFY(image);
        ImageRange range;
        range.setMappingAllowed(mapped);
        QVERIFY(range.reset(*image, 0, size));
        QVERIFY(range.load(0, 1024 * 1024));
        QCOMPARE(::truncate(QFile::encodeName(imagePath).constData(), 2 * 1024 * 1024), 0);
        QVERIFY(!range.load(2 * 1024 * 1024, 2 * 1024 * 1024));
        range.release();
    }

    void allTracks_data() { mappedOrBuffered(); }
    void allTracks()
    {
        QFETCH(bool, mapped);
        // Tracks longer than a piece so that each shows progress; track 2 is
        // empty (its start and track 3's pause share a time); track 3 holds
        // an index 02 and is shorter than track 1, whose bytes the buffer
        // still holds.
        const std::vector<Entry> entries = {
            {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0},
            {"02", 1, 1, 40, 0}, {"03", 0, 1, 40, 0}, {"03", 1, 1, 41, 0},
            {"03", 2, 1, 50, 0}, {"AA", 1, 2, 20, 1}, {"AA", 0, 2, 20, 1}};
        const CdTextRecord record = titles({"Fir/st", "", "Third"});
        const QString folder = path(QStringLiteral("all-%1").arg(mapped));
        QVERIFY(QDir().mkpath(folder));
        FileWriterAllTracks worker(folder, m_image, makeModel(entries, &record));
        worker.setMappedReads(mapped);
        QStringList skipped;
        connect(&worker, &FileWriterAllTracks::trackSkipped,
                [&](const QString& file) { skipped << file; });
        const Outcome o = run(worker);
        QCOMPARE(o.finished, 1);

        // The empty track gets no file, not a header without audio.
        QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name),
                 (QStringList{QStringLiteral("1 - Fir_st.wav"), QStringLiteral("3 - Third.wav")}));
        QCOMPARE(skipped, QStringList{folder + QStringLiteral("/Track 2.wav")});
        QString why;
        QVERIFY2(isWavOf(folder + QStringLiteral("/1 - Fir_st.wav"),
                         patternBytes(at(0, 2, 0), at(1, 38, 0)), &why),
                 qPrintable(why));
        QVERIFY2(isWavOf(folder + QStringLiteral("/3 - Third.wav"),
                         patternBytes(at(1, 41, 0), at(2, 20, 1) - at(1, 41, 0)), &why),
                 qPrintable(why));

        // Each non-empty track runs its own scale from the start.
        int restarts = 0;
        for (int i = 1; i < o.progress.size(); ++i)
            restarts += o.progress[i] < o.progress[i - 1] ? 1 : 0;
        QCOMPARE(restarts, 1);
        QVERIFY(*std::max_element(o.progress.begin(), o.progress.end()) <= 20000);
    }
};

QTEST_GUILESS_MAIN(TestExportWriter)
#include "test_export_writer.moc"
