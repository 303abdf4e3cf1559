// The names of exported files: distinct for every track however the disc
// numbers them, short enough for the file system and its ".part" name, free of
// control characters; and CD-Text control characters kept off the terminal by
// `tivora-ddp export` and `tivora-ddp info`.
#include "ExportTestSupport.h"
#include "GeneratedDiscs.h"

#include "export/ExportFileName.h"
#include "export/FileWriterAllTracks.h"
#include "export/TrackRange.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace exporttest;
using testbytes::Entry;

namespace {

using Run = ToolRun;

Run runTool(const QString& command, const QStringList& args)
{
    return runTivoraDdp(QStringList{command} + args);
}

// A byte a terminal would act on: C0 controls but the line break, DEL, and
// C1 controls as UTF-8 writes them (C2 80 to C2 9F).
bool holdsControl(const QByteArray& text)
{
    for (int i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if ((c < 0x20 && c != '\n') || c == 0x7F)
            return true;
        if (c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
            static_cast<unsigned char>(text[i + 1]) <= 0x9F)
            return true;
    }
    return false;
}

bool hasControlCharacter(const QString& name)
{
    return std::any_of(name.begin(), name.end(), [](QChar c) {
        return c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() <= 0x9F);
    });
}

// Track k (from 0) of a generated disc: from its index 01 to the next track's
// first entry, or to the image's end.
QByteArray trackBytes(const mkddp::DiscSpec& spec, int k)
{
    const QVector<mkddp::LayoutEntry> layout = mkddp::pqLayout(spec);
    const int number = spec.firstTrackNumber + k;
    qint64 start = -1;
    qint64 end = mkddp::imageSize(spec);
    for (const mkddp::LayoutEntry& e : layout) {
        if (e.trackNumber == number && e.index == 1)
            start = e.bytePosition();
        else if (start >= 0 && e.trackNumber == number + 1) {
            end = e.bytePosition();
            break;
        }
    }
    return mkddp::TestPattern(spec).bytes(start, end - start);
}

QStringList lines(const QByteArray& out)
{
    return QString::fromLocal8Bit(out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

class TestExportNames : public QObject
{
    Q_OBJECT

private:
    GeneratedDiscs m_discs;

private slots:
    void initTestCase()
    {
        QVERIFY(m_discs.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    void everyTrackItsOwnName_data()
    {
        QTest::addColumn<QStringList>("titles");
        QTest::addColumn<QStringList>("expected");
        // Three tracks numbered 01 share their number and their CD-Text.
        QTest::newRow("one number")
            << QStringList{QStringLiteral("Intro")}
            << QStringList{QStringLiteral("1 - Intro.wav"), QStringLiteral("1 - Intro (2).wav"),
                           QStringLiteral("1 - Intro (3).wav")};
        QTest::newRow("no CD-Text")
            << QStringList{}
            << QStringList{QStringLiteral("Track 1.wav"), QStringLiteral("Track 1 (2).wav"),
                           QStringLiteral("Track 1 (3).wav")};
    }
    void everyTrackItsOwnName()
    {
        // Through the real writer: each file holds its own track's bytes, so
        // none was written over another.
        QFETCH(QStringList, titles);
        QFETCH(QStringList, expected);
        const std::vector<Entry> entries = {
            {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0}, {"01", 1, 0, 2, 0}, {"01", 1, 0, 3, 10},
            {"01", 1, 0, 4, 20}, {"AA", 1, 0, 5, 0}, {"AA", 0, 0, 5, 0}};
        std::vector<std::string> strings;
        for (const QString& t : titles)
            strings.push_back(t.toStdString());
        const CdTextRecord record = exporttest::titles(strings);
        const auto model = makeModel(entries, titles.isEmpty() ? nullptr : &record);
        QCOMPARE(exportFileNames(*model), expected);
        // The window's one-track export proposes the same names.
        const std::vector<std::size_t> tracks = exportedTrackEntries(*model);
        for (std::size_t n = 0; n < tracks.size(); ++n)
            QCOMPARE(defaultFileName(*model, tracks[n]), expected.at(static_cast<int>(n)));

        const QString image = m_discs.path(QStringLiteral("dup-%1.img").arg(titles.size()));
        QVERIFY(writePatternImage(image, at(0, 5, 0)));
        const QString folder = m_discs.path(QStringLiteral("dup-%1").arg(titles.size()));
        QVERIFY(QDir().mkpath(folder));
        FileWriterAllTracks worker(folder, image, model);
        int finished = 0;
        connect(&worker, &FileWriter::finished, [&] { ++finished; });
        worker.process();
        QCOMPARE(finished, 1);
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 3);
        const qint64 bounds[] = {at(0, 2, 0), at(0, 3, 10), at(0, 4, 20), at(0, 5, 0)};
        for (int n = 0; n < 3; ++n) {
            QString why;
            QVERIFY2(isWavOf(QDir(folder).filePath(expected.at(n)),
                             patternBytes(bounds[n], bounds[n + 1] - bounds[n]), &why),
                     qPrintable(why));
        }
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

    // Generated discs through `tivora-ddp export`.

    void duplicateNumbersOnTheCommandLine_data()
    {
        QTest::addColumn<int>("trackCount");
        QTest::addColumn<bool>("duplicate");
        QTest::newRow("three tracks numbered 01") << 3 << true;
        QTest::newRow("150 tracks numbered past 99") << 150 << false;
    }
    void duplicateNumbersOnTheCommandLine()
    {
        QFETCH(int, trackCount);
        QFETCH(bool, duplicate);
        mkddp::DiscSpec spec = mkddp::simpleDisc(trackCount, 1);
        spec.cdText = duplicate;
        if (duplicate)
            spec.faults = {mkddp::Fault::DuplicateTrackNumbers};
        const QString name = QStringLiteral("cli-%1").arg(trackCount);
        const QString out = m_discs.path(name + QStringLiteral("-out"));
        const Run run = runTool(QStringLiteral("export"), {m_discs.write(name, spec), out});
        QCOMPARE(run.exitCode, 0);
        const QStringList listed = lines(run.out);
        QCOMPARE(listed.size(), trackCount);
        QCOMPARE(QDir(out).entryList(QDir::Files).size(), trackCount);
        for (int k = 0; k < trackCount; ++k) {
            QString why;
            QVERIFY2(isWavOf(listed.at(k), trackBytes(spec, k), &why),
                     qPrintable(listed.at(k) + QStringLiteral(": ") + why));
        }
        if (duplicate)
            QVERIFY(listed.at(2).endsWith(QStringLiteral("/1 - Track 1 (3).wav")));
        else
            QVERIFY(listed.at(99).endsWith(QStringLiteral("/Track 0.wav")));
    }

    void longLatin1TitleOnTheCommandLine()
    {
        // A legal CD-Text title of 159 Latin-1 letters is 318 bytes of UTF-8,
        // more than a name may hold: the export shortens it and succeeds.
        mkddp::DiscSpec spec = mkddp::simpleDisc(2, 1);
        spec.cdText = true;
        spec.tracks[0].text.title = mkddp::longLatin1Title();
        const QString out = m_discs.path(QStringLiteral("long-out"));
        const Run run =
            runTool(QStringLiteral("export"), {m_discs.write(QStringLiteral("long"), spec), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err, QByteArray());
        const QStringList listed = lines(run.out);
        QCOMPARE(listed.size(), 2);
        const QString file = QFileInfo(listed.at(0)).fileName();
        QVERIFY(file.startsWith(QStringLiteral("1 - ÄÖÜäöüßéèàçñ")));
        QVERIFY(file.endsWith(QStringLiteral(".wav")));
        QVERIFY(file.toUtf8().size() <= kMaxFileNameBytes);
        QString why;
        QVERIFY2(isWavOf(listed.at(0), trackBytes(spec, 0), &why), qPrintable(why));
    }

    void controlCharactersOnTheCommandLine()
    {
        // Titles with escape sequences, tab, line break, DEL and C1 controls,
        // and an output folder whose own name holds an escape.
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 1);
        mkddp::putControlCharacters(spec);
        const QString disc = m_discs.write(QStringLiteral("ctl"), spec);
        const QString out = m_discs.path(QStringLiteral("ctl-\x1b[7m-out"));
        const Run run = runTool(QStringLiteral("export"), {disc, out});
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(!holdsControl(run.out), run.out.constData());
        QCOMPARE(run.out.count('\n'), 3);
        QVERIFY2(run.out.contains("ctl-\\x1b[7m-out/1 - Red_[31m_Tab_Line__2J.wav\n"),
                 run.out.constData());
        const QStringList files = QDir(out).entryList(QDir::Files);
        QCOMPARE(files.size(), 3);
        for (const QString& f : files)
            QVERIFY2(!hasControlCharacter(f), qPrintable(f.toUtf8().toHex()));
    }

    void controlCharactersInTheInfoTable()
    {
        // One line per row, and the CD-Text escaped.
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 1);
        mkddp::putControlCharacters(spec);
        const Run info =
            runTool(QStringLiteral("info"), {m_discs.write(QStringLiteral("ctl-info"), spec)});
        QCOMPARE(info.exitCode, 0);
        QVERIFY2(!holdsControl(info.out), info.out.constData());
        QVERIFY2(info.out.contains("Album: Album\\x1b]0;retitled\\x07 Sessions"),
                 info.out.constData());
        QVERIFY(info.out.contains("Red\\x1b[31m\\x09Tab\\x0aLine\\x7f\\x9b2J"));
        QVERIFY(info.out.contains("Bell\\x07 NEL\\x85 End"));
        // Folder, image, album, a blank line, column names, three rows, the
        // total.
        QCOMPARE(info.out.count('\n'), 9);
        // The columns stay aligned: every row's ISRC starts where its name does.
        const QStringList table = lines(info.out).mid(3);
        const int isrc = table.at(0).indexOf(QStringLiteral("ISRC"));
        for (int r = 1; r <= 3; ++r)
            QCOMPARE(table.at(r).indexOf(QStringLiteral("DEA7F26")), isrc);
    }

    void emptyTrackSkipped()
    {
        // Track 2 starts where track 3 does: no 44-byte file, and the list
        // says so on its line.
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 1);
        spec.tracks[1].frames = 0;
        const QString out = m_discs.path(QStringLiteral("empty-out"));
        const Run run =
            runTool(QStringLiteral("export"), {m_discs.write(QStringLiteral("empty"), spec), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QDir(out).entryList(QDir::Files),
                 (QStringList{QStringLiteral("Track 1.wav"), QStringLiteral("Track 3.wav")}));
        const QStringList listed = lines(run.out);
        QCOMPARE(listed.size(), 3);
        QCOMPARE(listed.at(1), QStringLiteral("skipped (empty track): ") +
                                   QDir(out).filePath(QStringLiteral("Track 2.wav")));
        QString why;
        QVERIFY2(isWavOf(listed.at(2), trackBytes(spec, 2), &why), qPrintable(why));
    }
};

QTEST_GUILESS_MAIN(TestExportNames)
#include "test_export_names.moc"
