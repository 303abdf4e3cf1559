// The disc's audio as one run of bytes: segments of files and silence read
// as one, from many threads at once; the map's audio streams joined in the
// order of their start sectors with silence in the gaps, data sessions left
// out and named; and the whole disc exported byte for byte.
#include "DdpTestRun.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/DiscImage.h"
#include "ddp/ImageLayout.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStandardItemModel>
#include <QtTest>

#include <atomic>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray patternBytes(int seed, int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 31 + seed * 101 + (i >> 8)) & 0xFF);
    return bytes;
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readAll(const DiscImage& image)
{
    QByteArray bytes(int(image.length()), '\0');
    const std::uint64_t got = image.read(0, bytes.data(), image.length());
    bytes.truncate(int(got));
    return bytes;
}

// The DDPMS with its audio packets in the opposite order.
bool reverseAudioPackets(const QString& ddpms)
{
    QFile file(ddpms);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    file.close();
    QList<QByteArray> audio;
    QByteArray rest;
    for (int offset = 0; offset < bytes.size(); offset += 128) {
        const QByteArray packet = bytes.mid(offset, 128);
        if (packet.mid(4, 2) == "D0" && packet.mid(38, 2) == "DA")
            audio.prepend(packet);
        else
            rest += packet;
    }
    return writeFile(ddpms, audio.join() + rest);
}

// Writes `digits` into field [offset, offset + 8) of the `n`th packet.
bool patchPacket(const QString& ddpms, int n, int offset, const QByteArray& digits)
{
    QFile file(ddpms);
    if (!file.open(QIODevice::ReadWrite) || !file.seek(n * 128 + offset))
        return false;
    return file.write(digits) == digits.size();
}

} // namespace

class TestDdpDiscImage : public QObject
{
    Q_OBJECT

private:
    ddptest::Discs m_discs;
    QString path(const QString& name) const { return m_discs.path(name); }
    QString disc(const mkddp::DiscSpec& spec) { return m_discs.write(spec); }

    static mkddp::DiscSpec splitDisc(int streams, int gapFrames)
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(4, 3);
        spec.imageStreams = streams;
        spec.streamGapFrames = gapFrames;
        return spec;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_discs.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    // Files (with bytes before the stream's start), silence and empty
    // segments read as one, whatever the range.
    void segmentsReadAsOne()
    {
        const QByteArray a = patternBytes(1, 10007);
        const QByteArray b = patternBytes(2, 5003);
        QVERIFY(writeFile(path(QStringLiteral("a.bin")), QByteArray(13, 'x') + a));
        QVERIFY(writeFile(path(QStringLiteral("b.bin")), b + QByteArray(9, 'y')));
        using Kind = DiscImage::Segment::Kind;
        const std::vector<DiscImage::Segment> segments = {
            {Kind::File, path(QStringLiteral("a.bin")), 13, std::uint64_t(a.size())},
            {Kind::Silence, QString(), 0, 0},
            {Kind::Silence, QString(), 0, 2352},
            {Kind::File, path(QStringLiteral("b.bin")), 0, std::uint64_t(b.size())},
        };
        const std::shared_ptr<const DiscImage> image = DiscImage::open(segments);
        QVERIFY(image);
        const QByteArray expected = a + QByteArray(2352, '\0') + b;
        QCOMPARE(image->length(), std::uint64_t(expected.size()));
        QCOMPARE(readAll(*image), expected);

        QRandomGenerator random(7);
        for (int i = 0; i < 2000; ++i) {
            const int offset = int(random.bounded(expected.size() + 10));
            const int size = int(random.bounded(6000));
            QByteArray got(size, '\x55');
            const std::uint64_t n =
                image->read(std::uint64_t(offset), got.data(), std::uint64_t(size));
            const QByteArray want = expected.mid(offset, size);
            QCOMPARE(int(n), want.size()); // clipped to the length, never more
            QCOMPARE(got.left(int(n)), want);
        }
        QCOMPARE(image->segmentAt(0), std::size_t(0));
        QCOMPARE(image->segmentAt(std::uint64_t(a.size())), std::size_t(2)); // not the empty one
        QCOMPARE(image->segmentAt(image->length()), segments.size());
    }

    // Positional reads: threads that read different places never get each
    // other's bytes (a shared file position would mix them up).
    void threadsReadAtOnce()
    {
        const QByteArray a = patternBytes(3, 1 << 20);
        QVERIFY(writeFile(path(QStringLiteral("big.bin")), a));
        const std::shared_ptr<const DiscImage> image =
            DiscImage::openFile(path(QStringLiteral("big.bin")));
        QVERIFY(image);
        std::atomic<int> wrong{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                QRandomGenerator random(quint32(t + 1));
                QByteArray got(4096, '\0');
                for (int i = 0; i < 3000; ++i) {
                    const int offset = int(random.bounded(a.size() - 4096));
                    if (image->read(std::uint64_t(offset), got.data(), 4096) != 4096 ||
                        got != a.mid(offset, 4096))
                        ++wrong;
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(wrong.load(), 0);
    }

    // A file cut while open reads short, and says where; a pipe never opens.
    void shortFilesAndPipes()
    {
        const QByteArray a = patternBytes(4, 8000);
        const QString file = path(QStringLiteral("cut.bin"));
        QVERIFY(writeFile(file, a));
        const std::shared_ptr<const DiscImage> image = DiscImage::openFile(file);
        QVERIFY(image);
        QCOMPARE(::truncate(QFile::encodeName(file).constData(), 5000), 0);
        QByteArray got(8000, '\0');
        QCOMPARE(image->read(1000, got.data(), 7000), std::uint64_t(4000));
        QCOMPARE(got.left(4000), a.mid(1000, 4000));

        const QString pipe = path(QStringLiteral("pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QString error;
        using Kind = DiscImage::Segment::Kind;
        QVERIFY(!DiscImage::open({{Kind::File, pipe, 0, 100}}, &error));
        QVERIFY2(error.contains(pipe), qPrintable(error));
    }

    // Split images load, read, report and export as the disc they stand for.
    void streamsJoinInDiscOrder_data()
    {
        QTest::addColumn<int>("streams");
        QTest::addColumn<int>("gapFrames");
        QTest::addColumn<int>("startSector");
        QTest::addColumn<bool>("dataStream");
        QTest::addColumn<bool>("reversed");
        QTest::newRow("one file per track") << 4 << 0 << 0 << false << false;
        QTest::newRow("gaps of silence") << 3 << 10 << 0 << false << false;
        QTest::newRow("map out of order") << 3 << 5 << 150 << false << true;
        QTest::newRow("one stream at sector 150") << 1 << 0 << 150 << false << false;
        QTest::newRow("enhanced CD") << 2 << 0 << 0 << true << false;
    }
    void streamsJoinInDiscOrder()
    {
        QFETCH(int, streams);
        QFETCH(int, gapFrames);
        QFETCH(int, startSector);
        QFETCH(bool, dataStream);
        QFETCH(bool, reversed);
        mkddp::DiscSpec spec = splitDisc(streams, gapFrames);
        spec.startSector = startSector;
        spec.dataStream = dataStream;
        const QString folder = disc(spec);
        if (reversed)
            QVERIFY(reverseAudioPackets(QDir(folder).filePath(QStringLiteral("DDPMS"))));

        QStandardItemModel table;
        DDPModel model;
        QCOMPARE(loadDdp(folder, &table, model).kind, ErrorKind::NoError);
        QCOMPARE(int(model.imageLayout().streams.size()), streams);
        QCOMPARE(model.imageShortBy(), std::uint64_t(0));
        const std::shared_ptr<const DiscImage> image = openDiscImage(folder, model.imageLayout());
        QVERIFY(image);
        QCOMPARE(readAll(*image), mkddp::expectedImageBytes(spec));

        const QJsonObject json = ddptest::info(folder).json;
        QCOMPARE(json.value(QStringLiteral("streams")).toArray().size(), streams);
        const QJsonArray skipped = json.value(QStringLiteral("skippedStreams")).toArray();
        QCOMPARE(skipped.size(), dataStream ? 1 : 0);
        if (dataStream) {
            QCOMPARE(skipped.first().toObject().value(QStringLiteral("name")).toString(),
                     QStringLiteral("DATA.DAT"));
            QCOMPARE(skipped.first().toObject().value(QStringLiteral("mode")).toString(),
                     QStringLiteral("M1"));
        }

        // Exported, every WAV holds the bytes of its track, silence included.
        const QString out = path(QStringLiteral("out%1").arg(m_discs.count()));
        QCOMPARE(ddptest::tivoraDdp({QStringLiteral("export"), folder, out}).exitCode, 0);
        const QByteArray whole = mkddp::expectedImageBytes(spec);
        for (int k = 0; k < spec.tracks.size(); ++k) {
            const int number = spec.firstTrackNumber + k;
            const qint64 start = mkddp::indexPosition(spec, number, 1);
            const qint64 end = k + 1 < spec.tracks.size()
                                   ? mkddp::indexPosition(spec, number + 1, 1)
                                   : mkddp::imageSize(spec);
            QFile wav(QDir(out).filePath(QStringLiteral("Track %1.wav").arg(number)));
            QVERIFY(wav.open(QIODevice::ReadOnly));
            QCOMPARE(wav.readAll().mid(44), whole.mid(int(start), int(end - start)));
        }
    }

    // Maps that cannot be laid out are refused with words that name the
    // stream; a missing later stream keeps the disc in view.
    void brokenStreamMaps()
    {
        const mkddp::DiscSpec spec = splitDisc(3, 0);
        QStandardItemModel table;

        // The second stream claims to start inside the first.
        const QString overlap = disc(spec);
        QVERIFY(patchPacket(QDir(overlap).filePath(QStringLiteral("DDPMS")), 1, 22, "00000010"));
        DDPModel a;
        LoadResult result = loadDdp(overlap, &table, a);
        QCOMPARE(result.kind, ErrorKind::DdpmsInvalid);
        QVERIFY(QString::fromStdString(result.message).contains(QStringLiteral("overlap")));

        const QString garbled = disc(spec);
        QVERIFY(patchPacket(QDir(garbled).filePath(QStringLiteral("DDPMS")), 2, 22, "00x00000"));
        DDPModel b;
        result = loadDdp(garbled, &table, b);
        QCOMPARE(result.kind, ErrorKind::DdpmsInvalid);
        QVERIFY(QString::fromStdString(result.message).contains(QStringLiteral("IMAGE3.DAT")));

        const QString missing = disc(spec);
        QVERIFY(QFile::remove(QDir(missing).filePath(QStringLiteral("IMAGE2.DAT"))));
        DDPModel c;
        result = loadDdp(missing, &table, c);
        QCOMPARE(result.kind, ErrorKind::ImageMissing);
        QVERIFY(QString::fromStdString(result.message).contains(QStringLiteral("IMAGE2.DAT")));
        QCOMPARE(table.rowCount(), 5); // four tracks and the total
    }
};

QTEST_GUILESS_MAIN(TestDdpDiscImage)
#include "test_ddp_disc_image.moc"
