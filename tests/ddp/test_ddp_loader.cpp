// The loader over in-memory files: which kind each fault ends in, and that a
// failed load leaves the table and the model empty.
#include "DdpTestBytes.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"

#include <QStandardItemModel>
#include <QtTest>

using namespace testbytes;

Q_DECLARE_METATYPE(ErrorKind)
Q_DECLARE_METATYPE(testbytes::Files)

namespace {

std::string soundCdText()
{
    Block b;
    b.lastTrack = 2;
    b.texts[0x80] = {"Album", "First", "Second"};
    b.texts[0x81] = {"Band", "Band", "Band"};
    b.genre = 20;
    return cdTextBlock(b);
}

Files soundFiles()
{
    return discFiles(simpleEntries(2, {60, 90}), soundCdText());
}

QStringList headerLabels(const QStandardItemModel& table)
{
    QStringList names;
    for (int c = 0; c < table.columnCount(); ++c)
        names << table.horizontalHeaderItem(c)->text();
    return names;
}

bool modelIsEmpty(const DDPModel& model)
{
    return model.entries().empty() && model.indexList().empty() && !model.hasCdText() &&
           model.imageFileName().empty() && model.ddpIdUpcEan().empty();
}

} // namespace

class TestDdpLoader : public QObject
{
    Q_OBJECT

private slots:
    void loadsASoundDisc()
    {
        QStandardItemModel table;
        DDPModel model;
        const LoadResult result = loadDdp(memorySource(soundFiles()), &table, model);
        QCOMPARE(result.kind, ErrorKind::NoError);
        QCOMPARE(result.message, std::string());
        QCOMPARE(headerLabels(table), trackTableHeaderNames());
        QCOMPARE(trackTableHeaderNames().size(), 13);
        QCOMPARE(table.rowCount(), 3); // two tracks and the total
        QCOMPARE(table.item(0, 5)->text(), QStringLiteral("First"));
        QCOMPARE(table.item(1, 6)->text(), QStringLiteral("Band"));
        QVERIFY(!table.item(0, 0)); // "Type" has no item: the delegate paints it
        QCOMPARE(table.item(2, 3)->text(), QStringLiteral("Total: 02:30"));
        QCOMPARE(model.entries().size(), std::size_t{6});
        QCOMPARE(model.indexList(), (std::vector<std::uint32_t>{1, 1}));
        QVERIFY(model.hasCdText());
        QCOMPARE(model.cdText().genre, std::string("Pop Music"));
        QCOMPARE(model.imageFileName(), std::string("IMAGE.DAT"));
        QCOMPARE(model.ddpIdUpcEan(), std::string("0123456789012"));
        QCOMPARE(model.fileNames().image, std::string("IMAGE.DAT"));
        QCOMPARE(model.fileNames().cdText, std::string("CDTEXT.BIN"));
        QCOMPARE(model.fileNames().pq, std::string("PQDESCR"));
    }

    void everyFaultEndsInOneKind_data()
    {
        QTest::addColumn<Files>("files");
        QTest::addColumn<ErrorKind>("kind");
        QTest::addColumn<QString>("message");

        // The reader's own failures and the generator's faults are covered
        // elsewhere; these are the faults found while building the disc.
        Files f = soundFiles();
        f["PQDESCR"] = pqEntry({"01", 0});
        QTest::newRow("one PQ entry")
            << f << ErrorKind::PqdescrInvalid << "invalid vector subscript";
        f = soundFiles();
        f["PQDESCR"][64 + 6] = 'x'; // the pause's index field
        f["PQDESCR"][64 + 7] = 'x';
        QTest::newRow("index without digits")
            << f << ErrorKind::PqdescrInvalid << "invalid stoi argument";
        f = soundFiles();
        f["PQDESCR"] = pqDescriptor(simpleEntries(2, {60, 90, 30})); // three tracks
        QTest::newRow("track beyond the CD-Text")
            << f << ErrorKind::PqdescrInvalid << "invalid vector subscript";
        f = soundFiles();
        {
            Block b;
            b.lastTrack = 2;
            b.texts[0x80] = {"A", "B", "C"};
            b.genre = 28;
            f["CDTEXT.BIN"] = cdTextBlock(b);
        }
        QTest::newRow("unknown genre") << f << ErrorKind::UnknownError << "invalid map<K, T> key";
        f = soundFiles();
        f["DDPMS"] = ddpms("", "PQDESCR", "CDTEXT.BIN");
        QTest::newRow("no D0 name") << f << ErrorKind::ImageMissing << "";
        // The loader never needs the CD-Text: without it the disc just has none.
        f = soundFiles();
        f.erase("CDTEXT.BIN");
        QTest::newRow("CD-Text absent") << f << ErrorKind::NoError << "";
    }

    void everyFaultEndsInOneKind()
    {
        QFETCH(Files, files);
        QFETCH(ErrorKind, kind);
        QFETCH(QString, message);

        // The table still shows the previous disc when the load starts.
        QStandardItemModel table;
        DDPModel previous;
        QCOMPARE(loadDdp(memorySource(soundFiles()), &table, previous).kind, ErrorKind::NoError);
        QVERIFY(table.rowCount() > 0);

        DDPModel model;
        const LoadResult result = loadDdp(memorySource(files), &table, model);
        QCOMPARE(result.kind, kind);
        QCOMPARE(QString::fromStdString(result.message), message);
        QCOMPARE(headerLabels(table), trackTableHeaderNames());
        if (kind == ErrorKind::ImageMissing) {
            // The disc stays visible behind the error.
            QVERIFY(table.rowCount() > 0);
            QVERIFY(!model.entries().empty());
        } else if (kind != ErrorKind::NoError) {
            QCOMPARE(table.rowCount(), 0);
            QVERIFY(modelIsEmpty(model));
        } else {
            QVERIFY(!model.hasCdText());
        }
    }

    // `tivora-ddp info --json` names the files of a disc it cannot show: the
    // model keeps the map's names as far as the read got, and nothing else.
    void aFailedLoadKeepsTheNamesTheMapGave()
    {
        QStandardItemModel table;
        Files files = soundFiles();
        files.erase("PQDESCR");
        DDPModel model;
        QCOMPARE(loadDdp(memorySource(files), &table, model).kind, ErrorKind::PqdescrInvalid);
        QVERIFY(modelIsEmpty(model));
        QCOMPARE(model.fileNames().image, std::string("IMAGE.DAT"));
        QCOMPARE(model.fileNames().pq, std::string("PQDESCR"));
        QCOMPARE(model.fileNames().cdText, std::string("CDTEXT.BIN"));

        files.erase("DDPMS");
        DDPModel noMap;
        QCOMPARE(loadDdp(memorySource(files), &table, noMap).kind, ErrorKind::DdpmsInvalid);
        QVERIFY(noMap.fileNames().pq.empty() && noMap.fileNames().image.empty());
    }

    void modelServesThePlayerAndTheViews()
    {
        QStandardItemModel table;
        DDPModel hidden;
        QCOMPARE(loadDdp(memorySource(soundFiles()), &table, hidden).kind, ErrorKind::NoError);
        QVERIFY(!hidden.isFirstRowPause()); // the 2 s pause has no row
        DDPModel shown;
        QCOMPARE(loadDdp(memoryDisc(simpleEntries(4, {60})), &table, shown).kind,
                 ErrorKind::NoError);
        QVERIFY(shown.isFirstRowPause());
        QVERIFY_EXCEPTION_THROWN(DDPModel().isFirstRowPause(), std::out_of_range);

        // The listener hears every change of the playing flag; a new one
        // replaces the old.
        QList<bool> first, second;
        shown.setPlayingListener([&](bool playing) { first << playing; });
        shown.setPlaying(true);
        shown.setPlayingListener([&](bool playing) { second << playing; });
        shown.setPlaying(false);
        QCOMPARE(first, QList<bool>{true});
        QCOMPARE(second, QList<bool>{false});
    }

    void noTableIsAnUnknownError()
    {
        DDPModel model;
        QCOMPARE(loadDdp(memorySource(soundFiles()), nullptr, model).kind, ErrorKind::UnknownError);
        QVERIFY(modelIsEmpty(model));
    }
};

QTEST_GUILESS_MAIN(TestDdpLoader)
#include "test_ddp_loader.moc"
