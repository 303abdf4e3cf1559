// FLAC and MP3 exports of generated discs through `tivora-ddp export
// --format`: FLAC decodes to exactly the bytes the WAV export writes, both
// formats carry the disc's tags as other programs read them, and the rules
// of the WAV export (temporary name, links never followed, the image never
// written, the system's reason, a cancel leaving nothing) hold for both.
#include "GeneratedDiscs.h"

#include "ddp/DiscImage.h"
#include "ddp/TrackRange.h"
#include "export/EncodeWriter.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <atomic>

#include <taglib/audioproperties.h>
#include <taglib/fileref.h>
#include <taglib/tpropertymap.h>

using namespace exporttest;

namespace {

// The realistic disc (pauses, index 02, ISRCs, CD-Text, UPC/EAN) with a
// composer on track 3, the track the tag checks read.
mkddp::DiscSpec taggedDisc()
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.tracks[2].text.composer = QStringLiteral("Jürgen Okafor");
    return spec;
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

} // namespace

class TestExportEncoded : public QObject
{
    Q_OBJECT

private:
    GeneratedDiscs m_discs;

private slots:
    // flac decodes the FLAC, ffmpeg the MP3.
    void initTestCase() { QCOMPARE(m_discs.missing({"flac", "metaflac", "ffmpeg"}), QString()); }

    // Every track of the disc, encoded in parallel, decodes with the flac
    // tool to exactly the WAV the WAV export writes; the Vorbis comments say
    // what the disc says, as metaflac reads them.
    void flacIsBitExactAndTagged()
    {
        const mkddp::DiscSpec spec = taggedDisc();
        const QString disc = m_discs.write(QStringLiteral("flac"), spec);
        const QString out = m_discs.path(QStringLiteral("flac-out"));
        const ToolRun run = runTivoraDdp({QStringLiteral("export"), disc, out,
                                          QStringLiteral("--format"), QStringLiteral("flac")});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        QCOMPARE(filesIn(out).size(), spec.tracks.size());
        for (int number = 1; number <= spec.lastTrackNumber(); ++number) {
            const QString name =
                QStringLiteral("%1 - %2").arg(number).arg(spec.tracks[number - 1].text.title);
            const QString wav = m_discs.path(QStringLiteral("flac-%1.wav").arg(number));
            const ToolRun decode =
                runProgram(QStringLiteral("flac"),
                           {QStringLiteral("-s"), QStringLiteral("-d"), QStringLiteral("-o"), wav,
                            QDir(out).filePath(name + QStringLiteral(".flac"))});
            QVERIFY2(decode.exitCode == 0, decode.err.constData());
            QString why;
            QVERIFY2(isWavOf(wav, trackBytes(spec, number), &why), qPrintable(name + why));
        }

        const ToolRun tags = runProgram(QStringLiteral("metaflac"),
                                        {QStringLiteral("--export-tags-to=-"),
                                         QDir(out).filePath(QStringLiteral("3 - Interlude.flac"))});
        QCOMPARE(tags.exitCode, 0);
        const QStringList lines =
            QString::fromUtf8(tags.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(
            lines,
            (QStringList{QStringLiteral("TITLE=Interlude"),
                         QStringLiteral("ARTIST=The Harbour Quartet"),
                         QStringLiteral("ALBUM=Harbour Sessions"),
                         QStringLiteral("ALBUMARTIST=Mara Lindqvist"),
                         QStringLiteral("COMPOSER=Jürgen Okafor"), QStringLiteral("TRACKNUMBER=3"),
                         QStringLiteral("TRACKTOTAL=7"), QStringLiteral("ISRC=DEA7F2600003"),
                         QStringLiteral("BARCODE=4006381333931")}));
        // The track after the index 02 keeps its own ISRC.
        const ToolRun next =
            runProgram(QStringLiteral("metaflac"),
                       {QStringLiteral("--show-tag=ISRC"),
                        QDir(out).filePath(QStringLiteral("4 - Night Train.flac"))});
        QCOMPARE(next.out.trimmed(), QByteArray("ISRC=DEA7F2600004"));
    }

    // One track as MP3: as long as the track to within one MP3 frame (1152
    // samples) once decoded by ffmpeg, which reads the encoder delay and
    // padding from LAME's info frame; 320 kb/s; its ID3v2 tag as TagLib
    // reads it back. (TagLib's own length counts the delay and padding in.)
    void mp3LengthAndTags()
    {
        const mkddp::DiscSpec spec = taggedDisc();
        const QString disc = m_discs.write(QStringLiteral("mp3"), spec);
        const QString out = m_discs.path(QStringLiteral("mp3-out"));
        const ToolRun run =
            runTivoraDdp({QStringLiteral("export"), disc, out, QStringLiteral("--track"),
                          QStringLiteral("3"), QStringLiteral("--format"), QStringLiteral("mp3")});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        QCOMPARE(filesIn(out), QStringList{QStringLiteral("3 - Interlude.mp3")});

        const QByteArray file = QFile::encodeName(QDir(out).filePath(filesIn(out).first()));
        TagLib::FileRef ref(file.constData(), true, TagLib::AudioProperties::Accurate);
        QVERIFY(!ref.isNull() && ref.audioProperties());
        QCOMPARE(ref.audioProperties()->bitrate(), 320);
        const ToolRun decode =
            runProgram(QStringLiteral("ffmpeg"),
                       {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                        QFile::decodeName(file), QStringLiteral("-f"), QStringLiteral("s16le"),
                        QStringLiteral("-")});
        QVERIFY2(decode.exitCode == 0, decode.err.constData());
        const qint64 frames = decode.out.size() / 4;
        const qint64 trackFrames = trackBytes(spec, 3).size() / 4;
        QVERIFY2(std::abs(frames - trackFrames) <= 1152,
                 qPrintable(QStringLiteral("%1 frames decoded for a track of %2")
                                .arg(frames)
                                .arg(trackFrames)));

        const TagLib::PropertyMap tags = ref.file()->properties();
        auto tag = [&tags](const char* key) {
            return tags.contains(key) ? QString::fromUtf8(tags[key].toString().toCString(true))
                                      : QString();
        };
        QCOMPARE(tag("TITLE"), QStringLiteral("Interlude"));
        QCOMPARE(tag("ARTIST"), QStringLiteral("The Harbour Quartet"));
        QCOMPARE(tag("ALBUM"), QStringLiteral("Harbour Sessions"));
        QCOMPARE(tag("ALBUMARTIST"), QStringLiteral("Mara Lindqvist"));
        QCOMPARE(tag("COMPOSER"), QStringLiteral("Jürgen Okafor"));
        QCOMPARE(tag("TRACKNUMBER"), QStringLiteral("3/7"));
        QCOMPARE(tag("ISRC"), QStringLiteral("DEA7F2600003"));
        QCOMPARE(tag("BARCODE"), QStringLiteral("4006381333931"));
    }

    // A link planted at the file's name is replaced, never written through;
    // a file size limit fails with the system's reason and leaves no file.
    void writesFollowTheExportRules_data()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("flac") << QStringLiteral("flac");
        QTest::newRow("mp3") << QStringLiteral("mp3");
    }
    void writesFollowTheExportRules()
    {
        QFETCH(QString, format);
        const QString disc =
            m_discs.write(QStringLiteral("rules-") + format, mkddp::simpleDisc(2, 6));
        const QString out = m_discs.path(QStringLiteral("rules-out-") + format);
        QVERIFY(QDir().mkpath(out));
        const QString victim = m_discs.path(QStringLiteral("victim-") + format);
        QVERIFY(writeFile(victim, "not yours\n"));
        const QString target = out + QStringLiteral("/Track 1.") + format;
        QVERIFY(QFile::link(victim, target));
        ToolRun run =
            runTivoraDdp({QStringLiteral("export"), disc, out, QStringLiteral("--format"), format});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        QCOMPARE(fileBytes(victim), QByteArray("not yours\n"));
        QVERIFY(QFileInfo(target).isFile() && !QFileInfo(target).isSymLink());
        QVERIFY(fileBytes(target).size() > 1000);
        QCOMPARE(filesIn(out).size(), 2); // no temporary file left

        const QString limited = m_discs.path(QStringLiteral("limit-out-") + format);
        run = runTivoraDdpLimited(
            20, {QStringLiteral("export"), disc, limited, QStringLiteral("--format"), format});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("File too large"), run.err.constData());
        QVERIFY2(filesIn(limited).isEmpty(), qPrintable(filesIn(limited).join(QLatin1Char(' '))));
    }

    // An export asked to write over the disc's own image refuses before it
    // opens anything; the image keeps every byte.
    void theImageIsNeverWritten()
    {
        const QString image = m_discs.path(QStringLiteral("own-image.dat"));
        QVERIFY(writePatternImage(image, at(0, 8, 0)));
        const QByteArray before = fileBytes(image);
        const std::shared_ptr<DDPModel> model = makeModel(testbytes::simpleEntries(2, {3, 3}));
        EncodeWriter worker(ExportFormat::Flac, image, image, model,
                            exportedTrackEntries(*model)[0]);
        QSignalSpy failed(&worker, &FileWriter::failed);
        worker.process();
        QCOMPARE(failed.size(), 1);
        QVERIFY2(failed.at(0).at(0).toString().contains(QLatin1String("audio image")),
                 qPrintable(failed.at(0).at(0).toString()));
        QCOMPARE(fileBytes(image), before);
    }

    // A cancel (a new load, the window closing) stops every encoding thread
    // at its next block and leaves no file, finished or temporary, behind
    // for the tracks it cut off.
    void cancelStopsEveryTrack()
    {
        const QString image = m_discs.path(QStringLiteral("cancel.dat"));
        std::vector<int> seconds(6, 40);
        QVERIFY(writePatternImage(image, at(4, 2, 0)));
        const std::shared_ptr<DDPModel> model = makeModel(testbytes::simpleEntries(2, seconds));
        const QString out = m_discs.path(QStringLiteral("cancel-out"));
        QVERIFY(QDir().mkpath(out));
        auto* worker = new EncodeWriter(ExportFormat::Mp3, out, image, model);
        worker->setImage(DiscImage::openFile(image));
        QThread thread;
        worker->moveToThread(&thread);
        connect(&thread, &QThread::started, worker, &FileWriter::process);
        connect(worker, &FileWriter::failed, &thread, &QThread::quit, Qt::DirectConnection);
        connect(worker, &FileWriter::finished, &thread, &QThread::quit, Qt::DirectConnection);
        // Counted on the worker's thread, read here: an atomic, not a spy.
        std::atomic<int> started{0};
        connect(
            worker, &FileWriter::fileStarted, worker, [&started] { ++started; },
            Qt::DirectConnection);
        QStringList failures; // queued to this thread
        connect(worker, &FileWriter::failed, this,
                [&failures](const QString& message) { failures << message; });
        thread.start();
        QTRY_VERIFY(started > 0);
        thread.requestInterruption();
        QVERIFY(thread.wait(20000));
        QTRY_COMPARE(failures.size(), 1);
        QVERIFY(failures.first().contains(QLatin1String("cancelled")));
        for (const QString& name : filesIn(out))
            QVERIFY2(!name.endsWith(QLatin1String(".part")), qPrintable(name));
        QVERIFY(filesIn(out).size() < 6);
        delete worker;
    }
};

QTEST_GUILESS_MAIN(TestExportEncoded)
#include "test_export_encoded.moc"
