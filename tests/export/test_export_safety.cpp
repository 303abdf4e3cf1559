// The export against its own output folder and against a short image: links
// planted in the folder are never written through, two exports into one
// folder leave every file whole, a failure says the system's reason, and an
// image shorter than its PQ never becomes WAVs of silence behind a success.
#include "ExportTestSupport.h"
#include "GeneratedDiscs.h"

#include "ddp/DiscImage.h"
#include "export/ImageRange.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using namespace exporttest;

namespace {

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Every track of the generated disc in `out`, exactly; nothing else there.
bool allTracksWhole(const mkddp::DiscSpec& spec, const QString& out, QString* why)
{
    const QStringList files = QDir(out).entryList(QDir::Files | QDir::System | QDir::Hidden);
    if (files.size() != spec.tracks.size()) {
        *why = files.join(QStringLiteral(", "));
        return false;
    }
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const int number = spec.firstTrackNumber + k;
        const qint64 start = mkddp::indexPosition(spec, number, 1);
        const qint64 end = k + 1 < spec.tracks.size() ? mkddp::indexPosition(spec, number + 1, 1)
                                                      : mkddp::imageSize(spec);
        const QString path = QDir(out).filePath(QStringLiteral("Track %1.wav").arg(number));
        if (!isWavOf(path, mkddp::TestPattern(spec).bytes(start, end - start), why))
            return false;
    }
    return true;
}

} // namespace

class TestExportSafety : public QObject
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
        for (const QString& victim : {QStringLiteral("victim1"), QStringLiteral("victim2")}) {
            QFile file(m_discs.path(victim));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(victimText);
        }
        QVERIFY(QFile::link(m_discs.path(QStringLiteral("victim1")),
                            out + QStringLiteral("/Track 1.wav")));
        QVERIFY(QFile::link(m_discs.path(QStringLiteral("victim2")),
                            out + QStringLiteral("/Track 1.wav.part")));
        // A link to where nothing is yet would be created through.
        QVERIFY(QFile::link(m_discs.path(QStringLiteral("victim3")),
                            out + QStringLiteral("/Track 1.wav.tmp")));

        const ToolRun run = runTivoraDdp({QStringLiteral("export"), disc, out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(fileBytes(m_discs.path(QStringLiteral("victim1"))), victimText);
        QCOMPARE(fileBytes(m_discs.path(QStringLiteral("victim2"))), victimText);
        QVERIFY(!QFile::exists(m_discs.path(QStringLiteral("victim3"))));
        const QFileInfo wav(out + QStringLiteral("/Track 1.wav"));
        QVERIFY(wav.isFile() && !wav.isSymLink());
        QString why;
        QVERIFY2(isWavOf(wav.filePath(),
                         mkddp::TestPattern(spec).bytes(mkddp::indexPosition(spec, 1, 1),
                                                        mkddp::imageSize(spec) -
                                                            mkddp::indexPosition(spec, 1, 1)),
                         &why),
                 qPrintable(why));
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
            QVERIFY2(allTracksWhole(spec, out, &why), qPrintable(why));
        }
    }

    // A write that fails says why, in the system's words.
    void failuresCarryTheSystemsReason()
    {
        const QString disc = m_discs.write(QStringLiteral("limit"), mkddp::simpleDisc(1, 10));
        const QString out = m_discs.path(QStringLiteral("limit-out"));
        QProcess process;
        // A file size limit of 200 KiB; the signal it raises is ignored, so
        // that the write fails with EFBIG instead of killing the process.
        process.start(QStringLiteral("/bin/sh"),
                      {QStringLiteral("-c"),
                       QStringLiteral("ulimit -f 200; trap '' XFSZ; exec \"$0\" export \"$1\" "
                                      "\"$2\""),
                       tivoraDdpPath(), disc, out});
        const ToolRun run = finishRun(process);
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
        const ToolRun run = runTivoraDdp({QStringLiteral("export"), disc, out});
        QCOMPARE(run.exitCode, written == 3 ? 0 : 1);
        if (written < 3)
            QVERIFY2(run.err.contains(QStringLiteral("Track %1.wav").arg(written + 1).toUtf8()),
                     run.err.constData());
        const QStringList files = QDir(out).entryList(QDir::Files | QDir::Hidden | QDir::System);
        QCOMPARE(files.size(), written);
        for (int k = 0; k < written; ++k) {
            const qint64 start = mkddp::indexPosition(spec, k + 1, 1);
            const qint64 end =
                k < 2 ? mkddp::indexPosition(spec, k + 2, 1) : mkddp::imageSize(spec);
            QString why;
            QVERIFY2(isWavOf(QDir(out).filePath(QStringLiteral("Track %1.wav").arg(k + 1)),
                             mkddp::TestPattern(spec).bytes(start, end - start), &why),
                     qPrintable(why));
        }
    }

    // An image cut while it is read is a failed read, mapped or buffered,
    // never a range of zeros.
    void imageCutDuringTheRead_data()
    {
        QTest::addColumn<bool>("mapped");
        QTest::newRow("mapped") << true;
        QTest::newRow("buffered") << false;
    }
    void imageCutDuringTheRead()
    {
        QFETCH(bool, mapped);
        const QString imagePath = m_discs.path(QStringLiteral("cut%1.dat").arg(mapped));
        const qint64 size = 4 * 1024 * 1024;
        QVERIFY(writePatternImage(imagePath, size));
        const std::shared_ptr<const DiscImage> image = DiscImage::openFile(imagePath);
        QVERIFY(image);
        ImageRange range;
        range.setMappingAllowed(mapped);
        QVERIFY(range.reset(*image, 0, size));
        QVERIFY(range.load(0, 1024 * 1024));
        QCOMPARE(::truncate(QFile::encodeName(imagePath).constData(), 2 * 1024 * 1024), 0);
        QVERIFY(!range.load(2 * 1024 * 1024, 2 * 1024 * 1024));
        range.release();
    }
};

QTEST_GUILESS_MAIN(TestExportSafety)
#include "test_export_safety.moc"
