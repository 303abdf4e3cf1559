// Whole generated discs through the loader and the export, in process and
// through `tivora-ddp export`: every track's data chunk must be the image's
// byte range exactly, under the name the window would propose.
#include "ExportTestSupport.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "export/FileWriterAllTracks.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

using namespace exporttest;

namespace {

// The realistic disc (pauses, an index 02, CD-Text) with a "/" in a title.
mkddp::DiscSpec slashDisc()
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.tracks[3].text.title = QStringLiteral("Night Train / Day Train");
    return spec;
}

// What the all-tracks export must write, worked out from the disc's spec:
// each track from its index 01 to the next track's pause or start.
struct ExpectedFile
{
    QString name;
    qint64 start;
    qint64 end;
};
QList<ExpectedFile> expectedFiles(const mkddp::DiscSpec& spec)
{
    QList<ExpectedFile> files;
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const int number = spec.firstTrackNumber + k;
        qint64 end = mkddp::imageSize(spec);
        if (k + 1 < spec.tracks.size()) {
            end = mkddp::indexPosition(spec, number + 1, 0);
            if (end < 0)
                end = mkddp::indexPosition(spec, number + 1, 1);
        }
        const QString title = spec.tracks[k].text.title;
        const QString name = spec.cdText && !title.isEmpty()
                                 ? QStringLiteral("%1 - %2.wav").arg(number).arg(title)
                                 : QStringLiteral("Track %1.wav").arg(number);
        files.append({QString(name).replace(QLatin1Char('/'), QLatin1Char('_')),
                      mkddp::indexPosition(spec, number, 1), end});
    }
    return files;
}

// Compares a folder of exported files with the disc, byte for byte.
bool folderMatches(const QString& folder, const mkddp::DiscSpec& spec, QString* why)
{
    const mkddp::TestPattern pattern(spec);
    const QList<ExpectedFile> expected = expectedFiles(spec);
    QStringList names;
    for (const ExpectedFile& file : expected)
        names.append(file.name);
    names.sort();
    const QStringList actual = QDir(folder).entryList(QDir::Files, QDir::Name);
    if (actual != names) {
        *why = QStringLiteral("files %1, expected %2")
                   .arg(actual.join(QLatin1Char('|')), names.join(QLatin1Char('|')));
        return false;
    }
    for (const ExpectedFile& file : expected) {
        if (!isWavOf(readWav(QDir(folder).filePath(file.name)),
                     pattern.bytes(file.start, file.end - file.start), why)) {
            *why = file.name + QStringLiteral(": ") + *why;
            return false;
        }
    }
    return true;
}

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run runExport(const QStringList& args)
{
    QProcess process;
    process.start(QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR")) +
                      QStringLiteral("/tools/tivora-ddp/tivora-ddp"),
                  QStringList{QStringLiteral("export")} + args);
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

} // namespace

class TestExportDisc : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString& name) const { return m_dir.filePath(name); }

    QString writeDisc(const QString& name, const mkddp::DiscSpec& spec)
    {
        const QString folder = path(name);
        QString error;
        if (!mkddp::writeDisc(spec, folder, &error))
            qWarning("%s", qPrintable(error));
        return folder;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    void everyTrackExactly_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("firstPauseFrames");
        QTest::addColumn<bool>("cdText");
        QTest::newRow("realistic, title with slash") << QStringLiteral("realistic") << -1 << true;
        QTest::newRow("shown first pause") << QStringLiteral("longpause") << 4 * 75 + 10 << true;
        QTest::newRow("no CD-Text") << QStringLiteral("plain") << -1 << false;
    }
    void everyTrackExactly()
    {
        // Loaded and numbered as the window does it, then the all-tracks worker.
        QFETCH(QString, name);
        QFETCH(int, firstPauseFrames);
        QFETCH(bool, cdText);
        mkddp::DiscSpec spec = slashDisc();
        if (firstPauseFrames >= 0)
            spec.tracks[0].pauseFrames = firstPauseFrames;
        spec.cdText = cdText;
        const QString disc = writeDisc(name, spec);

        QStandardItemModel table;
        auto model = std::make_shared<DDPModel>();
        QCOMPARE(loadDdp(disc, &table, *model).kind, ErrorKind::NoError);
        model->setFirstTrackNumber(model->isFirstRowPause() ? 1 : 2);
        QCOMPARE(model->isFirstRowPause(), firstPauseFrames >= 3 * 75);

        const QString out = path(name + QStringLiteral("-out"));
        QVERIFY(QDir().mkpath(out));
        FileWriterAllTracks worker(out, QDir(disc).filePath(QStringLiteral("IMAGE.DAT")), model);
        int finished = 0;
        connect(&worker, &FileWriter::finished, [&] { ++finished; });
        worker.process();
        QCOMPARE(finished, 1);
        QString why;
        QVERIFY2(folderMatches(out, spec, &why), qPrintable(why));
    }

    void commandAllTracks()
    {
        const mkddp::DiscSpec spec = slashDisc();
        const QString disc = writeDisc(QStringLiteral("cli"), spec);
        // A file inside the folder stands for the folder; OUTDIR is created.
        const QString out = path(QStringLiteral("cli-out/new"));
        const Run run = runExport({disc + QStringLiteral("/DDPID"), out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err, QByteArray()); // not a terminal: no progress line
        QCOMPARE(run.out.count('\n'), spec.tracks.size());
        QVERIFY(run.out.contains("4 - Night Train _ Day Train.wav\n"));
        QString why;
        QVERIFY2(folderMatches(out, spec, &why), qPrintable(why));
    }

    void commandOneTrack()
    {
        // Track 3 holds the index 02: it stays in the file.
        const mkddp::DiscSpec spec = slashDisc();
        const QString disc = writeDisc(QStringLiteral("cli-one"), spec);
        const QString out = path(QStringLiteral("cli-one-out"));
        const Run run = runExport({QStringLiteral("--track"), QStringLiteral("3"), disc, out});
        QCOMPARE(run.exitCode, 0);
        const QStringList files = QDir(out).entryList(QDir::Files);
        QCOMPARE(files, QStringList{QStringLiteral("3 - Interlude.wav")});
        const ExpectedFile expected = expectedFiles(spec).at(2);
        QVERIFY(mkddp::indexPosition(spec, 3, 2) > expected.start);
        QString why;
        QVERIFY2(
            isWavOf(readWav(QDir(out).filePath(files.first())),
                    mkddp::TestPattern(spec).bytes(expected.start, expected.end - expected.start),
                    &why),
            qPrintable(why));
    }

    void commandFailures_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QByteArray>("message");
        const QString disc = writeDisc(QStringLiteral("fail"), mkddp::simpleDisc(2, 3));
        mkddp::DiscSpec noImage = mkddp::simpleDisc(2, 3);
        noImage.faults = {mkddp::Fault::NoImageFile};
        const QString imageless = writeDisc(QStringLiteral("noimage"), noImage);
        const QString plain = path(QStringLiteral("regular-file"));
        QFile(plain).open(QIODevice::WriteOnly);
        QTest::newRow("path missing")
            << QStringList{path(QStringLiteral("nope")), path(QStringLiteral("o1"))}
            << QByteArray("tivora-ddp export: ");
        QTest::newRow("not a DDP") << QStringList{m_dir.path(), path(QStringLiteral("o2"))}
                                   << QByteArray("tivora-ddp export: ");
        QTest::newRow("image missing") << QStringList{imageless, path(QStringLiteral("o3"))}
                                       << QByteArray("tivora-ddp export: ");
        QTest::newRow("no such track")
            << QStringList{disc, path(QStringLiteral("o4")), QStringLiteral("--track"),
                           QStringLiteral("9")}
            << QByteArray("tivora-ddp export: The DDP has no track 9.\n");
        QTest::newRow("outdir under a file")
            << QStringList{disc, plain + QStringLiteral("/out")}
            << QByteArray("tivora-ddp export: Could not create the folder");
        QTest::newRow("disk full") << QStringList{disc, QStringLiteral("/dev/full/x")}
                                   << QByteArray("tivora-ddp export: ");
    }
    void commandFailures()
    {
        QFETCH(QStringList, args);
        QFETCH(QByteArray, message);
        const Run run = runExport(args);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.startsWith(message), run.err.constData());
        QCOMPARE(run.err.count('\n'), 1);
        QVERIFY(run.out.isEmpty());
        QVERIFY(!QFileInfo::exists(args.at(1)) || QDir(args.at(1)).isEmpty());
    }

    void commandUsage()
    {
        QCOMPARE(runExport({}).exitCode, 2);
        QCOMPARE(runExport({QStringLiteral("a")}).exitCode, 2);
        QCOMPARE(runExport({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("--track"),
                            QStringLiteral("x")})
                     .exitCode,
                 2);
    }
};

QTEST_GUILESS_MAIN(TestExportDisc)
#include "test_export_disc.moc"
