// Checksum files beside generated discs, in folders and in ZIP archives:
// the verdicts, the files nobody lists, and tivora-ddp verify's exit status.
#include "VerifyTestSupport.h"
#include "tests/archive/RunZip.h"

#include "archive/ArchiveDdp.h"
#include "ddp/ImageLayout.h"
#include "verify/Verification.h"
#include "verify/VerificationText.h"
#include "verify/VerificationWorker.h"

#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Style = mkddp::ChecksumStyle;

struct Verified
{
    LoadResult result;
    VerificationReport report;
};

Verified verifyFolder(const QString& folder)
{
    Verified out;
    auto model = std::make_shared<DDPModel>();
    DdpFileNames names;
    QStandardItemModel table;
    out.result = loadDdp(folder, &table, *model, &names);
    const auto image = openDiscImage(folder, model->imageLayout());
    out.report = verifyDisc(FolderFileSource(folder), *model, names, image);
    return out;
}

Verified verifyArchive(const QString& zip, const QString& unpackBase)
{
    Verified out;
    ArchiveDdp::Options options;
    options.unpackBase = unpackBase;
    ArchiveDdp::Opened opened = ArchiveDdp::open(zip, options);
    if (!opened.ddp)
        return out;
    auto model = std::make_shared<DDPModel>();
    DdpFileNames names;
    QStandardItemModel table;
    out.result = loadDdp(*opened.ddp, &table, *model, &names);
    const auto image = opened.ddp->openImage(model->imageLayout());
    out.report = verifyDisc(*opened.ddp, *model, names, image);
    return out;
}

std::map<std::string, ChecksumVerdict::Status> statuses(const VerificationReport& report)
{
    std::map<std::string, ChecksumVerdict::Status> map;
    for (const ChecksumVerdict& v : report.verdicts)
        map[v.name] = v.status;
    return map;
}

QString tool(const char* relative)
{
    return qEnvironmentVariable("TIVORA_BINARY_DIR") + QLatin1Char('/') +
           QString::fromLatin1(relative);
}

} // namespace

class TestVerifyChecksums : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString write(const QString& name, mkddp::DiscSpec spec, Style style,
                  QVector<mkddp::Fault> faults = {})
    {
        spec.checksums = style;
        spec.faults = faults;
        spec.upcEan = "4006381333931";
        spec.cdText = true;
        const QString folder = m_dir.filePath(name);
        QString error;
        if (!mkddp::writeDisc(spec, folder, &error))
            qWarning("%s", qPrintable(error));
        return folder;
    }

private slots:
    void everyFormatBesideASoundDisc_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<QString>("checksumFile");
        QTest::newRow("md5") << int(Style::Md5) << "CHECKSUM.MD5";
        QTest::newRow("md5, CRLF, upper-case hex")
            << int(Style::Md5CrlfUpper) << "MD5_CHECKSUM.MD5";
        QTest::newRow("md5, names in lower case") << int(Style::Md5LowerNames) << "checksum.md5";
        QTest::newRow("CRC-32 INI") << int(Style::CrcIni) << "CHECKSUM.TXT";
    }
    void everyFormatBesideASoundDisc()
    {
        QFETCH(int, style);
        QFETCH(QString, checksumFile);
        const QString folder =
            write(QStringLiteral("ok-%1").arg(style), mkddp::simpleDisc(3, 10), Style(style));
        const Verified v = verifyFolder(folder);
        QCOMPARE(int(v.result.kind), int(ErrorKind::NoError));
        QCOMPARE(v.report.state(), VerificationReport::Ok);
        QCOMPARE(v.report.verdicts.size(), std::size_t(5)); // DDPID, DDPMS, PQ, CD-Text, image
        QVERIFY(v.report.unlisted.empty());
        QCOMPARE(v.report.exitStatus(), 0);
        QCOMPARE(verdictLine(v.report),
                 QStringLiteral("Checksums OK: 5 of 5 files (%1)").arg(checksumFile));
    }

    void oneFlippedByteFailsThatFileOnly()
    {
        for (Style style : {Style::Md5, Style::CrcIni}) {
            const QString folder =
                write(QStringLiteral("flip-%1").arg(int(style)), mkddp::simpleDisc(3, 10), style,
                      {mkddp::Fault::ChecksumFlippedByte});
            const Verified v = verifyFolder(folder);
            QCOMPARE(v.report.state(), VerificationReport::Failed);
            for (const auto& [name, status] : statuses(v.report))
                QCOMPARE(int(status), int(name == "IMAGE.DAT" ? ChecksumVerdict::Mismatch
                                                              : ChecksumVerdict::Match));
            QCOMPARE(v.report.exitStatus(), 1);
            QCOMPARE(verdictLine(v.report),
                     QStringLiteral("IMAGE.DAT does not match its checksum"));
        }
    }

    void listedButMissingAndPresentButUnlisted()
    {
        const QString folder =
            write(QStringLiteral("gaps"), mkddp::simpleDisc(3, 10), Style::Md5,
                  {mkddp::Fault::ChecksumMissingFile, mkddp::Fault::ChecksumUnlistedFile});
        const Verified v = verifyFolder(folder);
        const auto map = statuses(v.report);
        QCOMPARE(int(map.at("MISSING.DAT")), int(ChecksumVerdict::Missing));
        QCOMPARE(int(map.at("IMAGE.DAT")), int(ChecksumVerdict::Match));
        QCOMPARE(map.count("PQDESCR"), std::size_t(0));
        QCOMPARE(v.report.unlisted, std::vector<std::string>{"PQDESCR"});
        QCOMPARE(v.report.state(), VerificationReport::Failed);
        QCOMPARE(verdictLine(v.report), QStringLiteral("MISSING.DAT is missing"));

        // Only unlisted: still OK, but the count says what is covered.
        const QString unlisted = write(QStringLiteral("unlisted"), mkddp::simpleDisc(3, 10),
                                       Style::Md5, {mkddp::Fault::ChecksumUnlistedFile});
        const Verified u = verifyFolder(unlisted);
        QCOMPARE(u.report.state(), VerificationReport::Ok);
        QCOMPARE(verdictLine(u.report),
                 QStringLiteral("Checksums OK: 4 of 5 files (CHECKSUM.MD5)"));
    }

    void aChecksumFileOfUnknownFormatGetsNoVerdict()
    {
        const QString folder =
            write(QStringLiteral("unknown"), mkddp::simpleDisc(3, 10), Style::Unknown);
        const Verified v = verifyFolder(folder);
        QCOMPARE(v.report.state(), VerificationReport::NoChecksumFile);
        QVERIFY(v.report.verdicts.empty());
        QCOMPARE(v.report.unrecognisedFileNames(), std::vector<std::string>{"CHECKSUM.TXT"});
        QCOMPARE(v.report.exitStatus(), 3);
        QVERIFY(verdictLine(v.report).contains(QLatin1String("CHECKSUM.TXT")));

        const QString none = write(QStringLiteral("none"), mkddp::simpleDisc(3, 10), Style::None);
        QCOMPARE(verdictLine(verifyFolder(none).report), QStringLiteral("No checksum file"));
    }

    void twoChecksumFilesOneReadOfEachFile()
    {
        // CHECKSUM.MD5 and CHECKSUM.TXT side by side: every file is read once
        // for both its digests, and each file's verdicts come from both.
        const QString folder = write(QStringLiteral("both"), mkddp::simpleDisc(3, 10), Style::Md5);
        QFile md5(QDir(folder).filePath(QStringLiteral("CHECKSUM.MD5")));
        QVERIFY(md5.open(QIODevice::ReadOnly));
        const QByteArray md5Bytes = md5.readAll();
        md5.close();
        write(QStringLiteral("both"), mkddp::simpleDisc(3, 10), Style::CrcIni);
        QVERIFY(md5.open(QIODevice::WriteOnly));
        md5.write(md5Bytes);
        md5.close();

        auto model = std::make_shared<DDPModel>();
        DdpFileNames names;
        QStandardItemModel table;
        loadDdp(folder, &table, *model, &names);
        VerificationPlan plan = planVerification(FolderFileSource(folder), *model, names,
                                                 openDiscImage(folder, model->imageLayout()));
        QCOMPARE(plan.report.verdicts.size(), std::size_t(10));
        QCOMPARE(plan.jobs.size(), std::size_t(5));
        for (const DigestJob& job : plan.jobs)
            QVERIFY(job.md5 && job.crc32);
        runVerification(plan);
        QCOMPARE(plan.report.state(), VerificationReport::Ok);
        QCOMPARE(verdictLine(plan.report),
                 QStringLiteral("Checksums OK: 5 of 5 files (CHECKSUM.MD5, CHECKSUM.TXT)"));
    }

    void splitImagesAreReadThroughTheDiscImage()
    {
        // Three stream files with silence between them: each file's digest
        // is of its own bytes, not of the gap.
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 10);
        spec.imageStreams = 3;
        spec.streamGapFrames = 10;
        const Verified v = verifyFolder(write(QStringLiteral("split"), spec, Style::Md5));
        QCOMPARE(v.report.state(), VerificationReport::Ok);
        QCOMPARE(statuses(v.report).count("IMAGE2.DAT"), std::size_t(1));
        QVERIFY(v.report.unlisted.empty());
    }

    void insideZipArchivesStoredAndDeflated()
    {
        const QString folder = write(QStringLiteral("zipped"), mkddp::simpleDisc(3, 10),
                                     Style::Md5CrlfUpper, {mkddp::Fault::ChecksumFlippedByte});
        for (const bool stored : {true, false}) {
            const QString zip = m_dir.filePath(stored ? QStringLiteral("stored.zip")
                                                      : QStringLiteral("deflated.zip"));
            QVERIFY(zipFolder(folder, zip, stored));
            const Verified v = verifyArchive(zip, m_dir.filePath(QStringLiteral("unpack")));
            QCOMPARE(int(v.result.kind), int(ErrorKind::NoError));
            QCOMPARE(v.report.verdicts.size(), std::size_t(5));
            for (const auto& [name, status] : statuses(v.report))
                QCOMPARE(int(status), int(name == "IMAGE.DAT" ? ChecksumVerdict::Mismatch
                                                              : ChecksumVerdict::Match));
        }
    }

    void commandLineExitStatus()
    {
        const QString ok = write(QStringLiteral("cli-ok"), mkddp::simpleDisc(3, 10), Style::Md5);
        const QString flipped = write(QStringLiteral("cli-flip"), mkddp::simpleDisc(3, 10),
                                      Style::Md5, {mkddp::Fault::ChecksumFlippedByte});
        const QString none =
            write(QStringLiteral("cli-none"), mkddp::simpleDisc(3, 10), Style::None);
        mkddp::DiscSpec shortTrack = mkddp::simpleDisc(3, 10);
        shortTrack.tracks[1].frames = 200;
        const QString bad = write(QStringLiteral("cli-short"), shortTrack, Style::None);
        auto run = [](const QStringList& args, QByteArray* out = nullptr) {
            QProcess process;
            process.start(tool("tools/tivora-ddp/tivora-ddp"), args);
            process.waitForFinished(60000);
            if (out)
                *out = process.readAllStandardOutput();
            return process.exitCode();
        };
        QByteArray text;
        QCOMPARE(run({QStringLiteral("verify"), ok}, &text), 0);
        QVERIFY(text.contains("IMAGE.DAT: OK\n"));
        QCOMPARE(run({QStringLiteral("verify"), flipped}, &text), 1);
        QVERIFY(text.contains("IMAGE.DAT: FAILED\n"));
        QCOMPARE(run({QStringLiteral("verify"), none}), 3);
        // No checksum file, but an error finding.
        QCOMPARE(run({QStringLiteral("verify"), bad}, &text), 1);
        QVERIFY(text.contains("error track-too-short (track 2)"));
        QCOMPARE(run({QStringLiteral("verify"), m_dir.filePath(QStringLiteral("absent"))}), 1);

        QCOMPARE(run({QStringLiteral("verify"), QStringLiteral("--json"), flipped}, &text), 1);
        const QJsonObject json = QJsonDocument::fromJson(text).object();
        QCOMPARE(json.value(QStringLiteral("checksums"))
                     .toObject()
                     .value(QStringLiteral("state"))
                     .toString(),
                 QStringLiteral("failed"));
        QCOMPARE(run({QStringLiteral("info"), QStringLiteral("--json"), bad}, &text), 0);
        const QJsonObject info = QJsonDocument::fromJson(text).object();
        QCOMPARE(info.value(QStringLiteral("checksums")).toObject().value(QStringLiteral("state")),
                 QJsonValue(QStringLiteral("none")));
        QCOMPARE(info.value(QStringLiteral("findings"))
                     .toArray()
                     .first()
                     .toObject()
                     .value(QStringLiteral("id")),
                 QJsonValue(QStringLiteral("track-too-short")));
    }

    void theWorkerReportsTheLatestRunOnly()
    {
        const QString folder = write(QStringLiteral("worker"), mkddp::simpleDisc(3, 10), Style::Md5,
                                     {mkddp::Fault::ChecksumFlippedByte});
        auto model = std::make_shared<DDPModel>();
        DdpFileNames names;
        QStandardItemModel table;
        QCOMPARE(int(loadDdp(folder, &table, *model, &names).kind), int(ErrorKind::NoError));
        auto source = std::make_shared<FolderFileSource>(folder);
        const auto image = openDiscImage(folder, model->imageLayout());

        VerificationWorker worker;
        QSignalSpy finished(&worker, &VerificationWorker::finished);
        QSignalSpy progressed(&worker, &VerificationWorker::progressed);
        // Three starts in a row: the first two are cancelled and say nothing.
        for (int i = 0; i < 3; ++i)
            worker.start(source, model, names, image);
        QVERIFY(worker.isRunning());
        QVERIFY(finished.wait(20000));
        QTest::qWait(50);
        QCOMPARE(finished.count(), 1);
        QVERIFY(!worker.isRunning());
        QCOMPARE(progressed.last().at(0).toInt(), 100);
        QCOMPARE(worker.report().state(), VerificationReport::Failed);

        // Cancelled: nothing arrives.
        worker.start(source, model, names, image);
        worker.cancel();
        QVERIFY(!finished.wait(300));
        QCOMPARE(finished.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestVerifyChecksums)
#include "test_verify_checksums.moc"
