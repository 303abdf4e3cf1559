// Discs as real authoring tools write them, made by the generator: the PQ
// descriptor under other names, a single lead-out entry, blank hours and
// odd control fields, CD-Text past 256 packs, a DDP 1.01 identifier. Each is
// loaded in process and asked of `tivora-ddp info --json`, and must show
// what the generator put in.
#include "ddp/DDPModel.h"
#include "ddp/DdpIdRecord.h"
#include "ddp/DdpLoader.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

Q_DECLARE_METATYPE(mkddp::DiscSpec)

namespace {

struct Run
{
    int exitCode = -1;
    QByteArray out;
};

Run tivoraDdp(const QStringList& args)
{
    QProcess process;
    process.start(QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR")) +
                      QStringLiteral("/tools/tivora-ddp/tivora-ddp"),
                  args);
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    return run;
}

QJsonObject infoJson(const QString& folder)
{
    const Run run = tivoraDdp({QStringLiteral("info"), QStringLiteral("--json"), folder});
    return QJsonDocument::fromJson(run.out).object();
}

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

QByteArray text(const QJsonValue& v)
{
    if (v.isArray())
        return QJsonDocument(v.toArray()).toJson(QJsonDocument::Indented);
    if (v.isObject())
        return QJsonDocument(v.toObject()).toJson(QJsonDocument::Indented);
    return v.isNull() ? QByteArray("null") : QByteArray("<other>");
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

class TestDdpVariants : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_discs = 0;

    QString write(const mkddp::DiscSpec& spec)
    {
        const QString folder = m_dir.filePath(QStringLiteral("disc %1").arg(++m_discs));
        QString error;
        if (!mkddp::writeDisc(spec, folder, &error))
            qWarning("writeDisc: %s", qPrintable(error));
        return folder;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    void variantsLoadAsWritten_data()
    {
        using namespace mkddp;
        QTest::addColumn<DiscSpec>("spec");
        for (const char* name : {"PQDESCR", "PQ_DESCR", "SD", "SUBCODES.DAT"}) {
            DiscSpec spec = realisticDisc();
            spec.pqName = name;
            QTest::newRow(qPrintable(QStringLiteral("PQ descriptor named ") + name)) << spec;
        }

        DiscSpec single = realisticDisc();
        single.leadOutEntries = 1;
        QTest::newRow("one lead-out entry, realistic") << single;
        DiscSpec shownPause = threeTracks();
        shownPause.tracks[0].pauseFrames = cdFrames(4);
        shownPause.silentPauses = true; // a pause that holds audio reads otherwise
        shownPause.tracks[2].pauseFrames = cdFrames(2);
        // The ISRC at the last track's pause moves onto its start.
        shownPause.tracks[2].isrc = QByteArray(12, ' ');
        shownPause.tracks[2].pauseIsrc = QByteArray("DEA620000003");
        shownPause.leadOutEntries = 1;
        QTest::newRow("one lead-out entry, first pause shown") << shownPause;

        DiscSpec blank = realisticDisc();
        blank.blankHours = true;
        QTest::newRow("hours blank") << blank;
        DiscSpec zero = realisticDisc();
        zero.pqHours = 0;
        QTest::newRow("hours 00") << zero;
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

    void variantsLoadAsWritten()
    {
        QFETCH(mkddp::DiscSpec, spec);
        const QString folder = write(spec);
        const QJsonArray expectedRows = mkddp::expectedRows(spec);

        // In process, as the window loads it.
        QStandardItemModel table;
        DDPModel model;
        const LoadResult result = loadDdp(folder, &table, model);
        QCOMPARE(static_cast<int>(result.kind), static_cast<int>(ErrorKind::NoError));
        QCOMPARE(text(rowsOf(table)), text(expectedRows));
        QCOMPARE(model.ddpIdUpcEan(), spec.upcEan.toStdString());

        // And through the command line.
        const QJsonObject info = infoJson(folder);
        QCOMPARE(info.value(QStringLiteral("kind")).toInt(-1), 12);
        QCOMPARE(text(info.value(QStringLiteral("rows"))), text(expectedRows));
        QCOMPARE(text(info.value(QStringLiteral("indexList"))),
                 text(mkddp::expectedIndexList(spec)));
        QCOMPARE(text(info.value(QStringLiteral("cdText"))), text(mkddp::expectedCdText(spec)));
        QCOMPARE(info.value(QStringLiteral("ddpidUpcEan")).toString(),
                 QString::fromLatin1(spec.upcEan));
        QCOMPARE(info.value(QStringLiteral("files")).toObject().value(QStringLiteral("pq")),
                 QJsonValue(QString::fromLatin1(spec.pqName)));
    }

    // The generator's expectations follow the table's rules, so here the
    // single lead-out entry is held against the same disc with the pair.
    void aSingleLeadOutShowsAndExportsTheLastTrack()
    {
        mkddp::DiscSpec pair = threeTracks();
        mkddp::DiscSpec single = pair;
        single.leadOutEntries = 1;
        const QJsonObject withPair = infoJson(write(pair));
        const QString singleFolder = write(single);
        const QJsonObject withSingle = infoJson(singleFolder);
        const QJsonArray rows = withSingle.value(QStringLiteral("rows")).toArray();
        QCOMPARE(text(rows), text(withPair.value(QStringLiteral("rows"))));
        QCOMPARE(rows.size(), 4); // three tracks and the total
        const QJsonArray last = rows.at(2).toArray();
        QCOMPARE(last.at(1).toString(), QStringLiteral("03"));
        QCOMPARE(last.at(4).toString(), QStringLiteral("00:07"));
        QCOMPARE(rows.at(3).toArray().at(3).toString(), QStringLiteral("Total: 00:18"));

        // Every track is exported, the last one whole.
        const QString out = m_dir.filePath(QStringLiteral("export %1").arg(m_discs));
        QVERIFY(QDir().mkpath(out));
        QCOMPARE(tivoraDdp({QStringLiteral("export"), singleFolder, out}).exitCode, 0);
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
        const QJsonObject info = infoJson(folder);
        const QJsonArray tracks = info.value(QStringLiteral("cdText"))
                                      .toObject()
                                      .value(QStringLiteral("tracks"))
                                      .toArray();
        QCOMPARE(tracks.size(), 4);
        QCOMPARE(tracks.at(3).toObject().value(QStringLiteral("message")).toString(),
                 spec.tracks[2].text.message);
        QCOMPARE(info.value(QStringLiteral("cdTextFitsLeadIn")), QJsonValue(false));
        const Run plain = tivoraDdp({QStringLiteral("info"), folder});
        QVERIFY2(plain.out.contains(QByteArray("Warning: The CD-Text has ") +
                                    QByteArray::number(packs) + " packs in one language block"),
                 plain.out.constData());

        // A disc's usual CD-Text fits, and a disc without any says nothing.
        QCOMPARE(infoJson(write(mkddp::realisticDisc())).value(QStringLiteral("cdTextFitsLeadIn")),
                 QJsonValue(true));
        QVERIFY(infoJson(write(threeTracks())).value(QStringLiteral("cdTextFitsLeadIn")).isNull());
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

QTEST_GUILESS_MAIN(TestDdpVariants)
#include "test_ddp_variants.moc"
