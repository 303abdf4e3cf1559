// A first pause that holds audio (a hidden track before track 1): found by
// reading the pause through the disc image, named in the first row, and the
// same words in `tivora-ddp info`; a silent pause, a short (hidden) pause and
// the audio just past the pause leave the row as it was.
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/DiscImage.h"
#include "ddp/HiddenTrack.h"
#include "ddp/ImageLayout.h"
#include "ddp/TrackTable.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Writes one byte into the image at `offset`.
bool poke(const QString& folder, qint64 offset, char value)
{
    QFile file(QDir(folder).filePath(QStringLiteral("IMAGE.DAT")));
    return file.open(QIODevice::ReadWrite) && file.seek(offset) && file.putChar(value);
}

QByteArray runInfo(const QString& folder, bool json)
{
    QStringList args{QStringLiteral("info"), folder};
    if (json)
        args.insert(1, QStringLiteral("--json"));
    QProcess process;
    process.start(QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR")) +
                      QStringLiteral("/tools/tivora-ddp/tivora-ddp"),
                  args);
    process.waitForFinished(30000);
    return process.readAllStandardOutput();
}

} // namespace

class HiddenTrackTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_count = 0;

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void firstPauseHoldingAudioIsNamed_data()
    {
        QTest::addColumn<int>("pauseFrames");
        QTest::addColumn<bool>("silent");
        // Where a single non-zero byte goes into a silent image, from the
        // pause's end (negative: inside the pause); 1 for none.
        QTest::addColumn<qint64>("pokeFromPauseEnd");
        QTest::addColumn<QString>("firstIndex");
        const QString audio = hiddenTrackIndexText();
        const QString pause = QStringLiteral("Pause");
        const QString start = QStringLiteral("Start 1");
        const int minute = mkddp::cdFrames(60);
        QTest::newRow("a minute of the pattern") << minute << false << qint64(1) << audio;
        QTest::newRow("3 s of the pattern") << mkddp::cdFrames(3) << false << qint64(1) << audio;
        QTest::newRow("a silent minute") << minute << true << qint64(1) << pause;
        // Many blocks of zeros are read before the one that is not.
        QTest::newRow("silent but its last byte") << minute << true << qint64(-1) << audio;
        QTest::newRow("silent but its first byte") << minute << true << -minute * 2352ll << audio;
        // Reading stops at the pause's end: track 1's audio is not the pause's.
        QTest::newRow("silent, track 1 starts at once") << minute << true << qint64(0) << pause;
        // Under 3 s the pause has no row and is never read.
        QTest::newRow("2 s of the pattern, hidden")
            << mkddp::cdFrames(2) << false << qint64(1) << start;
    }

    void firstPauseHoldingAudioIsNamed()
    {
        QFETCH(int, pauseFrames);
        QFETCH(bool, silent);
        QFETCH(qint64, pokeFromPauseEnd);
        QFETCH(QString, firstIndex);

        mkddp::DiscSpec spec = mkddp::simpleDisc(2, 4);
        spec.tracks[0].pauseFrames = pauseFrames;
        spec.silentPauses = silent;
        const QString folder = m_dir.filePath(QString::number(++m_count));
        QVERIFY(mkddp::writeDisc(spec, folder));
        const qint64 pauseEnd = mkddp::indexPosition(spec, 1, 1);
        if (pokeFromPauseEnd <= 0)
            QVERIFY(poke(folder, pauseEnd + pokeFromPauseEnd, 1));

        QStandardItemModel table;
        DDPModel model;
        QCOMPARE(loadDdp(folder, &table, model).kind, ErrorKind::NoError);
        // The loader never reads the audio: the row says "Pause" until marked.
        const bool shown = firstIndex != QStringLiteral("Start 1");
        QCOMPARE(table.item(0, TrackTableRows::Index)->text(),
                 shown ? QStringLiteral("Pause") : firstIndex);
        const std::shared_ptr<const DiscImage> image = openDiscImage(folder, model.imageLayout());
        QVERIFY(image);
        QCOMPARE(markHiddenTrack(model, table, *image), firstIndex == hiddenTrackIndexText());
        QCOMPARE(table.item(0, TrackTableRows::Index)->text(), firstIndex);
        QCOMPARE(table.item(1, TrackTableRows::Index)->text(), QStringLiteral("Start 1"));

        const QJsonArray rows = QJsonDocument::fromJson(runInfo(folder, true))
                                    .object()
                                    .value(QStringLiteral("rows"))
                                    .toArray();
        QVERIFY(!rows.isEmpty());
        QCOMPARE(rows.at(0).toArray().at(TrackTableRows::Index).toString(), firstIndex);
        QCOMPARE(runInfo(folder, false).contains(hiddenTrackIndexText().toUtf8()),
                 firstIndex == hiddenTrackIndexText());
    }

    // What the pause holds is read from the disc's audio wherever it lies:
    // here the first of three streams.
    void splitImage()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 4);
        spec.tracks[0].pauseFrames = mkddp::cdFrames(5);
        spec.imageStreams = 3;
        const QString folder = m_dir.filePath(QStringLiteral("split"));
        QVERIFY(mkddp::writeDisc(spec, folder));
        const QJsonArray rows = QJsonDocument::fromJson(runInfo(folder, true))
                                    .object()
                                    .value(QStringLiteral("rows"))
                                    .toArray();
        QCOMPARE(rows.at(0).toArray().at(TrackTableRows::Index).toString(), hiddenTrackIndexText());
    }
};

QTEST_GUILESS_MAIN(HiddenTrackTest)
#include "test_ddp_hidden_track.moc"
