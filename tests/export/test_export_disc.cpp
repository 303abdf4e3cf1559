// Generated discs through `tivora-ddp export` and `info`, which load them as
// the window does and run the same workers: every track's file is the
// image's byte range exactly, under the name the window would propose, free
// of control characters and never on the terminal; links planted in the
// output folder are never written through, two exports into one folder leave
// every file whole, a failure says the system's reason, and an image shorter
// than its PQ never becomes WAVs of silence behind a success.
#include "GeneratedDiscs.h"

#include "export/ExportFileName.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

Q_DECLARE_METATYPE(mkddp::DiscSpec)

using namespace exporttest;

namespace {

// The realistic disc (pauses, an index 02, CD-Text) with a "/" in a title.
mkddp::DiscSpec realisticDisc()
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.tracks[3].text.title = QStringLiteral("Night Train / Day Train");
    return spec;
}

// The names the window proposes, worked out from the DiscSpec alone.
QStringList proposedNames(const mkddp::DiscSpec& spec)
{
    QStringList names;
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const int number = spec.firstTrackNumber + k;
        const QString title = spec.tracks[k].text.title;
        QString name = spec.cdText && !title.isEmpty()
                           ? QStringLiteral("%1 - %2.wav").arg(number).arg(title)
                           : QStringLiteral("Track %1.wav").arg(number);
        names << name.replace(QLatin1Char('/'), QLatin1Char('_'));
    }
    return names;
}

ToolRun runExport(const QStringList& args)
{
    return runTivoraDdp(QStringList{QStringLiteral("export")} + args);
}

QStringList lines(const QByteArray& out)
{
    return QString::fromLocal8Bit(out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
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

// Tracks 1 to `count` of the generated disc in `out`, exactly; nothing else there.
bool tracksWhole(const mkddp::DiscSpec& spec, int count, const QString& out, QString* why)
{
    const QStringList files = QDir(out).entryList(QDir::Files | QDir::System | QDir::Hidden);
    if (files.size() != count) {
        *why = files.join(QStringLiteral(", "));
        return false;
    }
    for (int number = 1; number <= count; ++number) {
        const QString path = QDir(out).filePath(QStringLiteral("Track %1.wav").arg(number));
        if (!isWavOf(path, trackBytes(spec, number), why))
            return false;
    }
    return true;
}

} // namespace

class TestExportDisc : public QObject
{
    Q_OBJECT

private:
    GeneratedDiscs m_discs;

private slots:
    void initTestCase() { QCOMPARE(m_discs.missing(), QString()); }

    void everyTrackExactly_data()
    {
        QTest::addColumn<mkddp::DiscSpec>("spec");
        QTest::addColumn<QStringList>("names"); // of the first files listed
        mkddp::DiscSpec spec = realisticDisc();
        QTest::newRow("realistic") << spec << proposedNames(spec);
        // The first row is then a pause, so the first track is entry 1.
        spec.tracks[0].pauseFrames = 310;
        QTest::newRow("shown first pause") << spec << proposedNames(spec);
        spec = realisticDisc();
        spec.cdText = false;
        QTest::newRow("no CD-Text") << spec << proposedNames(spec);

        spec = mkddp::simpleDisc(3, 1);
        spec.cdText = true;
        spec.faults = {mkddp::Fault::DuplicateTrackNumbers};
        QTest::newRow("three tracks numbered 01")
            << spec
            << QStringList{QStringLiteral("1 - Track 1.wav"), QStringLiteral("1 - Track 1 (2).wav"),
                           QStringLiteral("1 - Track 1 (3).wav")};
        QStringList hundred;
        for (int number = 1; number <= 100; ++number)
            hundred << QStringLiteral("Track %1.wav").arg(number % 100);
        QTest::newRow("150 tracks numbered past 99") << mkddp::simpleDisc(150, 1) << hundred;
        // A legal CD-Text title of 159 Latin-1 letters is 318 bytes of UTF-8,
        // more than a name may hold: the export shortens it and succeeds.
        spec = mkddp::simpleDisc(2, 1);
        spec.cdText = true;
        spec.tracks[0].text.title = mkddp::longLatin1Title();
        QTest::newRow("long Latin-1 title")
            << spec
            << QStringList{fittedFileName(QStringLiteral("1 - ") + mkddp::longLatin1Title(),
                                          QStringLiteral(".wav")),
                           QStringLiteral("2 - Track 2.wav")};
    }
    void everyTrackExactly()
    {
        QFETCH(mkddp::DiscSpec, spec);
        QFETCH(QStringList, names);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        const QString disc = m_discs.write(name, spec);

        // A file inside the folder stands for the folder; OUTDIR is created.
        const QString out = m_discs.path(name + QStringLiteral("-out/wav"));
        const ToolRun run = runExport({disc + QStringLiteral("/DDPID"), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err, QByteArray()); // not a terminal: no progress line
        const QStringList listed = lines(run.out);
        QCOMPARE(listed.size(), spec.tracks.size());
        QCOMPARE(QDir(out).entryList(QDir::Files).size(), spec.tracks.size());
        for (int k = 0; k < listed.size(); ++k) {
            if (k < names.size())
                QCOMPARE(listed.at(k), QDir(out).filePath(names.at(k)));
            QString why;
            QVERIFY2(isWavOf(listed.at(k), trackBytes(spec, k + 1), &why),
                     qPrintable(listed.at(k) + QStringLiteral(": ") + why));
        }
    }

    void oneTrack()
    {
        // Track 3 holds the index 02, which stays in its file.
        const mkddp::DiscSpec spec = realisticDisc();
        const QString out = m_discs.path(QStringLiteral("one-out"));
        const ToolRun run = runExport({QStringLiteral("--track"), QStringLiteral("3"),
                                       m_discs.write(QStringLiteral("one"), spec), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QDir(out).entryList(QDir::Files),
                 QStringList{QStringLiteral("3 - Interlude.wav")});
        QVERIFY(mkddp::indexPosition(spec, 3, 2) > mkddp::indexPosition(spec, 3, 1));
        QString why;
        QVERIFY2(isWavOf(QDir(out).filePath(QStringLiteral("3 - Interlude.wav")),
                         trackBytes(spec, 3), &why),
                 qPrintable(why));
    }

    void failures_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QByteArray>("message");
        const QString disc = m_discs.write(QStringLiteral("fail"), mkddp::simpleDisc(2, 3));
        mkddp::DiscSpec noImage = mkddp::simpleDisc(2, 3);
        noImage.faults = {mkddp::Fault::NoImageFile};
        const QString regular = m_discs.path(QStringLiteral("regular"));
        QVERIFY(writeFile(regular, {}));
        const QByteArray prefix = "tivora-ddp export: ";
        QTest::newRow("path missing")
            << QStringList{m_discs.path(QStringLiteral("nope")), m_discs.path(QStringLiteral("o1"))}
            << prefix;
        QTest::newRow("image missing")
            << QStringList{m_discs.write(QStringLiteral("noimage"), noImage),
                           m_discs.path(QStringLiteral("o2"))}
            << prefix + "IMAGE Missing: ";
        QTest::newRow("no such track")
            << QStringList{disc, m_discs.path(QStringLiteral("o3")), QStringLiteral("--track"),
                           QStringLiteral("9")}
            << prefix + "The DDP has no track 9.\n";
        QTest::newRow("outdir under a file") << QStringList{disc, regular + QStringLiteral("/out")}
                                             << prefix + "Could not create the folder";
    }
    void failures()
    {
        // Exit status 1 and one line, and nothing left behind.
        QFETCH(QStringList, args);
        QFETCH(QByteArray, message);
        const ToolRun run = runExport(args);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.startsWith(message), run.err.constData());
        QCOMPARE(run.err.count('\n'), 1);
        QVERIFY(run.out.isEmpty());
        QVERIFY(!QFileInfo::exists(args.at(1)) || QDir(args.at(1)).isEmpty());
    }

    void controlCharactersOnTheCommandLine()
    {
        // Titles with escape sequences, tab, line break, DEL and C1 controls,
        // and an output folder whose own name holds an escape.
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 1);
        mkddp::putControlCharacters(spec);
        const QString disc = m_discs.write(QStringLiteral("ctl"), spec);
        const QString out = m_discs.path(QStringLiteral("ctl-\x1b[7m-out"));
        const ToolRun run = runExport({disc, out});
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
        const ToolRun info =
            runTivoraDdp({QStringLiteral("info"), m_discs.write(QStringLiteral("ctl-info"), spec)});
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
        const ToolRun run = runExport({m_discs.write(QStringLiteral("empty"), spec), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QDir(out).entryList(QDir::Files),
                 (QStringList{QStringLiteral("Track 1.wav"), QStringLiteral("Track 3.wav")}));
        const QStringList listed = lines(run.out);
        QCOMPARE(listed.size(), 3);
        QCOMPARE(listed.at(1), QStringLiteral("skipped (empty track): ") +
                                   QDir(out).filePath(QStringLiteral("Track 2.wav")));
        QString why;
        QVERIFY2(isWavOf(listed.at(2), trackBytes(spec, 3), &why), qPrintable(why));
    }

    // Links in the output folder, at the WAV's name and at the temporary
    // name an earlier version used, lead outside; the export writes neither
    // victim and leaves a plain WAV at the name.
    void plantedLinksAreNeverFollowed()
    {
        const mkddp::DiscSpec spec = mkddp::simpleDisc(1, 3);
        const QString disc = m_discs.write(QStringLiteral("links"), spec);
        const QString out = m_discs.path(QStringLiteral("links-out"));
        QVERIFY(QDir().mkpath(out));
        const QByteArray victimText("not yours\n");
        for (const QString& victim : {QStringLiteral("victim1"), QStringLiteral("victim2")})
            QVERIFY(writeFile(m_discs.path(victim), victimText));
        QVERIFY(QFile::link(m_discs.path(QStringLiteral("victim1")),
                            out + QStringLiteral("/Track 1.wav")));
        QVERIFY(QFile::link(m_discs.path(QStringLiteral("victim2")),
                            out + QStringLiteral("/Track 1.wav.part")));
        // A link to where nothing is yet would be created through.
        QVERIFY(QFile::link(m_discs.path(QStringLiteral("victim3")),
                            out + QStringLiteral("/Track 1.wav.tmp")));

        const ToolRun run = runExport({disc, out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(fileBytes(m_discs.path(QStringLiteral("victim1"))), victimText);
        QCOMPARE(fileBytes(m_discs.path(QStringLiteral("victim2"))), victimText);
        QVERIFY(!QFile::exists(m_discs.path(QStringLiteral("victim3"))));
        const QFileInfo wav(out + QStringLiteral("/Track 1.wav"));
        QVERIFY(wav.isFile() && !wav.isSymLink());
        QString why;
        QVERIFY2(isWavOf(wav.filePath(), trackBytes(spec, 1), &why), qPrintable(why));
        // The links planted under other names are still there, untouched.
        QVERIFY(QFileInfo(out + QStringLiteral("/Track 1.wav.part")).isSymLink());
    }

    // Two exports of one disc into one folder at once: the one that finishes
    // second used to delete the first one's finished WAV.
    void twoExportsIntoOneFolder()
    {
        const mkddp::DiscSpec spec = mkddp::simpleDisc(4, 20);
        const QString disc = m_discs.write(QStringLiteral("twice"), spec);
        for (int round = 0; round < 3; ++round) {
            const QString out = m_discs.path(QStringLiteral("twice-out%1").arg(round));
            QProcess first;
            QProcess second;
            first.start(tivoraDdpPath(), {QStringLiteral("export"), disc, out});
            second.start(tivoraDdpPath(), {QStringLiteral("export"), disc, out});
            const ToolRun a = finishRun(first);
            const ToolRun b = finishRun(second);
            QCOMPARE(a.exitCode, 0);
            QCOMPARE(b.exitCode, 0);
            QString why;
            QVERIFY2(tracksWhole(spec, 4, out, &why), qPrintable(why));
        }
    }

    // A write that fails says why, in the system's words.
    void failuresCarryTheSystemsReason()
    {
        const QString disc = m_discs.write(QStringLiteral("limit"), mkddp::simpleDisc(1, 10));
        const QString out = m_discs.path(QStringLiteral("limit-out"));
        const ToolRun run = runTivoraDdpLimited(200, {QStringLiteral("export"), disc, out});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("File too large"), run.err.constData());
        QVERIFY(!run.err.contains("Unknown error"));
        QVERIFY(QDir(out).entryList(QDir::Files | QDir::Hidden | QDir::System).isEmpty());
    }

    // An image shorter than its PQ: info says by how much, the export fails
    // for the track that runs past the end and writes the ones before it.
    void shortImagesFailTheirTracks_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<qint64>("shortBy");
        QTest::addColumn<int>("written");
        const mkddp::DiscSpec spec = mkddp::simpleDisc(3, 4);
        QTest::newRow("empty") << int(mkddp::Fault::ImageEmpty) << mkddp::imageSize(spec) << 0;
        QTest::newRow("cut short") << int(mkddp::Fault::ImageCutShort) << qint64(176400) << 2;
        QTest::newRow("whole") << -1 << qint64(0) << 3;
    }
    void shortImagesFailTheirTracks()
    {
        QFETCH(int, fault);
        QFETCH(qint64, shortBy);
        QFETCH(int, written);
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 4);
        if (fault >= 0)
            spec.faults = {mkddp::Fault(fault)};
        const QString name = QStringLiteral("short%1").arg(fault);
        const QString disc = m_discs.write(name, spec);

        const ToolRun info = runTivoraDdp({QStringLiteral("info"), QStringLiteral("--json"), disc});
        const QJsonObject json = QJsonDocument::fromJson(info.out).object();
        QCOMPARE(json.value(QStringLiteral("imageShortBy")).toDouble(-1), double(shortBy));
        const ToolRun text = runTivoraDdp({QStringLiteral("info"), disc});
        QCOMPARE(text.out.contains("shorter than the PQ descriptor"), shortBy > 0);

        const QString out = m_discs.path(name + QStringLiteral("-out"));
        const ToolRun run = runExport({disc, out});
        QCOMPARE(run.exitCode, written == 3 ? 0 : 1);
        if (written < 3)
            QVERIFY2(run.err.contains(QStringLiteral("Track %1.wav").arg(written + 1).toUtf8()),
                     run.err.constData());
        QString why;
        QVERIFY2(tracksWhole(spec, written, out, &why), qPrintable(why));
    }
};

QTEST_GUILESS_MAIN(TestExportDisc)
#include "test_export_disc.moc"
