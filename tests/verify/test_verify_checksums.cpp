// Checksum files beside generated discs, in folders and in ZIP archives:
// the verdicts, the files nobody lists, and tivora-ddp verify's exit status.
#include "tests/archive/RunZip.h"

#include "archive/ArchiveDdp.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "tools/mkddp/Mkddp.h"
#include "verify/Verification.h"
#include "verify/VerificationText.h"
#include "verify/VerificationWorker.h"

#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

#include <map>
#include <mutex>

namespace {

using Style = mkddp::ChecksumStyle;

// A disc loaded the way the window loads it, from a folder or an archive.
struct Disc
{
    std::shared_ptr<const IDdpFileSource> source;
    std::shared_ptr<DDPModel> model = std::make_shared<DDPModel>();
    LoadResult result;
    std::shared_ptr<const DiscImage> image;

    VerificationPlan plan() const { return planVerification(*source, *model, image); }
    VerificationReport verify() const { return verifyDisc(*source, *model, image); }
};

Disc loadFolder(const QString& folder)
{
    Disc disc;
    QStandardItemModel table;
    disc.source = std::make_shared<FolderFileSource>(folder);
    disc.result = loadDdp(folder, &table, *disc.model);
    disc.image = openDiscImage(folder, disc.model->imageLayout());
    return disc;
}

Disc loadArchive(const QString& zip, const QString& unpackBase)
{
    Disc disc;
    ArchiveDdp::Options options;
    options.unpackBase = unpackBase;
    const ArchiveDdp::Opened opened = ArchiveDdp::open(zip, options);
    disc.result = opened.result;
    if (!opened.ddp)
        return disc;
    QStandardItemModel table;
    disc.source = opened.ddp;
    disc.result = loadDdp(*opened.ddp, &table, *disc.model);
    disc.image = opened.ddp->openImage(disc.model->imageLayout());
    return disc;
}

VerificationReport verifyFolder(const QString& folder)
{
    return loadFolder(folder).verify();
}

std::map<std::string, ChecksumVerdict::Status> statuses(const VerificationReport& report)
{
    std::map<std::string, ChecksumVerdict::Status> map;
    for (const ChecksumVerdict& v : report.verdicts)
        map[v.name] = v.status;
    return map;
}

// Every file matches its checksum but IMAGE.DAT, whose byte was flipped.
void onlyTheImageFails(const VerificationReport& report)
{
    for (const auto& [name, status] : statuses(report))
        QCOMPARE(int(status),
                 int(name == "IMAGE.DAT" ? ChecksumVerdict::Mismatch : ChecksumVerdict::Match));
}

// A source that counts how often each file's content is read, by the name
// asked for. Verification runs on a thread of its own: hence the lock.
class CountingSource : public IDdpFileSource
{
public:
    explicit CountingSource(const QString& folder) : m_folder(folder) {}
    FileContent readFile(const std::string& name, std::uint64_t limit) const override
    {
        count(name);
        return m_folder.readFile(name, limit);
    }
    std::optional<std::string> readFileHead(const std::string& name,
                                            std::uint64_t limit) const override
    {
        count(name);
        return m_folder.readFileHead(name, limit);
    }
    std::optional<std::uint64_t> fileSize(const std::string& name) const override
    {
        return m_folder.fileSize(name);
    }
    std::vector<std::string> fileNames() const override { return m_folder.fileNames(); }
    std::shared_ptr<const DiscImage> openWholeFile(const std::string& name) const override
    {
        return m_folder.openWholeFile(name);
    }
    int reads(const std::string& name) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_reads.find(name);
        return found == m_reads.end() ? 0 : found->second;
    }

private:
    void count(const std::string& name) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_reads[name];
    }
    FolderFileSource m_folder;
    mutable std::mutex m_mutex;
    mutable std::map<std::string, int> m_reads;
};

} // namespace

class TestVerifyChecksums : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString write(const QString& name, Style style, QVector<mkddp::Fault> faults = {},
                  mkddp::DiscSpec spec = mkddp::simpleDisc(3, 10))
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
        const Disc disc = loadFolder(write(QStringLiteral("ok-%1").arg(style), Style(style)));
        QCOMPARE(int(disc.result.kind), int(ErrorKind::NoError));
        const VerificationReport report = disc.verify();
        QCOMPARE(report.state(), VerificationReport::Ok);
        QCOMPARE(report.verdicts.size(), std::size_t(5)); // DDPID, DDPMS, PQ, CD-Text, image
        QVERIFY(report.unlisted.empty());
        QCOMPARE(report.exitStatus(), 0);
        QCOMPARE(verdictLine(report),
                 QStringLiteral("Checksums OK: 5 of 5 files (%1)").arg(checksumFile));
    }

    void oneFlippedByteFailsThatFileOnly()
    {
        for (Style style : {Style::Md5, Style::CrcIni}) {
            const VerificationReport report =
                verifyFolder(write(QStringLiteral("flip-%1").arg(int(style)), style,
                                   {mkddp::Fault::ChecksumFlippedByte}));
            QCOMPARE(report.state(), VerificationReport::Failed);
            onlyTheImageFails(report);
            QCOMPARE(report.exitStatus(), 1);
            QCOMPARE(verdictLine(report), QStringLiteral("IMAGE.DAT does not match its checksum"));
        }
    }

    void listedButMissingAndPresentButUnlisted()
    {
        const VerificationReport report = verifyFolder(
            write(QStringLiteral("gaps"), Style::Md5,
                  {mkddp::Fault::ChecksumMissingFile, mkddp::Fault::ChecksumUnlistedFile}));
        const auto map = statuses(report);
        QCOMPARE(int(map.at("MISSING.DAT")), int(ChecksumVerdict::Missing));
        QCOMPARE(int(map.at("IMAGE.DAT")), int(ChecksumVerdict::Match));
        QCOMPARE(map.count("PQDESCR"), std::size_t(0));
        QCOMPARE(report.unlisted, std::vector<std::string>{"PQDESCR"});
        QCOMPARE(report.state(), VerificationReport::Failed);
        QCOMPARE(verdictLine(report), QStringLiteral("MISSING.DAT is missing"));

        // Only unlisted: still OK, but the count says what is covered.
        const VerificationReport unlisted = verifyFolder(
            write(QStringLiteral("unlisted"), Style::Md5, {mkddp::Fault::ChecksumUnlistedFile}));
        QCOMPARE(unlisted.state(), VerificationReport::Ok);
        QCOMPARE(verdictLine(unlisted),
                 QStringLiteral("Checksums OK: 4 of 5 files (CHECKSUM.MD5)"));
    }

    void aChecksumFileOfUnknownFormatGetsNoVerdict()
    {
        const VerificationReport report =
            verifyFolder(write(QStringLiteral("unknown"), Style::Unknown));
        QCOMPARE(report.state(), VerificationReport::NoChecksumFile);
        QVERIFY(report.verdicts.empty());
        QCOMPARE(report.unrecognisedFileNames(), std::vector<std::string>{"CHECKSUM.TXT"});
        QCOMPARE(report.exitStatus(), 3);
        QVERIFY(verdictLine(report).contains(QLatin1String("CHECKSUM.TXT")));
    }

    void twoChecksumFilesOneReadOfEachFile()
    {
        // CHECKSUM.MD5 and CHECKSUM.TXT side by side: every file is read once
        // for both its digests, and each file's verdicts come from both.
        const QString folder = write(QStringLiteral("both"), Style::Md5);
        const QString crc = write(QStringLiteral("both-crc"), Style::CrcIni);
        QVERIFY(QFile::copy(QDir(crc).filePath(QStringLiteral("CHECKSUM.TXT")),
                            QDir(folder).filePath(QStringLiteral("CHECKSUM.TXT"))));

        VerificationPlan plan = loadFolder(folder).plan();
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
        const VerificationReport report =
            verifyFolder(write(QStringLiteral("split"), Style::Md5, {}, spec));
        QCOMPARE(report.state(), VerificationReport::Ok);
        QCOMPARE(statuses(report).count("IMAGE2.DAT"), std::size_t(1));
        QVERIFY(report.unlisted.empty());
    }

    void insideZipArchivesStoredAndDeflated()
    {
        const QString folder = write(QStringLiteral("zipped"), Style::Md5CrlfUpper,
                                     {mkddp::Fault::ChecksumFlippedByte});
        for (const bool stored : {true, false}) {
            const QString zip = m_dir.filePath(stored ? QStringLiteral("stored.zip")
                                                      : QStringLiteral("deflated.zip"));
            QVERIFY(zipFolder(folder, zip, stored));
            const Disc disc = loadArchive(zip, m_dir.filePath(QStringLiteral("unpack")));
            QCOMPARE(int(disc.result.kind), int(ErrorKind::NoError));
            const VerificationReport report = disc.verify();
            QCOMPARE(report.verdicts.size(), std::size_t(5));
            onlyTheImageFails(report);
        }
    }

    void commandLineExitStatus()
    {
        const QString ok = write(QStringLiteral("cli-ok"), Style::Md5);
        const QString flipped =
            write(QStringLiteral("cli-flip"), Style::Md5, {mkddp::Fault::ChecksumFlippedByte});
        const QString none = write(QStringLiteral("cli-none"), Style::None);
        mkddp::DiscSpec shortTrack = mkddp::simpleDisc(3, 10);
        shortTrack.tracks[1].frames = 200;
        const QString bad = write(QStringLiteral("cli-short"), Style::None, {}, shortTrack);
        QByteArray text;
        auto run = [&text](const QStringList& args) {
            QProcess process;
            process.start(qEnvironmentVariable("TIVORA_BINARY_DIR") +
                              QStringLiteral("/tools/tivora-ddp/tivora-ddp"),
                          args);
            process.waitForFinished(60000);
            text = process.readAllStandardOutput();
            return process.exitCode();
        };
        const QString verify = QStringLiteral("verify"), json = QStringLiteral("--json");
        QCOMPARE(run({verify, ok}), 0);
        QVERIFY(text.contains("IMAGE.DAT: OK\n"));
        QCOMPARE(run({verify, flipped}), 1);
        QVERIFY(text.contains("IMAGE.DAT: FAILED\n"));
        QCOMPARE(run({verify, none}), 3);
        // No checksum file, but an error finding.
        QCOMPARE(run({verify, bad}), 1);
        QVERIFY(text.contains("error track-too-short (track 2)"));
        QCOMPARE(run({verify, m_dir.filePath(QStringLiteral("absent"))}), 1);

        auto field = [&text](const char* object, const char* key) {
            return QJsonDocument::fromJson(text)[QLatin1String(object)][QLatin1String(key)];
        };
        QCOMPARE(run({verify, json, flipped}), 1);
        QCOMPARE(field("checksums", "state"), QJsonValue(QStringLiteral("failed")));
        QCOMPARE(run({QStringLiteral("info"), json, bad}), 0);
        QCOMPARE(field("checksums", "state"), QJsonValue(QStringLiteral("none")));
        QCOMPARE(QJsonDocument::fromJson(text)[QLatin1String("findings")][0][QLatin1String("id")],
                 QJsonValue(QStringLiteral("track-too-short")));
    }

    // The window loads a disc, then verifies it on the worker: the identifier,
    // the map and the PQ descriptor are parsed once, by the load; the
    // verification takes the names and entries from the model (the files it
    // digests it reads through openWholeFile, not counted here).
    void aLoadAndItsVerificationReadTheMapOnce()
    {
        const QString folder = write(QStringLiteral("once"), Style::Md5);
        auto source = std::make_shared<CountingSource>(folder);
        auto model = std::make_shared<DDPModel>();
        QStandardItemModel table;
        QCOMPARE(int(loadDdp(*source, &table, *model).kind), int(ErrorKind::NoError));
        VerificationWorker worker;
        QSignalSpy finished(&worker, &VerificationWorker::finished);
        worker.start(source, model, openDiscImage(folder, model->imageLayout()));
        QVERIFY(finished.wait(20000));
        QCOMPARE(worker.report().state(), VerificationReport::Ok);
        QCOMPARE(worker.report().verdicts.size(), std::size_t(5));
        for (const std::string name : {"DDPID", "DDPMS", "PQDESCR"})
            QVERIFY2(source->reads(name) == 1, name.c_str());
    }

    void theWorkerReportsTheLatestRunOnly()
    {
        const Disc disc = loadFolder(
            write(QStringLiteral("worker"), Style::Md5, {mkddp::Fault::ChecksumFlippedByte}));
        QCOMPARE(int(disc.result.kind), int(ErrorKind::NoError));

        VerificationWorker worker;
        QSignalSpy finished(&worker, &VerificationWorker::finished);
        QSignalSpy progressed(&worker, &VerificationWorker::progressed);
        // Three starts in a row: the first two are cancelled and say nothing.
        for (int i = 0; i < 3; ++i)
            worker.start(disc.source, disc.model, disc.image);
        QVERIFY(worker.isRunning());
        QVERIFY(finished.wait(20000));
        QTest::qWait(50);
        QCOMPARE(finished.count(), 1);
        QVERIFY(!worker.isRunning());
        QCOMPARE(progressed.last().at(0).toInt(), 100);
        QCOMPARE(worker.report().state(), VerificationReport::Failed);

        // Cancelled: nothing arrives.
        worker.start(disc.source, disc.model, disc.image);
        worker.cancel();
        QVERIFY(!finished.wait(300));
        QCOMPARE(finished.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestVerifyChecksums)
#include "test_verify_checksums.moc"
