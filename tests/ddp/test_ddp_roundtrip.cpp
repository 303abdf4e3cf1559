// What the test-disc generator writes is what the loader and
// `tivora-ddp info --json` report: rows, index list and CD-Text for sound
// discs of many shapes, including the ones real authoring tools write (PQ
// descriptor under other names, one lead-out entry, blank hours, odd control
// fields, CD-Text past 256 packs, DDP 1.01), and the error kind for each
// fault the generator can put in.
#include "DdpTestRun.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpIdRecord.h"
#include "ddp/DdpLoader.h"

#include <QDir>
#include <QStandardItemModel>
#include <QtTest>

#include <algorithm>

Q_DECLARE_METATYPE(mkddp::DiscSpec)

using ddptest::jsonText;

namespace {

// The item model as `info --json` writes it: null for a cell without an item.
QJsonArray rowsOf(const QStandardItemModel& table)
{
    QJsonArray rows;
    for (int r = 0; r < table.rowCount(); ++r) {
        QJsonArray cells;
        for (int c = 0; c < table.columnCount(); ++c) {
            const QStandardItem* item = table.item(r, c);
            cells.append(item ? QJsonValue(item->text()) : QJsonValue(QJsonValue::Null));
        }
        rows.append(cells);
    }
    return rows;
}

mkddp::DiscSpec japaneseDisc()
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.doubleByte = true;
    spec.languageCode = 0x69;
    spec.album.title = QStringLiteral("日本のアルバム ①");
    spec.album.performer = QStringLiteral("ｶﾀｶﾅ と 漢字");
    if (!spec.tracks.isEmpty())
        spec.tracks[0].text.title = QStringLiteral("最初の曲 ⅰ");
    return spec;
}

mkddp::DiscSpec threeTracks()
{
    mkddp::DiscSpec spec = mkddp::simpleDisc(3, 5);
    spec.tracks[1].frames = mkddp::cdFrames(6);
    spec.tracks[2].frames = mkddp::cdFrames(0, 7, 20);
    spec.upcEan = "4006381333931";
    return spec;
}

} // namespace

class TestDdpRoundTrip : public QObject
{
    Q_OBJECT

private:
    ddptest::Discs m_discs;

    // Into a folder with a Unicode name.
    QString write(const mkddp::DiscSpec& spec)
    {
        return m_discs.write(spec, QStringLiteral("disc %1 ♪"));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_discs.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    void soundDiscsRoundTrip_data()
    {
        using namespace mkddp;
        QTest::addColumn<DiscSpec>("spec");
        QTest::newRow("realistic") << realisticDisc();
        QTest::newRow("demo") << demoDisc();
        QTest::newRow("simple, no CD-Text") << simpleDisc(3, 5);
        QTest::newRow("double-byte") << japaneseDisc();

        DiscSpec shownPause = simpleDisc(2, 5);
        shownPause.tracks[0].pauseFrames = cdFrames(4);
        shownPause.silentPauses = true; // a pause that holds audio reads otherwise
        shownPause.tracks[1].indexOffsets = {cdFrames(1), cdFrames(3)};
        QTest::newRow("first pause shown, indexes") << shownPause;

        DiscSpec oneSecond = simpleDisc(2, 5);
        oneSecond.tracks[0].pauseFrames = cdFrames(1);
        QTest::newRow("first pause 1 s") << oneSecond;

        DiscSpec frames = simpleDisc(3, 5);
        frames.tracks[0].frames = cdFrames(0, 5, 40);
        frames.tracks[1].pauseFrames = 37;
        frames.pqHours = 1;
        QTest::newRow("frames and hours") << frames;

        DiscSpec names = realisticDisc();
        names.lowerCaseOnDisk = true;
        names.cdTextName = "CD TEXT.BIN";
        QTest::newRow("lower case on disk, inner blank") << names;

        DiscSpec padded = realisticDisc();
        padded.zeroPadNames = true;
        QTest::newRow("zero-padded names") << padded;

        DiscSpec bilingual = realisticDisc();
        bilingual.secondBlock = {CdTextStrings{QStringLiteral("Das Album")},
                                 CdTextStrings{QStringLiteral("Erstes Lied")}};
        QTest::newRow("second language block") << bilingual;

        DiscSpec genre = realisticDisc();
        genre.genre = 27;
        QTest::newRow("genre 27") << genre;

        for (const char* name : {"PQ_DESCR", "SD", "SUBCODES.DAT"}) { // "PQDESCR": realistic
            DiscSpec spec = realisticDisc();
            spec.pqName = name;
            QTest::newRow(qPrintable(QStringLiteral("PQ descriptor named ") + name)) << spec;
        }

        DiscSpec single = realisticDisc();
        single.leadOutEntries = 1;
        QTest::newRow("one lead-out entry, realistic") << single;
        DiscSpec singleShown = threeTracks();
        singleShown.tracks[0].pauseFrames = cdFrames(4);
        singleShown.silentPauses = true;
        singleShown.tracks[2].pauseFrames = cdFrames(2);
        // The ISRC at the last track's pause moves onto its start.
        singleShown.tracks[2].isrc = QByteArray(12, ' ');
        singleShown.tracks[2].pauseIsrc = QByteArray("DEA620000003");
        singleShown.leadOutEntries = 1;
        QTest::newRow("one lead-out entry, first pause shown") << singleShown;

        DiscSpec blank = realisticDisc();
        blank.blankHours = true;
        QTest::newRow("hours blank") << blank; // "00": realistic
        for (const char* control : {"01", "11", "A1", "B1", "0S", "41"}) {
            DiscSpec spec = realisticDisc();
            spec.pqControl = control;
            QTest::newRow(qPrintable(QStringLiteral("control ") + control)) << spec;
        }

        DiscSpec longText = threeTracks();
        putLongCdText(longText);
        QTest::newRow("CD-Text over 256 packs") << longText;

        DiscSpec level101 = realisticDisc();
        level101.ddpLevel = "DDP 1.01";
        QTest::newRow("DDP 1.01 identifier") << level101;
    }

    void soundDiscsRoundTrip()
    {
        QFETCH(mkddp::DiscSpec, spec);
        const QString folder = write(spec);
        const QJsonArray expectedRows = mkddp::expectedRows(spec);

        // In process, as the window loads it.
        QStandardItemModel table;
        DDPModel model;
        QCOMPARE(loadDdp(folder, &table, model).kind, ErrorKind::NoError);
        QCOMPARE(jsonText(rowsOf(table)), jsonText(expectedRows));
        QCOMPARE(model.ddpIdUpcEan(), spec.upcEan.toStdString());

        const ddptest::Run run = ddptest::info(folder);
        QDir(folder).removeRecursively(); // the images are tens of megabytes each
        QCOMPARE(run.json.value(QStringLiteral("kind")).toInt(-1), 12);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(jsonText(run.json.value(QStringLiteral("rows"))), jsonText(expectedRows));
        QCOMPARE(jsonText(run.json.value(QStringLiteral("indexList"))),
                 jsonText(mkddp::expectedIndexList(spec)));
        QCOMPARE(jsonText(run.json.value(QStringLiteral("cdText"))),
                 jsonText(mkddp::expectedCdText(spec)));
        QCOMPARE(run.json.value(QStringLiteral("ddpidUpcEan")).toString(),
                 QString::fromLatin1(spec.upcEan));
        QCOMPARE(run.json.value(QStringLiteral("files")).toObject().value(QStringLiteral("pq")),
                 QJsonValue(QString::fromLatin1(spec.pqName)));
    }

    void eachFaultEndsInItsKind_data()
    {
        QTest::addColumn<mkddp::DiscSpec>("spec");
        QTest::addColumn<int>("kind");
        for (mkddp::Fault fault : mkddp::allFaults()) {
            mkddp::DiscSpec spec = fault == mkddp::Fault::CdTextBadDoubleByte
                                       ? japaneseDisc()
                                       : mkddp::realisticDisc();
            spec.faults = {fault};
            QTest::newRow(qPrintable(mkddp::faultName(fault)))
                << spec << mkddp::expectedKind(fault);
        }
    }

    void eachFaultEndsInItsKind()
    {
        QFETCH(mkddp::DiscSpec, spec);
        QFETCH(int, kind);
        const QString folder = write(spec);
        const ddptest::Run run = ddptest::info(folder);
        QDir(folder).removeRecursively();
        const QJsonObject& report = run.json;
        QCOMPARE(report.value(QStringLiteral("kind")).toInt(-1), kind);
        QCOMPARE(run.exitCode, kind == 12 ? 0 : 1);
        if (kind == 7) {
            // The disc is shown behind a missing image: rows, indexes, CD-Text.
            QCOMPARE(jsonText(report.value(QStringLiteral("rows"))),
                     jsonText(mkddp::expectedRows(spec)));
            QCOMPARE(jsonText(report.value(QStringLiteral("cdText"))),
                     jsonText(mkddp::expectedCdText(spec)));
        } else if (kind != 12) {
            QVERIFY(report.value(QStringLiteral("rows")).toArray().isEmpty());
            QVERIFY(report.value(QStringLiteral("indexList")).toArray().isEmpty());
            QVERIFY(report.value(QStringLiteral("cdText")).isNull());
        }
    }

    // The generator's expectations follow the table's rules, so here the
    // single lead-out entry is held against the same disc with the pair.
    void aSingleLeadOutShowsAndExportsTheLastTrack()
    {
        mkddp::DiscSpec pair = threeTracks();
        mkddp::DiscSpec single = pair;
        single.leadOutEntries = 1;
        const QJsonObject withPair = ddptest::info(write(pair)).json;
        const QString singleFolder = write(single);
        const QJsonObject withSingle = ddptest::info(singleFolder).json;
        const QJsonArray rows = withSingle.value(QStringLiteral("rows")).toArray();
        QCOMPARE(jsonText(rows), jsonText(withPair.value(QStringLiteral("rows"))));
        QCOMPARE(rows.size(), 4); // three tracks and the total
        const QJsonArray last = rows.at(2).toArray();
        QCOMPARE(last.at(1).toString(), QStringLiteral("03"));
        QCOMPARE(last.at(4).toString(), QStringLiteral("00:07"));
        QCOMPARE(rows.at(3).toArray().at(3).toString(), QStringLiteral("Total: 00:18"));

        // Every track is exported, the last one whole.
        const QString out = m_discs.path(QStringLiteral("export %1").arg(m_discs.count()));
        QVERIFY(QDir().mkpath(out));
        QCOMPARE(ddptest::tivoraDdp({QStringLiteral("export"), singleFolder, out}).exitCode, 0);
        QList<qint64> sizes;
        for (const QFileInfo& wav :
             QDir(out).entryInfoList({QStringLiteral("*.wav")}, QDir::Files, QDir::Name))
            sizes << wav.size();
        std::sort(sizes.begin(), sizes.end());
        QList<qint64> expected;
        for (const mkddp::TrackSpec& track : single.tracks)
            expected << 44 + qint64(track.frames) * mkddp::kBytesPerCdFrame;
        QCOMPARE(sizes, expected);
    }

    void longCdTextIsReadWholeAndSaidNotToFit()
    {
        mkddp::DiscSpec spec = threeTracks();
        mkddp::putLongCdText(spec);
        // The disc really is one a lead-in cannot hold: over 256 packs, and
        // the size information's last sequence number has wrapped.
        const QByteArray cdText = mkddp::cdTextBytes(spec);
        const int packs = cdText.size() / 18;
        QVERIFY2(packs > 256, qPrintable(QString::number(packs)));
        // Size information byte 20 (the second size pack's ninth text byte).
        QCOMPARE(quint8(cdText.at((packs - 2) * 18 + 4 + 8)), quint8((packs - 1) % 256));

        const QString folder = write(spec);
        const QJsonObject info = ddptest::info(folder).json;
        const QJsonArray tracks = info.value(QStringLiteral("cdText"))
                                      .toObject()
                                      .value(QStringLiteral("tracks"))
                                      .toArray();
        QCOMPARE(tracks.size(), 4);
        QCOMPARE(tracks.at(3).toObject().value(QStringLiteral("message")).toString(),
                 spec.tracks[2].text.message);
        QCOMPARE(info.value(QStringLiteral("cdTextFitsLeadIn")), QJsonValue(false));
        const ddptest::Run plain = ddptest::tivoraDdp({QStringLiteral("info"), folder});
        QVERIFY2(plain.out.contains(QByteArray("Warning: The CD-Text has ") +
                                    QByteArray::number(packs) + " packs in one language block"),
                 plain.out.constData());

        // A disc's usual CD-Text fits, and a disc without any says nothing.
        const auto fits = [this](const mkddp::DiscSpec& disc) {
            return ddptest::info(write(disc)).json.value(QStringLiteral("cdTextFitsLeadIn"));
        };
        QCOMPARE(fits(mkddp::realisticDisc()), QJsonValue(true));
        QVERIFY(fits(threeTracks()).isNull());
    }

    void ddpidFieldsByLevel()
    {
        mkddp::DiscSpec spec = threeTracks();
        const DdpIdRecord v200 = DdpIdRecord::fromBytes(mkddp::ddpidBytes(spec).toStdString());
        spec.ddpLevel = "DDP 1.01";
        const DdpIdRecord v101 = DdpIdRecord::fromBytes(mkddp::ddpidBytes(spec).toStdString());
        QVERIFY(v200.level() == DdpIdRecord::Level::Ddp200);
        QVERIFY(v101.level() == DdpIdRecord::Level::Ddp101);
        QCOMPARE(v200.upcEan(), std::string_view("4006381333931"));
        QCOMPARE(v101.upcEan(), std::string_view("4006381333931"));
        QCOMPARE(v200.mediaType(), std::string_view("DA"));
        // The 1.01 identifier's free text where 2.00 has the media type is
        // not read as one.
        QVERIFY(v101.field(87, 2) != std::string_view("DA"));
        QCOMPARE(v101.mediaType(), std::string_view());
        // A level this program does not know is read as the later layout.
        std::string other = mkddp::ddpidBytes(threeTracks()).toStdString();
        other.replace(0, 8, "DDP 3.10");
        QVERIFY(DdpIdRecord::fromBytes(other).level() == DdpIdRecord::Level::Ddp200);
    }
};

QTEST_GUILESS_MAIN(TestDdpRoundTrip)
#include "test_ddp_roundtrip.moc"
