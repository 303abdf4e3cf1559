#include "archive/ArchiveDdp.h"
#include "archive/UnpackFolder.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "tests/archive/RunZip.h"
#include "tools/mkddp/Mkddp.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

#include <zip.h>

#include <sys/stat.h>

#include <atomic>
#include <thread>

namespace {

QString binary(const QString& relative)
{
    return QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR")) + QLatin1Char('/') + relative;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Runs tivora-ddp; its exit code, with what it printed in `out` and `err`.
int runTool(const QStringList& args, QByteArray* out = nullptr, QByteArray* err = nullptr)
{
    QProcess process;
    process.start(binary(QStringLiteral("tools/tivora-ddp/tivora-ddp")), args);
    process.waitForFinished(60000);
    if (out)
        *out = process.readAllStandardOutput();
    if (err)
        *err = process.readAllStandardError();
    return process.exitCode();
}

QByteArray readAll(const DiscImage& image)
{
    QByteArray bytes(int(image.length()), '\0');
    bytes.truncate(int(image.read(0, bytes.data(), image.length())));
    return bytes;
}

// Every file under `dir`, as paths relative to it.
QStringList filesUnder(const QString& dir)
{
    QStringList files;
    QDirIterator it(dir, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(QDir(dir).relativeFilePath(it.next()));
    files.sort();
    return files;
}

// An archive written by libzip: the disc's files at the root, stored, plus
// `extra` (a name and its bytes), with the Unix file type `type` when it is
// not 0 (S_IFLNK for a link).
bool libzipArchive(const QString& zipPath, const QString& discFolder, const QByteArray& extraName,
                   const QByteArray& extraBytes, quint32 type = 0)
{
    int code = 0;
    zip_t* archive =
        zip_open(QFile::encodeName(zipPath).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!archive)
        return false;
    QList<QByteArray> keep; // libzip reads the buffers when it closes
    const QStringList names = QDir(discFolder).entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        keep.append(readFile(QDir(discFolder).filePath(name)));
        zip_source_t* source = zip_source_buffer(archive, keep.last().constData(),
                                                 zip_uint64_t(keep.last().size()), 0);
        const zip_int64_t index = zip_file_add(archive, name.toUtf8().constData(), source, 0);
        zip_set_file_compression(archive, zip_uint64_t(index), ZIP_CM_STORE, 0);
    }
    zip_source_t* source =
        zip_source_buffer(archive, extraBytes.constData(), zip_uint64_t(extraBytes.size()), 0);
    const zip_int64_t index = zip_file_add(archive, extraName.constData(), source, 0);
    if (index < 0) {
        zip_discard(archive);
        return false;
    }
    if (type != 0)
        zip_file_set_external_attributes(archive, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX,
                                         (type | 0644u) << 16);
    return zip_close(archive) == 0;
}

// Changes what the archive's entry `name` claims, in its local header and in
// the central directory alike: `packed` bytes more of compressed data,
// `unpacked` bytes more once unpacked (either may be negative).
bool patchClaims(const QString& zipPath, const QByteArray& name, qint32 packed, qint32 unpacked)
{
    QByteArray bytes = readFile(zipPath);
    auto u16 = [&](int at) {
        return quint32(quint8(bytes[at])) | quint32(quint8(bytes[at + 1])) << 8;
    };
    auto u32 = [&](int at) { return u16(at) | u16(at + 2) << 16; };
    auto add32 = [&](int at, qint32 delta) {
        const quint32 v = u32(at) + quint32(delta);
        for (int b = 0; b < 4; ++b)
            bytes[at + b] = char((v >> (8 * b)) & 0xFF);
    };
    for (int at = bytes.indexOf("PK\x01\x02"); at >= 0; at = bytes.indexOf("PK\x01\x02", at + 4)) {
        if (bytes.mid(at + 46, int(u16(at + 28))) != name)
            continue;
        const int local = int(u32(at + 42));
        add32(at + 20, packed);
        add32(at + 24, unpacked);
        add32(local + 18, packed);
        add32(local + 22, unpacked);
        return writeFile(zipPath, bytes);
    }
    return false;
}

struct Loaded
{
    ArchiveDdp::Opened opened;
    LoadResult load;
    DDPModel model;
    QStandardItemModel table;
};

} // namespace

class TestArchiveDdp : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_count = 0;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    // A fresh folder with the disc in `sub` (or at its top).
    QString disc(const mkddp::DiscSpec& spec, const QString& sub = QString())
    {
        // Each case in a folder of its own, its archive beside the disc's
        // top folder ("../NAME.zip" from there).
        const QString top = path(QStringLiteral("case%1/d").arg(++m_count));
        const QString folder = sub.isEmpty() ? top : QDir(top).filePath(sub);
        QString error;
        if (!mkddp::writeDisc(spec, folder, &error))
            qWarning("%s", qPrintable(error));
        return top;
    }

    ArchiveDdp::Options options() const
    {
        ArchiveDdp::Options o;
        o.unpackBase = path(QStringLiteral("unpack"));
        return o;
    }

    void load(Loaded& loaded, const QString& zip, const ArchiveDdp::Options& o)
    {
        loaded.opened = ArchiveDdp::open(zip, o);
        if (loaded.opened.ddp)
            loaded.load = loadDdp(*loaded.opened.ddp, &loaded.table, loaded.model);
    }

private slots:
    // The same generated disc, from every kind of archive a DDP arrives in,
    // loads and reads back byte for byte through DiscImage. Stored audio is
    // read in place: nothing is unpacked for it.
    void readsTheDiscFromEveryKindOfArchive_data()
    {
        QTest::addColumn<QStringList>("zipArgs");
        QTest::addColumn<QString>("sub");
        QTest::addColumn<int>("streams");
        QTest::addColumn<bool>("unpacks");
        const QStringList root{QStringLiteral("-r"), QStringLiteral("../disc.zip"),
                               QStringLiteral(".")};
        auto args = [&](const char* options) {
            return QString::fromLatin1(options).split(QLatin1Char(' ')) + root;
        };
        QTest::newRow("stored") << args("-0") << QString() << 1 << false;
        QTest::newRow("deflated") << args("-6") << QString() << 1 << true;
        // zip -fz writes ZIP64 records even for a small archive.
        QTest::newRow("zip64") << args("-0 -fz") << QString() << 1 << false;
        QTest::newRow("subfolder, split image")
            << args("-0") << QStringLiteral("Master") << 3 << false;
        QTest::newRow("deflated split image, one stream stored")
            << args("-6 -n IMAGE1.DAT") << QStringLiteral("Master") << 3 << true;
    }
    void readsTheDiscFromEveryKindOfArchive()
    {
        QFETCH(QStringList, zipArgs);
        QFETCH(QString, sub);
        QFETCH(int, streams);
        QFETCH(bool, unpacks);
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 2);
        spec.imageStreams = streams;
        spec.streamGapFrames = streams > 1 ? 10 : 0;
        spec.cdText = true;
        const QString top = disc(spec, sub);
        QVERIFY(runZip(top, zipArgs));
        const QString zip = top + QStringLiteral("/../disc.zip");
        if (zipArgs.contains(QStringLiteral("-fz")))
            QVERIFY(readFile(zip).contains("PK\x06\x06")); // the ZIP64 end record

        Loaded loaded;
        load(loaded, zip, options());
        QCOMPARE(int(loaded.opened.result.kind), int(ErrorKind::NoError));
        QCOMPARE(QString::fromStdString(loaded.opened.ddp->folderInArchive()),
                 sub.isEmpty() ? QString() : sub + QLatin1Char('/'));
        QCOMPARE(int(loaded.load.kind), int(ErrorKind::NoError));
        QVERIFY(loaded.model.hasCdText());
        QCOMPARE(int(loaded.model.imageLayout().streams.size()), streams);

        std::uint64_t lastDone = 0;
        std::uint64_t total = 0;
        LoadResult error;
        auto image = loaded.opened.ddp->openImage(
            loaded.model.imageLayout(),
            [&](std::uint64_t done, std::uint64_t all) {
                QVERIFY(done >= lastDone);
                lastDone = done;
                total = all;
            },
            nullptr, &error);
        QVERIFY2(image, error.message.c_str());
        QCOMPARE(readAll(*image), mkddp::expectedImageBytes(spec));
        // A read across the middle of the disc, as playback makes them.
        QByteArray middle(100000, '\0');
        const std::uint64_t at = image->length() / 2 - 50000;
        QCOMPARE(image->read(at, middle.data(), 100000), std::uint64_t(100000));
        QCOMPARE(middle, mkddp::expectedImageBytes(spec).mid(int(at), 100000));

        const QString unpackFolder = loaded.opened.ddp->unpackFolder();
        QCOMPARE(!unpackFolder.isEmpty(), unpacks);
        QCOMPARE(lastDone, total);
        for (const DiscImage::Segment& s : image->segments()) {
            if (s.kind == DiscImage::Segment::Kind::File)
                QVERIFY(s.path.startsWith(unpackFolder + QLatin1Char('/')));
        }
        // The unpacked copy goes with the disc; the open image keeps reading.
        loaded.opened.ddp.reset();
        if (unpacks)
            QVERIFY(!QFileInfo::exists(unpackFolder));
        QCOMPARE(readAll(*image), mkddp::expectedImageBytes(spec));
        QVERIFY(filesUnder(path(QStringLiteral("unpack"))).isEmpty());
    }

    // Two threads reading one stored entry at once (playback and export):
    // libzip's handle is behind one lock, and each read seeks first.
    void storedEntriesReadFromTwoThreadsAtOnce()
    {
        const mkddp::DiscSpec spec = mkddp::simpleDisc(2, 4);
        const QString top = disc(spec);
        QVERIFY(zipFolder(top, QStringLiteral("../two.zip"), true));
        Loaded loaded;
        load(loaded, top + QStringLiteral("/../two.zip"), options());
        QCOMPARE(int(loaded.load.kind), int(ErrorKind::NoError));
        auto image = loaded.opened.ddp->openImage(loaded.model.imageLayout());
        QVERIFY(image);
        const QByteArray expected = mkddp::expectedImageBytes(spec);
        std::atomic<int> mismatches{0};
        auto reader = [&](std::uint64_t stride) {
            QByteArray chunk(8820, '\0');
            for (std::uint64_t at = 0; at + 8820 <= image->length(); at += stride) {
                if (image->read(at, chunk.data(), 8820) != 8820 ||
                    chunk != expected.mid(int(at), 8820))
                    ++mismatches;
            }
        };
        std::thread a(reader, 8820);
        std::thread b(reader, 13 * 4 * 1001);
        a.join();
        b.join();
        QCOMPARE(mismatches.load(), 0);
    }

    // tivora-ddp exports from an archive exactly what it exports from the
    // folder, and says where the DDP lies.
    void commandLineExportsTheSameFiles()
    {
        const QString top = disc(mkddp::simpleDisc(3, 2), QStringLiteral("Master"));
        QVERIFY(zipFolder(top, QStringLiteral("../cli.zip"), false));
        const QString zip = QFileInfo(top + QStringLiteral("/../cli.zip")).absoluteFilePath();
        QByteArray json;
        QCOMPARE(runTool({QStringLiteral("info"), QStringLiteral("--json"), zip}, &json), 0);
        const QJsonObject info = QJsonDocument::fromJson(json).object();
        QCOMPARE(info.value(QStringLiteral("archive")).toString(), zip);
        QCOMPARE(info.value(QStringLiteral("archiveFolder")).toString(), QStringLiteral("Master/"));

        const QString fromFolder = path(QStringLiteral("export-folder"));
        const QString fromZip = path(QStringLiteral("export-zip"));
        QCOMPARE(runTool({QStringLiteral("export"), top + QStringLiteral("/Master"), fromFolder}),
                 0);
        QCOMPARE(runTool({QStringLiteral("export"), zip, fromZip}), 0);
        const QStringList files = filesUnder(fromFolder);
        QCOMPARE(files.size(), 3);
        QCOMPARE(filesUnder(fromZip), files);
        for (const QString& file : files)
            QVERIFY(readFile(QDir(fromZip).filePath(file)) ==
                    readFile(QDir(fromFolder).filePath(file)));
    }

    // Archives that must not open: each is the archive's own error kind with
    // a reason, and nothing is written anywhere, least of all outside.
    void refusesBadArchives_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("reason");
        const char* const rows[][3] = {
            {"name leaving the archive", "dotdot", "leads out of the archive"},
            {"absolute name", "absolute", "leads out of the archive"},
            {"link", "link", "is a link"},
            {"encrypted", "encrypted", "encrypted"},
            {"truncated", "truncated", "disc.zip"},
            {"cut before its directory's end", "cut", "disc.zip"},
            {"entry claiming more than it holds", "claims", "disc.zip"},
            {"not a zip at all", "garbage", "disc.zip"}};
        for (const auto& row : rows)
            QTest::newRow(row[0]) << QString::fromLatin1(row[1]) << QString::fromLatin1(row[2]);
    }
    void refusesBadArchives()
    {
        QFETCH(QString, fault);
        QFETCH(QString, reason);
        const QString top = disc(mkddp::simpleDisc(2, 1));
        const QString zip = QFileInfo(top + QStringLiteral("/../disc.zip")).absoluteFilePath();
        QFile::remove(zip);
        const QStringList plain{QStringLiteral("-0"), QStringLiteral("-r"),
                                QStringLiteral("../disc.zip"), QStringLiteral(".")};
        if (fault == QLatin1String("dotdot"))
            QVERIFY(libzipArchive(zip, top, "../evil.txt", "x"));
        else if (fault == QLatin1String("absolute"))
            QVERIFY(libzipArchive(zip, top, "/tmp/evil.txt", "x"));
        else if (fault == QLatin1String("link"))
            QVERIFY(libzipArchive(zip, top, "IMAGE2.DAT", "/etc/passwd", S_IFLNK));
        else if (fault == QLatin1String("encrypted"))
            QVERIFY(runZip(top, QStringList{QStringLiteral("-e"), QStringLiteral("-P"),
                                            QStringLiteral("secret")} +
                                    plain));
        else
            QVERIFY(runZip(top, plain));
        if (fault == QLatin1String("truncated"))
            QVERIFY(writeFile(zip, readFile(zip).left(readFile(zip).size() / 2)));
        if (fault == QLatin1String("cut"))
            QVERIFY(writeFile(zip, readFile(zip).chopped(10)));
        if (fault == QLatin1String("claims"))
            QVERIFY(patchClaims(zip, "IMAGE.DAT", 100000, 100000));
        if (fault == QLatin1String("garbage"))
            QVERIFY(writeFile(zip, QByteArray(5000, 'P')));

        const QStringList before = filesUnder(m_dir.path());
        Loaded loaded;
        load(loaded, zip, options());
        QCOMPARE(int(loaded.opened.result.kind), int(ErrorKind::ArchiveInvalid));
        QVERIFY(!loaded.opened.ddp);
        QVERIFY2(QString::fromStdString(loaded.opened.result.message).contains(reason),
                 loaded.opened.result.message.c_str());
        QCOMPARE(filesUnder(m_dir.path()), before);
        QVERIFY(!QFileInfo::exists(QStringLiteral("/tmp/evil.txt")));

        // The command line says the same, with its failure status.
        QByteArray err;
        QCOMPARE(
            runTool({QStringLiteral("export"), zip, path(QStringLiteral("never"))}, nullptr, &err),
            1);
        QVERIFY(err.contains("ZIP Archive Invalid"));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("never"))));
    }

    // A zip bomb: compressed audio that would unpack to more than any disc
    // holds is refused before a byte is written, by what it claims; one
    // entry alone claiming more is refused when the archive opens. The
    // limits are lowered here so that the test stays small.
    void refusesAudioThatUnpacksToMoreThanADisc()
    {
        const mkddp::DiscSpec spec = mkddp::simpleDisc(2, 3);
        const QString top = disc(spec);
        QVERIFY(zipFolder(top, QStringLiteral("../bomb.zip"), false, 9));
        const QString zip = top + QStringLiteral("/../bomb.zip");
        const std::uint64_t imageBytes = std::uint64_t(mkddp::imageSize(spec));

        ArchiveDdp::Options small = options();
        small.maxUnpackedImage = imageBytes - 1;
        Loaded loaded;
        load(loaded, zip, small);
        QCOMPARE(int(loaded.load.kind), int(ErrorKind::NoError));
        LoadResult error;
        QVERIFY(!loaded.opened.ddp->openImage(loaded.model.imageLayout(), {}, nullptr, &error));
        QCOMPARE(int(error.kind), int(ErrorKind::ArchiveInvalid));
        QVERIFY(filesUnder(path(QStringLiteral("unpack"))).isEmpty());

        small = options();
        small.maxUnpackedEntry = imageBytes - 1;
        Loaded entry;
        load(entry, zip, small);
        QCOMPARE(int(entry.opened.result.kind), int(ErrorKind::ArchiveInvalid));
        QVERIFY(entry.opened.result.message.find("IMAGE.DAT") != std::string::npos);
        // The real limits leave room for the longest disc.
        QVERIFY(kMaxUnpackedImageBytes >= 870'000'000ull);
    }

    // A compressed entry that claims fewer bytes than it unpacks to: the
    // unpacking stops at the claim and leaves nothing.
    void refusesAnEntryThatUnpacksToMoreThanItClaims()
    {
        const QString top = disc(mkddp::simpleDisc(2, 2));
        QVERIFY(zipFolder(top, QStringLiteral("../m.zip"), false));
        const QString zip = top + QStringLiteral("/../m.zip");
        QVERIFY(patchClaims(zip, "IMAGE.DAT", 0, -100000));
        Loaded loaded;
        load(loaded, zip, options());
        QCOMPARE(int(loaded.load.kind), int(ErrorKind::NoError));
        LoadResult error;
        QVERIFY(!loaded.opened.ddp->openImage(loaded.model.imageLayout(), {}, nullptr, &error));
        QCOMPARE(int(error.kind), int(ErrorKind::ArchiveInvalid));
        QVERIFY2(QString::fromStdString(error.message).contains(QStringLiteral("more than")),
                 error.message.c_str());
        QVERIFY(filesUnder(loaded.opened.ddp->unpackFolder()).isEmpty());
    }

    // Unpacking stops when cancelled and leaves no part of the stream.
    void cancellingStopsTheUnpacking()
    {
        const QString top = disc(mkddp::simpleDisc(2, 20));
        QVERIFY(zipFolder(top, QStringLiteral("../c.zip"), false, 1));
        Loaded loaded;
        load(loaded, top + QStringLiteral("/../c.zip"), options());
        QCOMPARE(int(loaded.load.kind), int(ErrorKind::NoError));
        std::atomic<bool> cancel{false};
        int calls = 0;
        LoadResult error;
        QVERIFY(!loaded.opened.ddp->openImage(
            loaded.model.imageLayout(),
            [&](std::uint64_t, std::uint64_t) {
                if (++calls == 2)
                    cancel = true;
            },
            &cancel, &error));
        QCOMPARE(calls, 2);
        QCOMPARE(QString::fromStdString(error.message), QStringLiteral("cancelled"));
        QVERIFY(filesUnder(loaded.opened.ddp->unpackFolder()).isEmpty());
        // Asked again, it unpacks in full.
        cancel = false;
        QVERIFY(loaded.opened.ddp->openImage(loaded.model.imageLayout(), {}, &cancel));
    }

    // A crash leaves its private folder behind; the next start removes it,
    // and never the folder of a process that still runs.
    void removesTheFoldersOfProcessesThatAreGone()
    {
        const QString base = path(QStringLiteral("stale-base"));
        QString error;
        std::unique_ptr<UnpackFolder> live = UnpackFolder::create(base, &error);
        QVERIFY2(live, qPrintable(error));
        QVERIFY(writeFile(QDir(live->path()).filePath(QStringLiteral("stream-0.pcm")), "live"));

        // A process that has ended, and a folder it left with its lock.
        QProcess gone;
        gone.start(QStringLiteral("sleep"), {QStringLiteral("0.1")});
        QVERIFY(gone.waitForStarted(10000));
        const qint64 deadPid = gone.processId();
        QVERIFY(gone.waitForFinished(10000));
        const QString deadName = QStringLiteral("%1-abcdefgh").arg(deadPid);
        const QString dead = QDir(base).filePath(deadName);
        QVERIFY(QDir(base).mkpath(deadName + QStringLiteral("/sub")));
        QVERIFY(writeFile(dead + QStringLiteral("/stream-0.pcm"), "dead"));
        QByteArray lock = readFile(live->path() + QStringLiteral(".lock"));
        lock = QByteArray::number(deadPid) + lock.mid(lock.indexOf('\n'));
        QVERIFY(writeFile(dead + QStringLiteral(".lock"), lock));
        // Somebody else's folder in the base is never touched.
        QVERIFY(QDir(base).mkdir(QStringLiteral("mine")));

        // Opening any archive with this base cleans up.
        const QString top = disc(mkddp::simpleDisc(1, 1));
        QVERIFY(zipFolder(top, QStringLiteral("../s.zip"), true));
        ArchiveDdp::Options o;
        o.unpackBase = base;
        QCOMPARE(int(ArchiveDdp::open(top + QStringLiteral("/../s.zip"), o).result.kind),
                 int(ErrorKind::NoError));
        QVERIFY(!QFileInfo::exists(dead));
        QVERIFY(!QFileInfo::exists(dead + QStringLiteral(".lock")));
        QVERIFY(QFileInfo::exists(QDir(live->path()).filePath(QStringLiteral("stream-0.pcm"))));
        QVERIFY(QFileInfo::exists(QDir(base).filePath(QStringLiteral("mine"))));
        const QString livePath = live->path();
        live.reset();
        QVERIFY(!QFileInfo::exists(livePath));
        QVERIFY(!QFileInfo::exists(livePath + QStringLiteral(".lock")));
    }

    // The archive's files are found as a folder's are, and nothing else is.
    void findsFilesAsInAFolder()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(1, 1);
        spec.lowerCaseOnDisk = true;
        const QString top = disc(spec, QStringLiteral("a/b"));
        // A decoy at the root with DDPID but no DDPMS: the first folder with
        // both is the DDP.
        QVERIFY(writeFile(top + QStringLiteral("/DDPID"), "DDP 2.00"));
        QVERIFY(zipFolder(top, QStringLiteral("../f.zip"), true));
        Loaded loaded;
        load(loaded, top + QStringLiteral("/../f.zip"), options());
        QCOMPARE(int(loaded.load.kind), int(ErrorKind::NoError));
        const ArchiveDdp& ddp = *loaded.opened.ddp;
        QCOMPARE(QString::fromStdString(ddp.folderInArchive()), QStringLiteral("a/b/"));
        QVERIFY(ddp.exists("IMAGE.DAT"));
        QVERIFY(ddp.exists(std::string("IMAGE.DAT\0junk", 14)));
        QVERIFY(!ddp.exists("../b/image.dat"));
        QVERIFY(!ddp.exists("b/image.dat"));
        QVERIFY(!ddp.exists(""));
        QCOMPARE(ddp.readFile("ddpms", 10).status, FileContent::TooLarge);

        // An image entry that says it is a pipe is no file at all, as in a
        // folder: the disc shows, with its image missing.
        const QString noImage = disc(mkddp::simpleDisc(1, 1));
        QVERIFY(QFile::remove(noImage + QStringLiteral("/IMAGE.DAT")));
        const QString fifoZip = path(QStringLiteral("fifo.zip"));
        QVERIFY(libzipArchive(fifoZip, noImage, "IMAGE.DAT", QByteArray(2352, '\0'), S_IFIFO));
        Loaded fifo;
        load(fifo, fifoZip, options());
        QCOMPARE(int(fifo.load.kind), int(ErrorKind::ImageMissing));
        QVERIFY(!fifo.opened.ddp->exists("IMAGE.DAT"));

        // No DDP in an archive is what a folder without one gets.
        QVERIFY(writeFile(path(QStringLiteral("plain.txt")), "hello"));
        QVERIFY(runZip(m_dir.path(), {QStringLiteral("none.zip"), QStringLiteral("plain.txt")}));
        QCOMPARE(int(ArchiveDdp::open(path(QStringLiteral("none.zip")), options()).result.kind),
                 int(ErrorKind::DdpidMissing));
    }
};

QTEST_GUILESS_MAIN(TestArchiveDdp)
#include "test_archive_ddp.moc"
