// A first pause that holds audio (a hidden track before track 1): found by
// reading the pause through the disc image, named in the first row, and the
// same words in `tivora-ddp info`; a silent pause, a short (hidden) pause and
// the audio just past the pause leave the row as it was.
#include "DdpTestRun.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/DiscImage.h"
#include "ddp/HiddenTrack.h"
#include "ddp/ImageLayout.h"
#include "ddp/TrackTable.h"

#include <QDir>
#include <QFile>
#include <QStandardItemModel>
#include <QtTest>

namespace {

// Writes one byte into the image at `offset`.
bool poke(const QString& folder, qint64 offset, char value)
{
    QFile file(QDir(folder).filePath(QStringLiteral("IMAGE.DAT")));
    return file.open(QIODevice::ReadWrite) && file.seek(offset) && file.putChar(value);
}

QJsonArray infoRows(const QString& folder)
{
    return ddptest::info(folder).json.value(QStringLiteral("rows")).toArray();
}

} // namespace

class HiddenTrackTest : public QObject
{
    Q_OBJECT

    ddptest::Discs m_discs;

private slots:
    void initTestCase() { QVERIFY(m_discs.isValid()); }

    void firstPauseHoldingAudioIsNamed_data()
    {
        QTest::addColumn<int>("pauseFrames");
        QTest::addColumn<bool>("silent");
        // Where a single non-zero byte goes into a silent image, from the
        // pause's end (negative: inside the pause); 1 for none.
        QTest::addColumn<qint64>("pokeFromPauseEnd");
        QTest::addColumn<QString>("firstIndex");
        QTest::addColumn<int>("streams"); // image files the disc's audio is split into
        const QString audio = hiddenTrackIndexText();
        const QString pause = QStringLiteral("Pause");
        const QString start = QStringLiteral("Start 1");
        const int minute = mkddp::cdFrames(60);
        QTest::newRow("a minute of the pattern") << minute << false << qint64(1) << audio << 1;
        QTest::newRow("3 s of the pattern")
            << mkddp::cdFrames(3) << false << qint64(1) << audio << 1;
        QTest::newRow("a silent minute") << minute << true << qint64(1) << pause << 1;
        // Many blocks of zeros are read before the one that is not.
        QTest::newRow("silent but its last byte") << minute << true << qint64(-1) << audio << 1;
        QTest::newRow("silent but its first byte")
            << minute << true << -minute * 2352ll << audio << 1;
        // Reading stops at the pause's end: track 1's audio is not the pause's.
        QTest::newRow("silent, track 1 starts at once")
            << minute << true << qint64(0) << pause << 1;
        // Under 3 s the pause has no row and is never read.
        QTest::newRow("2 s of the pattern, hidden")
            << mkddp::cdFrames(2) << false << qint64(1) << start << 1;
        // What the pause holds is read from the disc's audio wherever it
        // lies: here the first of three streams.
        QTest::newRow("5 s of the pattern, split image")
            << mkddp::cdFrames(5) << false << qint64(1) << audio << 3;
    }

    void firstPauseHoldingAudioIsNamed()
    {
        QFETCH(int, pauseFrames);
        QFETCH(bool, silent);
        QFETCH(qint64, pokeFromPauseEnd);
        QFETCH(QString, firstIndex);
        QFETCH(int, streams);

        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 4);
        spec.tracks[0].pauseFrames = pauseFrames;
        spec.silentPauses = silent;
        spec.imageStreams = streams;
        const QString folder = m_discs.write(spec);
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

        const QJsonArray rows = infoRows(folder);
        QVERIFY(!rows.isEmpty());
        QCOMPARE(rows.at(0).toArray().at(TrackTableRows::Index).toString(), firstIndex);
        QCOMPARE(ddptest::tivoraDdp({QStringLiteral("info"), folder})
                     .out.contains(hiddenTrackIndexText().toUtf8()),
                 firstIndex == hiddenTrackIndexText());
    }
};

QTEST_GUILESS_MAIN(HiddenTrackTest)
#include "test_ddp_hidden_track.moc"
