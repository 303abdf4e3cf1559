// Hostile folders: what stands at a file's name may be a pipe, a folder, a
// device or a link out of the DDP, and a file may be far larger than any disc
// needs. Each ends in one error (or in a disc without that file), at once and
// in little memory, through the loader and through every tivora-ddp command.
#include "DdpTestBytes.h"
#include "DdpTestRun.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/ReadLimits.h"

#include <QDir>
#include <QFile>
#include <QStandardItemModel>
#include <QtTest>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using ddptest::Run;

// A hang is a failure, not a stuck test: every command is killed after 10 s.
Run runTool(const QStringList& args)
{
    return ddptest::tivoraDdp(args, 10000);
}

Run info(const QString& folder)
{
    return ddptest::info(folder, 10000);
}

// Peak resident memory of this process so far, in KiB.
qint64 peakMemoryKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

mkddp::DiscSpec shortDisc()
{
    mkddp::DiscSpec spec = mkddp::simpleDisc(3, 2);
    spec.cdText = true;
    return spec;
}

} // namespace

class TestDdpHostile : public QObject
{
    Q_OBJECT

private:
    ddptest::Discs m_discs;

    QString disc(const mkddp::DiscSpec& spec = shortDisc()) { return m_discs.write(spec); }
    // The export folder of the latest disc.
    QString out() const { return m_discs.path(QStringLiteral("out%1").arg(m_discs.count())); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_discs.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    // Anything but a regular file is the answer a missing file gives: no
    // DDPID 6, no DDPMS 5, no PQ descriptor 10, no CD-Text a disc without
    // it, no image 7. A pipe used to hold the loader for good.
    void specialFilesAreMissingFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("what");
        QTest::addColumn<int>("kind");
        const struct
        {
            const char* name;
            int kind;
        } files[] = {
            {"DDPID", 6}, {"DDPMS", 5}, {"PQDESCR", 10}, {"IMAGE.DAT", 7}, {"CDTEXT.BIN", 12}};
        for (const auto& file : files) {
            for (const char* what : {"pipe", "folder", "device"}) {
                QTest::newRow(qPrintable(QStringLiteral("%1 as %2").arg(what, file.name)))
                    << QString::fromLatin1(file.name) << QString::fromLatin1(what) << file.kind;
            }
        }
    }
    void specialFilesAreMissingFiles()
    {
        QFETCH(QString, name);
        QFETCH(QString, what);
        QFETCH(int, kind);
        const QString folder = disc();
        const QString path = QDir(folder).filePath(name);
        QVERIFY(QFile::remove(path));
        if (what == QLatin1String("pipe"))
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (what == QLatin1String("folder"))
            QVERIFY(QDir().mkdir(path));
        else if (::mknod(QFile::encodeName(path).constData(), S_IFCHR | 0600, makedev(1, 5)) != 0)
            QSKIP("cannot make a device node here"); // /dev/zero's, as an archive can hold

        const Run run = info(folder);
        QVERIFY2(run.finished, "tivora-ddp info hung");
        QCOMPARE(run.json.value(QStringLiteral("kind")).toInt(-1), kind);
        QCOMPARE(run.exitCode, kind == 12 ? 0 : 1);
        if (name == QLatin1String("CDTEXT.BIN"))
            QVERIFY(run.json.value(QStringLiteral("cdText")).isNull());

        // The commands that read the image stop at once as well.
        if (name == QLatin1String("IMAGE.DAT")) {
            const Run exported = runTool({QStringLiteral("export"), folder, out()});
            QVERIFY2(exported.finished, "tivora-ddp export hung");
            QCOMPARE(exported.exitCode, 1);
            QVERIFY(QDir(out()).entryList(QDir::Files).isEmpty()); // also when out() is absent
            const Run played = runTool({QStringLiteral("play"), folder});
            QVERIFY2(played.finished, "tivora-ddp play hung");
            QCOMPARE(played.exitCode, 1);
        }
    }

    // Files over their limit fail as their kind and say why; a file at its
    // limit still loads.
    void limitsAreNamedAndKeptExactly()
    {
        using testbytes::Entry;
        std::vector<Entry> entries = testbytes::simpleEntries(2, {10, 10, 10});
        // Pad with index entries of the last track up to exactly the limit.
        const Entry padding = entries[entries.size() - 3];
        while (entries.size() < kMaxPqEntries)
            entries.insert(entries.end() - 2, padding);
        QStandardItemModel table;
        DDPModel model;
        QCOMPARE(loadDdp(testbytes::memoryDisc(entries), &table, model).kind, ErrorKind::NoError);
        QCOMPARE(model.entries().size(), std::size_t(kMaxPqEntries));

        entries.insert(entries.end() - 2, padding);
        DDPModel over;
        const LoadResult result = loadDdp(testbytes::memoryDisc(entries), &table, over);
        QCOMPARE(result.kind, ErrorKind::PqdescrInvalid);
        QVERIFY(QString::fromStdString(result.message).contains(QStringLiteral("640000 bytes")));
        QCOMPARE(table.rowCount(), 0);
    }

    // A 100 MB descriptor used to cost gigabytes and seconds; a link to
    // /dev/zero as the map never ended (and lies outside the DDP anyway).
    void hugeFilesCostNothing()
    {
        const QString folder = disc();
        QFile pq(QDir(folder).filePath(QStringLiteral("PQDESCR")));
        QVERIFY(pq.resize(100 * 1000 * 1000)); // sparse: costs no disk
        const qint64 before = peakMemoryKiB();
        QElapsedTimer timer;
        timer.start();
        QStandardItemModel table;
        DDPModel model;
        const LoadResult result = loadDdp(folder, &table, model);
        QCOMPARE(result.kind, ErrorKind::PqdescrInvalid);
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY2(peakMemoryKiB() - before < 20 * 1024,
                 qPrintable(QStringLiteral("%1 KiB more").arg(peakMemoryKiB() - before)));

        const QString zero = disc();
        QVERIFY(QFile::remove(QDir(zero).filePath(QStringLiteral("DDPMS"))));
        QVERIFY(
            QFile::link(QStringLiteral("/dev/zero"), QDir(zero).filePath(QStringLiteral("DDPMS"))));
        const Run run = info(zero);
        QVERIFY2(run.finished, "tivora-ddp info hung");
        QCOMPARE(run.json.value(QStringLiteral("kind")).toInt(-1), 5);
        QVERIFY(run.milliseconds < 5000);
    }

    // A name in the map that leads out of the folder is a missing file, and
    // nothing outside ever reaches a WAV; links and folders inside are fine.
    void namesStayInsideTheFolder_data()
    {
        QTest::addColumn<QByteArray>("mapName");
        QTest::addColumn<QString>("linkTarget"); // IMAGE.DAT made a link to this, if set
        QTest::addColumn<int>("kind");
        QTest::newRow("climbs out") << QByteArray("../SECRET.DAT") << QString() << 7;
        QTest::newRow("absolute") << QByteArray("/etc/hostname") << QString() << 7;
        QTest::newRow("climbs out and back")
            << QByteArray("sub/../../x/IMAGE.DAT") << QString() << 7;
        QTest::newRow("link out") << QByteArray("IMAGE.DAT") << QStringLiteral("../SECRET.DAT")
                                  << 7;
        QTest::newRow("link inside")
            << QByteArray("IMAGE.DAT") << QStringLiteral("sub/REAL.DAT") << 12;
        QTest::newRow("in a subfolder") << QByteArray("sub/REAL.DAT") << QString() << 12;
    }
    void namesStayInsideTheFolder()
    {
        QFETCH(QByteArray, mapName);
        QFETCH(QString, linkTarget);
        QFETCH(int, kind);
        mkddp::DiscSpec spec = shortDisc();
        const QString folder = disc(spec);
        const QDir dir(folder);
        // The real image moves into a subfolder; a secret lies beside the DDP.
        QVERIFY(dir.mkdir(QStringLiteral("sub")));
        QVERIFY(QFile::rename(dir.filePath(QStringLiteral("IMAGE.DAT")),
                              dir.filePath(QStringLiteral("sub/REAL.DAT"))));
        QFile::remove(dir.filePath(QStringLiteral("../SECRET.DAT")));
        QVERIFY(QFile::copy(dir.filePath(QStringLiteral("sub/REAL.DAT")),
                            dir.filePath(QStringLiteral("../SECRET.DAT"))));
        if (!linkTarget.isEmpty())
            QCOMPARE(
                ::symlink(QFile::encodeName(linkTarget).constData(),
                          QFile::encodeName(dir.filePath(QStringLiteral("IMAGE.DAT"))).constData()),
                0);
        spec.imageName = mapName;
        QFile ddpms(dir.filePath(QStringLiteral("DDPMS")));
        QVERIFY(ddpms.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ddpms.write(mkddp::ddpmsBytes(spec));
        ddpms.close();

        const Run run = info(folder);
        QCOMPARE(run.json.value(QStringLiteral("kind")).toInt(-1), kind);
        const Run exported = runTool({QStringLiteral("export"), folder, out()});
        QCOMPARE(exported.exitCode, kind == 12 ? 0 : 1);
        QCOMPARE(QDir(out()).entryList(QDir::Files).size(), kind == 12 ? 3 : 0);
    }
};

QTEST_GUILESS_MAIN(TestDdpHostile)
#include "test_ddp_hostile.moc"
