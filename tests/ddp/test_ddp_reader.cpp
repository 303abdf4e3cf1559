// DdpImageReader from bytes: the three tag tests, the map walk and the file
// names the map gives.
#include "DdpTestBytes.h"

#include "ddp/DdpImageReader.h"

#include <QtTest>

using namespace testbytes;

Q_DECLARE_METATYPE(ReadResult)

namespace {

MemoryFileSource sound()
{
    return memoryDisc(simpleEntries(2, {60, 90}));
}

} // namespace

class TestDdpReader : public QObject
{
    Q_OBJECT

private slots:
    void readsASoundDisc()
    {
        DdpImageReader reader;
        QCOMPARE(reader.read(sound()), ReadResult::Success);
        QCOMPARE(reader.mapPackets().size(), std::size_t{2});
        QCOMPARE(reader.pqEntries().size(), std::size_t{6});
        QCOMPARE(reader.imageFileName(), std::string("IMAGE.DAT"));
        QCOMPARE(reader.pqFileName(), std::string("PQDESCR"));
        QCOMPARE(reader.cdTextFileName(), std::string());
        QCOMPARE(reader.idRecord().upcEan(), std::string_view("0123456789012"));
    }

    void firstFailingFileDecides_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content"); // "<absent>" removes the file
        QTest::addColumn<ReadResult>("result");
        const QByteArray absent("<absent>");
        QTest::newRow("no DDPID") << "DDPID" << absent << ReadResult::DdpidUnreadable;
        QTest::newRow("DDPID of 3 bytes")
            << "DDPID" << QByteArray("DDP") << ReadResult::DdpidUnreadable;
        QTest::newRow("DDPID without the tag")
            << "DDPID" << QByteArray::fromStdString(padded("DDX 2.00", 128))
            << ReadResult::DdpidUnreadable;
        QTest::newRow("DDPID tag only") << "DDPID" << QByteArray("DDP ") << ReadResult::Success;
        QTest::newRow("no DDPMS") << "DDPMS" << absent << ReadResult::DdpmsUnreadable;
        QTest::newRow("empty DDPMS") << "DDPMS" << QByteArray() << ReadResult::DdpmsUnreadable;
        // Valid packets later on do not save a map whose first tag is wrong.
        QTest::newRow("DDPMS starting with garbage")
            << "DDPMS" << QByteArray::fromStdString(std::string(128, 'x') + ddpms())
            << ReadResult::DdpmsUnreadable;
        QTest::newRow("no PQ DESCR packet")
            << "DDPMS" << QByteArray::fromStdString(mapPacket("D0", "", "IMAGE.DAT"))
            << ReadResult::PqDescriptorUnreadable;
        QTest::newRow("no PQ file") << "PQDESCR" << absent << ReadResult::PqDescriptorUnreadable;
        QTest::newRow("PQ file without the tag")
            << "PQDESCR" << QByteArray(64, 'V') << ReadResult::PqDescriptorUnreadable;
        QTest::newRow("PQ file of 3 bytes")
            << "PQDESCR" << QByteArray("VVV") << ReadResult::PqDescriptorUnreadable;
    }

    void firstFailingFileDecides()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(ReadResult, result);
        MemoryFileSource files;
        const MemoryFileSource good = sound();
        for (const char* name : {"DDPID", "DDPMS", "PQDESCR", "IMAGE.DAT"}) {
            if (file == QLatin1String(name) && content == "<absent>")
                continue;
            files.setFile(name, file == QLatin1String(name) ? content.toStdString()
                                                            : *good.content(name));
        }
        QCOMPARE(DdpImageReader().read(files), result);
    }

    void mapSkipsForeignPacketsAndKeepsAShortLastOne()
    {
        // A valid PQ packet, then garbage, then a D0 packet cut short after
        // its name: the garbage is skipped, the short packet kept.
        const std::string d0 = mapPacket("D0", "", "IMAGE.DAT").substr(0, 91);
        const std::string map = mapPacket("S0", "PQ DESCR", "PQDESCR") + std::string(128, '\x7f') +
                                mapPacket("D0", "", "", "VVVX") + d0;
        std::vector<MapPacket> packets;
        QVERIFY(DdpImageReader::parseMap(map, packets));
        QCOMPARE(packets.size(), std::size_t{2});
        QCOMPARE(packets[1].field(91, 37), std::string_view(std::string(37, '\0')));

        MemoryFileSource files = sound();
        files.setFile("DDPMS", map);
        DdpImageReader reader;
        QCOMPARE(reader.read(files), ReadResult::Success);
        QCOMPARE(reader.imageFileName(), std::string("IMAGE.DAT"));

        // A tail under 4 bytes cannot carry the tag and is dropped.
        packets.clear();
        QVERIFY(DdpImageReader::parseMap(mapPacket("D0", "", "A") + "VVV", packets));
        QCOMPARE(packets.size(), std::size_t{1});
    }

    void fileNamesFromTheMap()
    {
        std::vector<MapPacket> packets;
        const std::string zeroPadded = std::string("IMG.DAT") + std::string(10, '\0');
        QVERIFY(DdpImageReader::parseMap(mapPacket("D0", "", "IMAGE.DAT \t\r") +
                                             mapPacket("D0", "", "SECOND.DAT") +
                                             mapPacket("S0", "PQ DESCR", " PQ DESCR  ") +
                                             mapPacket("S0", "CDTEXT  ", " CD TEXT.BIN\t ") +
                                             mapPacket("D0", "PQ DESCR", zeroPadded),
                                         packets));
        DdpImageReader reader;
        MemoryFileSource files = sound();
        std::string ms;
        for (const MapPacket& p : packets)
            ms += std::string(p.bytes.data(), p.bytes.size());
        files.setFile("DDPMS", ms);
        files.setFile(" PQ DESCR", *files.content("PQDESCR"));
        QCOMPARE(reader.read(files), ReadResult::Success);
        // The first match wins; the image and PQ names lose trailing white
        // space only, the CD-Text name loses every blank but keeps the tab.
        QCOMPARE(reader.imageFileName(), std::string("IMAGE.DAT"));
        QCOMPARE(reader.pqFileName(), std::string(" PQ DESCR"));
        QCOMPARE(reader.cdTextFileName(), std::string("CDTEXT.BIN\t"));
    }

    void zeroPaddedNameIsSeenUpToItsFirstZero()
    {
        const std::string name = std::string("PQ.BIN") + std::string(11, '\0');
        MemoryFileSource files = sound();
        files.setFile("DDPMS", mapPacket("S0", "PQ DESCR", name));
        files.setFile("PQ.BIN", *files.content("PQDESCR"));
        DdpImageReader reader;
        QCOMPARE(reader.read(files), ReadResult::Success);
        QCOMPARE(reader.pqFileName(), name); // the zeros are kept in the name
    }

    void pqEntriesKeepEveryRecordAndAShortTail()
    {
        const std::string pq = pqEntry({"01", 0}) + std::string(64, 'x') + "VVVS01";
        const std::vector<PqEntry> entries = DdpImageReader::parsePqEntries(pq);
        QCOMPARE(entries.size(), std::size_t{3});
        QCOMPARE(entries[1].tag(), std::string_view("xxxx"));
        QCOMPARE(entries[2].trackText(), std::string_view("01"));
        QCOMPARE(entries[2].field(6, 58), std::string_view(std::string(58, '\0')));
    }
};

QTEST_GUILESS_MAIN(TestDdpReader)
#include "test_ddp_reader.moc"
