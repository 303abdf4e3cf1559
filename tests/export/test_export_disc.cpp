// Generated discs through `tivora-ddp export`, which loads them as the window
// does and runs the same workers: every track's data chunk must be the
// image's byte range exactly, under the name the window would propose.
#include "ExportTestSupport.h"
#include "GeneratedDiscs.h"

#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace exporttest;

namespace {

// The realistic disc (pauses, an index 02, CD-Text) with a "/" in a title.
mkddp::DiscSpec realisticDisc()
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.tracks[3].text.title = QStringLiteral("Night Train / Day Train");
    return spec;
}

// The file of track `k` (from 0), worked out from the DiscSpec alone: from its
// index 01 to the next track's pause or start, or to the image's end.
struct ExpectedFile
{
    QString name;
    qint64 start;
    qint64 end;
};
ExpectedFile expectedFile(const mkddp::DiscSpec& spec, int k)
{
    const int number = spec.firstTrackNumber + k;
    qint64 end = mkddp::imageSize(spec);
    if (k + 1 < spec.tracks.size()) {
        end = mkddp::indexPosition(spec, number + 1, 0);
        if (end < 0)
            end = mkddp::indexPosition(spec, number + 1, 1);
    }
    const QString title = spec.tracks[k].text.title;
    QString name = spec.cdText && !title.isEmpty()
                       ? QStringLiteral("%1 - %2.wav").arg(number).arg(title)
                       : QStringLiteral("Track %1.wav").arg(number);
    return {name.replace(QLatin1Char('/'), QLatin1Char('_')), mkddp::indexPosition(spec, number, 1),
            end};
}

bool fileMatches(const QString& folder, const mkddp::DiscSpec& spec, int k, QString* why)
{
    const ExpectedFile file = expectedFile(spec, k);
    const bool same =
        isWavOf(QDir(folder).filePath(file.name),
                mkddp::TestPattern(spec).bytes(file.start, file.end - file.start), why);
    *why = file.name + QStringLiteral(": ") + *why;
    return same;
}

using Run = ToolRun;

Run runExport(const QStringList& args)
{
    return runTivoraDdp(QStringList{QStringLiteral("export")} + args);
}

} // namespace

class TestExportDisc : public QObject
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

    void everyTrackExactly_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("firstPauseFrames");
        QTest::addColumn<bool>("cdText");
        QTest::newRow("realistic") << QStringLiteral("realistic") << -1 << true;
        // The first row is then a pause, so the first track is entry 1.
        QTest::newRow("shown first pause") << QStringLiteral("longpause") << 310 << true;
        QTest::newRow("no CD-Text") << QStringLiteral("untitled") << -1 << false;
    }
    void everyTrackExactly()
    {
        QFETCH(QString, name);
        QFETCH(int, firstPauseFrames);
        QFETCH(bool, cdText);
        mkddp::DiscSpec spec = realisticDisc();
        if (firstPauseFrames >= 0)
            spec.tracks[0].pauseFrames = firstPauseFrames;
        spec.cdText = cdText;
        const QString disc = m_discs.write(name, spec);

        // A file inside the folder stands for the folder; OUTDIR is created.
        const QString out = m_discs.path(name + QStringLiteral("-out/wav"));
        const Run run = runExport({disc + QStringLiteral("/DDPID"), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err, QByteArray()); // not a terminal: no progress line
        QCOMPARE(run.out.count('\n'), spec.tracks.size());
        QCOMPARE(QDir(out).entryList(QDir::Files).size(), spec.tracks.size());
        for (int k = 0; k < spec.tracks.size(); ++k) {
            QString why;
            QVERIFY2(fileMatches(out, spec, k, &why), qPrintable(why));
        }
    }

    void oneTrack()
    {
        // Track 3 holds the index 02, which stays in its file.
        const mkddp::DiscSpec spec = realisticDisc();
        const QString out = m_discs.path(QStringLiteral("one-out"));
        const Run run = runExport({QStringLiteral("--track"), QStringLiteral("3"),
                                   m_discs.write(QStringLiteral("one"), spec), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QDir(out).entryList(QDir::Files),
                 QStringList{QStringLiteral("3 - Interlude.wav")});
        QVERIFY(mkddp::indexPosition(spec, 3, 2) > expectedFile(spec, 2).start);
        QString why;
        QVERIFY2(fileMatches(out, spec, 2, &why), qPrintable(why));
    }

    void failures_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QByteArray>("message");
        const QString disc = m_discs.write(QStringLiteral("fail"), mkddp::simpleDisc(2, 3));
        mkddp::DiscSpec noImage = mkddp::simpleDisc(2, 3);
        noImage.faults = {mkddp::Fault::NoImageFile};
        const QString regular = m_discs.path(QStringLiteral("regular"));
        QFile(regular).open(QIODevice::WriteOnly);
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
        const Run run = runExport(args);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.startsWith(message), run.err.constData());
        QCOMPARE(run.err.count('\n'), 1);
        QVERIFY(run.out.isEmpty());
        QVERIFY(!QFileInfo::exists(args.at(1)) || QDir(args.at(1)).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestExportDisc)
#include "test_export_disc.moc"
