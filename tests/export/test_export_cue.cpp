// The cue sheet for a reference CD, read back by real consumers: cdrdao
// lists the tracks, pauses, starts, ISRCs, flags and catalog number of the
// disc, cueprint its CD-Text, and every INDEX line is the PQ entry's own
// time. Frame-exact times and control flags come from the PQ entry helpers.
#include "ExportTestSupport.h"
#include "GeneratedDiscs.h"

#include "ddp/PqTime.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QProcess>
#include <QtTest>

#include <cstring>

using namespace exporttest;

namespace {

QString frames(qint64 bytePosition)
{
    return QString::fromStdString(frameTimeText(bytePosition / 2352));
}

// The realistic disc with every flag the cue sheet carries (control byte
// "B1": four channels, copy permitted, pre-emphasis).
mkddp::DiscSpec flaggedDisc(bool withIndex2)
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.pqControl = "B100";
    if (!withIndex2) {
        for (mkddp::TrackSpec& track : spec.tracks)
            track.indexOffsets.clear();
    }
    return spec;
}

// What cdrdao says of each track: "START mm:ss:ff", "PREGAP ...", "ISRC ..."
// and the flag lines, in its show-toc words.
QVector<QStringList> cdrdaoTracks(const QByteArray& toc)
{
    QVector<QStringList> tracks;
    for (const QByteArray& raw : toc.split('\n')) {
        const QString line = QString::fromLatin1(raw).trimmed();
        if (line.startsWith(QLatin1String("TRACK")))
            tracks.append(QStringList());
        else if (!tracks.isEmpty() && !line.isEmpty())
            tracks.last().append(line.section(QLatin1Char('('), 0, 0).simplified());
    }
    return tracks;
}

} // namespace

class TestExportCue : public QObject
{
    Q_OBJECT

private:
    GeneratedDiscs m_discs;

private slots:
    void initTestCase() { QCOMPARE(m_discs.missing({"cdrdao", "cueprint"}), QString()); }

    // MM:SS:FF at the ends of a CD and past them, where an off-by-one in the
    // carries would show; the first control byte's flags.
    void frameTimesAndFlags()
    {
        QCOMPARE(frameTimeText(0), std::string("00:00:00"));
        QCOMPARE(frameTimeText(74 * 4500 + 59 * 75 + 74), std::string("74:59:74"));
        QCOMPARE(frameTimeText(75 * 4500), std::string("75:00:00"));
        QCOMPARE(frameTimeText(100 * 4500 + 1), std::string("100:00:01"));
        auto flags = [](const char* control) {
            PqEntry entry;
            std::memcpy(entry.bytes.data() + 16, control, 4);
            const PqControlFlags f = pqControlFlags(entry);
            return QString::fromLatin1("%1%2%3%4")
                .arg(f.preEmphasis ? "P" : "-", f.copyPermitted ? "C" : "-", f.data ? "D" : "-",
                     f.fourChannel ? "4" : "-");
        };
        QCOMPARE(flags("0100"), QStringLiteral("----"));
        QCOMPARE(flags("1100"), QStringLiteral("P---"));
        QCOMPARE(flags("b100"), QStringLiteral("PC-4"));
        QCOMPARE(flags("4100"), QStringLiteral("--D-"));
        QCOMPARE(flags("  00"), QStringLiteral("----"));
    }

    // Every INDEX line of the sheet is its PQ entry's time, index 02 too,
    // counted from the audio file's first byte; the BIN is the image up to
    // the lead-out, byte for byte.
    void indexesAreThePqTimes()
    {
        const mkddp::DiscSpec spec = flaggedDisc(true);
        const QString disc = m_discs.write(QStringLiteral("times"), spec);
        const QString cue = m_discs.path(QStringLiteral("times.cue"));
        const ToolRun run = runTivoraDdp({QStringLiteral("cue"), disc, cue});
        QVERIFY2(run.exitCode == 0, run.err.constData());

        QStringList expected;
        for (int number = 1; number <= spec.lastTrackNumber(); ++number) {
            for (int index = 0; index < 100; ++index) {
                const qint64 at = mkddp::indexPosition(spec, number, index);
                if (at >= 0)
                    expected.append(QStringLiteral("%1 INDEX %2 %3")
                                        .arg(number, 2, 10, QLatin1Char('0'))
                                        .arg(index, 2, 10, QLatin1Char('0'))
                                        .arg(frames(at)));
                else if (index > 0)
                    break;
            }
        }
        // Each track's ISRC as the descriptor gives it, not as the table
        // shows it after an index 02 (the table moves ISRCs for display).
        QStringList written;
        QStringList isrcs;
        QString track;
        for (const QByteArray& raw : fileBytes(cue).split('\n')) {
            const QString line = QString::fromLatin1(raw).trimmed();
            if (line.startsWith(QLatin1String("TRACK ")))
                track = line.mid(6, 2);
            else if (line.startsWith(QLatin1String("INDEX ")))
                written.append(track + QLatin1Char(' ') + line);
            else if (line.startsWith(QLatin1String("ISRC ")))
                isrcs.append(line.mid(5));
        }
        QCOMPARE(written, expected);
        QVERIFY(written.join(QLatin1Char('\n')).contains(QLatin1String("INDEX 02")));
        QStringList expectedIsrcs;
        for (const mkddp::TrackSpec& t : spec.tracks)
            expectedIsrcs.append(QString::fromLatin1(t.isrc));
        QCOMPARE(isrcs, expectedIsrcs);
        QCOMPARE(fileBytes(m_discs.path(QStringLiteral("times.bin"))),
                 mkddp::TestPattern(spec).bytes(0, mkddp::imageSize(spec)));
    }

    // cdrdao reads the sheet as the disc: the same tracks, starts, pauses,
    // ISRCs, flags and catalog number, with the BIN and with one WAV alike.
    // (cdrdao 1.2.4 counts INDEX 02 and later from the track's start instead
    // of the file's, against the cue sheet format, so this disc has none.)
    void cdrdaoReadsTheDisc_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("bin") << QStringLiteral("--bin");
        QTest::newRow("wav") << QStringLiteral("--wav");
    }
    void cdrdaoReadsTheDisc()
    {
        QFETCH(QString, kind);
        const mkddp::DiscSpec spec = flaggedDisc(false);
        const QString disc = m_discs.write(QStringLiteral("burn") + kind, spec);
        const QString cue = m_discs.path(QStringLiteral("burn%1/ref.cue").arg(kind));
        QVERIFY(QDir().mkpath(QFileInfo(cue).path()));
        const ToolRun run = runTivoraDdp({QStringLiteral("cue"), disc, cue, kind});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        if (kind == QLatin1String("--wav")) {
            QString why;
            QVERIFY2(isWavOf(m_discs.path(QStringLiteral("burn--wav/ref.wav")),
                             mkddp::TestPattern(spec).bytes(0, mkddp::imageSize(spec)), &why),
                     qPrintable(why));
        }

        // cdrdao resolves the file name against its working folder.
        QProcess process;
        process.setWorkingDirectory(QFileInfo(cue).path());
        process.start(QStringLiteral("cdrdao"),
                      {QStringLiteral("show-toc"), QFileInfo(cue).fileName()});
        const ToolRun toc = finishRun(process);
        QVERIFY2(toc.exitCode == 0, (toc.out + toc.err).constData());
        QVERIFY(toc.out.contains("CATALOG NUMBER: " + spec.upcEan));

        const QVector<QStringList> tracks = cdrdaoTracks(toc.out);
        QCOMPARE(tracks.size(), spec.tracks.size());
        for (int k = 0; k < tracks.size(); ++k) {
            const int number = k + 1;
            QStringList expected;
            const QByteArray isrc = spec.tracks[k].isrc;
            expected << QString::fromLatin1("ISRC " + isrc.left(2) + ' ' + isrc.mid(2, 3) + ' ' +
                                            isrc.mid(5, 2) + ' ' + isrc.mid(7, 5))
                     << QStringLiteral("COPY PERMITTED") << QStringLiteral("PRE-EMPHASIS")
                     << QStringLiteral("FOUR CHANNEL AUDIO");
            if (spec.tracks[k].pauseFrames > 0)
                expected << QStringLiteral("PREGAP ") +
                                QString::fromStdString(frameTimeText(spec.tracks[k].pauseFrames));
            expected << QStringLiteral("START ") + frames(mkddp::indexPosition(spec, number, 1))
                     << QStringLiteral("END ") + frames(trackEnd(spec, number));
            QCOMPARE(tracks[k], expected);
        }
    }

    // cueprint (libcue) reads the CD-Text of the album and of each track.
    void cueprintReadsTheCdText()
    {
        const mkddp::DiscSpec spec = flaggedDisc(true);
        const QString disc = m_discs.write(QStringLiteral("text"), spec);
        const QString cue = m_discs.path(QStringLiteral("text.cue"));
        QCOMPARE(runTivoraDdp({QStringLiteral("cue"), disc, cue}).exitCode, 0);
        const ToolRun read =
            runProgram(QStringLiteral("cueprint"),
                       {QStringLiteral("-d%P|%T\\n"), QStringLiteral("-t%p|%t\\n"), cue});
        QCOMPARE(read.exitCode, 0);
        QStringList expected{spec.album.performer + QLatin1Char('|') + spec.album.title};
        for (const mkddp::TrackSpec& track : spec.tracks)
            expected.append(track.text.performer + QLatin1Char('|') + track.text.title);
        QCOMPARE(QString::fromLatin1(read.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts),
                 expected);
    }

    // A cue sheet whose audio file would be the disc's own image is refused
    // and writes nothing; the image keeps every byte.
    void theImageIsNeverWritten()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(2, 3);
        spec.imageName = "ref.bin";
        const QString disc = m_discs.write(QStringLiteral("own"), spec);
        const QByteArray before = fileBytes(disc + QStringLiteral("/ref.bin"));
        const ToolRun run =
            runTivoraDdp({QStringLiteral("cue"), disc, disc + QStringLiteral("/ref.cue")});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("audio image"), run.err.constData());
        QCOMPARE(fileBytes(disc + QStringLiteral("/ref.bin")), before);
        QVERIFY(!QFile::exists(disc + QStringLiteral("/ref.cue")));
    }
};

QTEST_GUILESS_MAIN(TestExportCue)
#include "test_export_cue.moc"
