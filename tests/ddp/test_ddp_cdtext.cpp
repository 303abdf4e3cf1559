// CD-Text decoding from packs: strings running across packs, the track
// counter, the language blocks, genres and code page 932.
#include "DdpTestBytes.h"

#include "ddp/CdTextReader.h"
#include "ddp/CdTextStrings.h"

#include <QtTest>

using namespace testbytes;

namespace {

std::string title(const CdTextRecord& r, std::size_t track)
{
    return r.text(track, CdTextRecord::Title);
}

// Packs followed by block 0's size information.
std::string withSizeInfo(const std::string& packs, std::uint8_t lastTrack)
{
    const auto count = static_cast<std::uint8_t>(packs.size() / 18);
    return packs + sizeInfoPacks(lastTrack, static_cast<std::uint8_t>(count + 2), count);
}

} // namespace

class TestCdText : public QObject
{
    Q_OBJECT

private slots:
    void stringsEndAtZerosAndMoveTheTrackOn()
    {
        // "A", zero, "B", zero for track 1: A is track 1's, B track 2's.
        const std::string packs = cdTextPack(0x81, 1, 0, 0, std::string("A\0B\0", 4));
        const CdTextRecord r = CdTextReader::decode(withSizeInfo(packs, 2));
        QCOMPARE(r.text(1, CdTextRecord::Performer), std::string("A"));
        QCOMPARE(r.text(2, CdTextRecord::Performer), std::string("B"));
        QCOMPARE(r.tracks.size(), std::size_t{3});
        QVERIFY(!r.doubleByte);

        // An empty string stores nothing but still moves on.
        const CdTextRecord e = CdTextReader::decode(
            withSizeInfo(cdTextPack(0x80, 0, 0, 0, std::string("\0X\0", 3)), 1));
        QCOMPARE(title(e, 0), std::string());
        QCOMPARE(title(e, 1), std::string("X"));
    }

    void encodedBlockDecodesToItsStrings()
    {
        Block b;
        b.lastTrack = 3;
        b.texts[0x80] = {"An album title that runs over three packs", "One", "", "Three"};
        b.texts[0x81] = {"The Band", "Singer A", "Singer B", "Singer C"};
        b.texts[0x85] = {"", "", "A message", ""};
        b.texts[0x8E] = {"0123456789012", "DEA620000001", "DEA620000002", "DEA620000003"};
        b.texts[0x86] = {"CAT-0042"};
        b.genre = 14;
        const CdTextRecord r = CdTextReader::decode(cdTextBlock(b));
        QCOMPARE(title(r, 0), std::string("An album title that runs over three packs"));
        QCOMPARE(title(r, 1), std::string("One"));
        QCOMPARE(title(r, 2), std::string());
        QCOMPARE(title(r, 3), std::string("Three"));
        QCOMPARE(r.text(3, CdTextRecord::Performer), std::string("Singer C"));
        QCOMPARE(r.text(2, CdTextRecord::Message), std::string("A message"));
        QCOMPARE(r.text(0, CdTextRecord::Code), std::string("0123456789012"));
        QCOMPARE(r.text(3, CdTextRecord::Code), std::string("DEA620000003"));
        QCOMPARE(CdTextRecord::text(r.album), std::string("CAT-0042"));
        QCOMPARE(r.genre, std::string("Jazz"));
    }

    void binaryPacksCarryNoText()
    {
        // A TOC pack of binary times without a zero, between the titles and
        // the codes, neither stores anything nor runs into the next string.
        const std::string packs =
            cdTextPack(0x80, 0, 0, 0, std::string("Album\0One\0", 10)) +
            cdTextPack(0x88, 1, 1, 0, "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c") +
            cdTextPack(0x8E, 0, 2, 0, std::string("0123456789\0", 11));
        const CdTextRecord r = CdTextReader::decode(withSizeInfo(packs, 1));
        QCOMPARE(title(r, 1), std::string("One"));
        QCOMPARE(r.text(0, CdTextRecord::Code), std::string("0123456789"));
    }

    // Text past the last track, a second language block and strings longer
    // than their slot: the titles left are these, the album's first.
    void blocksDecodeToTheirTitles_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("titles");
        const auto bytes = [](const Block& b) { return QByteArray::fromStdString(cdTextBlock(b)); };
        Block b;
        b.lastTrack = 1;
        b.texts[0x80] = {"Album", "One", "Two", "Three"};
        QTest::newRow("beyond the last track") << bytes(b) << QStringList{"Album", "One"};
        b.texts[0x80] = {std::string(200, 'x'), "One"};
        QTest::newRow("cut to the slot") << bytes(b) << QStringList{QString(160, 'x'), "One"};

        b.texts[0x80] = {"Album", "Song"};
        Block german = b;
        german.texts[0x80] = {"Platte", "Lied"};
        german.block = 1;
        german.firstSequence = static_cast<std::uint8_t>(cdTextBlock(b).size() / 18);
        QTest::newRow("only the first block")
            << bytes(b) + bytes(german) << QStringList{"Album", "Song"};
    }

    void blocksDecodeToTheirTitles()
    {
        QFETCH(QByteArray, data);
        QFETCH(QStringList, titles);
        const CdTextRecord r = CdTextReader::decode(data.toStdString());
        QCOMPARE(r.tracks.size(), std::size_t(titles.size()));
        for (int t = 0; t < titles.size(); ++t)
            QCOMPARE(QString::fromStdString(title(r, std::size_t(t))), titles.at(t));
    }

    void aShortSequenceDecodesNothing()
    {
        // Size information saying the block ends at sequence 2 leaves no
        // text packs to decode.
        const std::string data = cdTextPack(0x80, 1, 0, 0, "Lost") + sizeInfoPacks(1, 2, 1);
        const CdTextRecord r = CdTextReader::decode(data);
        QCOMPARE(r.tracks.size(), std::size_t{2});
        QCOMPARE(title(r, 1), std::string());

        // No packs at all: an empty album record, still CD-Text.
        QCOMPARE(CdTextReader::decode(std::string()).tracks.size(), std::size_t{1});
    }

    void aBlockPast256PacksIsReadWhole()
    {
        // One authoring tool lets a long block's sequence numbers wrap, so
        // the size information's last sequence number is its length less 256.
        Block b;
        b.lastTrack = 99;
        std::vector<std::string> titles;
        for (int t = 0; t <= 99; ++t)
            titles.push_back("Title number " + std::to_string(t) + std::string(27, '.'));
        b.texts[0x80] = titles;
        const std::string data = cdTextBlock(b);
        const std::size_t packs = data.size() / 18;
        QVERIFY(packs > 256);
        const CdTextRecord r = CdTextReader::decode(data);
        QCOMPARE(title(r, 0), titles[0]);
        QCOMPARE(title(r, 57), titles[57]);
        QCOMPARE(title(r, 99), titles[99]);
        QCOMPARE(r.largestBlockPacks, packs);
        QVERIFY(!r.fitsLeadIn());
        QVERIFY(r.leadInWarning().find(std::to_string(packs) + " packs") != std::string::npos);

        // A block that fits says nothing; 256 packs is the most that does.
        Block small;
        small.lastTrack = 1;
        small.texts[0x80] = {"Album", "One"};
        const CdTextRecord fits = CdTextReader::decode(cdTextBlock(small));
        QCOMPARE(fits.largestBlockPacks, std::size_t{4});
        QVERIFY(fits.fitsLeadIn());
        QCOMPARE(fits.leadInWarning(), std::string());
        CdTextRecord edge;
        edge.largestBlockPacks = 256;
        QVERIFY(edge.fitsLeadIn());
    }

    void genres_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("name"); // empty: the lookup fails
        QTest::newRow("1") << 1 << "Not Defined";
        QTest::newRow("20") << 20 << "Pop Music";
        QTest::newRow("21") << 21 << "Rap";
        QTest::newRow("22") << 22 << "Reggae";
        QTest::newRow("24") << 24 << "Rhythm & Blues";
        QTest::newRow("27") << 27 << "World Music";
        QTest::newRow("0") << 0 << "";
        QTest::newRow("28") << 28 << "";
    }

    void genres()
    {
        QFETCH(int, code);
        QFETCH(QString, name);
        const std::string data =
            withSizeInfo(cdTextPack(0x87, 0, 0, 0, std::string{'\0', static_cast<char>(code)}), 0);
        if (name.isEmpty()) {
            try {
                CdTextReader::decode(data);
                QFAIL("no exception");
            } catch (const std::out_of_range& e) {
                QCOMPARE(e.what(), "invalid map<K, T> key");
            }
        } else {
            QCOMPARE(QString::fromStdString(CdTextReader::decode(data).genre), name);
        }
        // A genre pack whose first code byte is set is ignored.
        const std::string ignored = withSizeInfo(
            cdTextPack(0x87, 0, 0, 0, std::string{'\x01', static_cast<char>(code)}), 0);
        QCOMPARE(CdTextReader::decode(ignored).genre, std::string());
    }

    void doubleByteTextIsCodePage932()
    {
        // "日本" then NEC's circled one and IBM's small roman one (only code
        // page 932 has the last two), each string ending in two zeros.
        const std::string nihon = "\x93\xfa\x96\x7b";
        const std::string necAndIbm = "\x87\x40\xfa\x40";
        Block b;
        b.lastTrack = 2;
        b.doubleByte = true;
        b.texts[0x80] = {nihon, necAndIbm, "\x82\xa0"};
        const CdTextRecord r = CdTextReader::decode(cdTextBlock(b));
        QVERIFY(r.doubleByte);
        QCOMPARE(cdTextString(r, 0, CdTextRecord::Title), QString::fromUtf8("日本"));
        QCOMPARE(cdTextString(r, 1, CdTextRecord::Title), QString::fromUtf8("①ⅰ"));
        QCOMPARE(cdTextString(r, 2, CdTextRecord::Title), QString::fromUtf8("あ"));

        // A lead byte without its trail byte cannot be converted: empty.
        QCOMPARE(CdTextReader::cp932ToUtf8("\x93"), std::string());
        QCOMPARE(CdTextReader::cp932ToUtf8("abc"), std::string("abc"));
    }

    void singleByteTextIsLatin1()
    {
        const std::string packs = cdTextPack(0x80, 1, 0, 0, std::string("Caf\xe9\0", 5));
        const CdTextRecord r = CdTextReader::decode(withSizeInfo(packs, 1));
        QCOMPARE(cdTextString(r, 1, CdTextRecord::Title), QString::fromUtf8("Café"));
    }

    void unreadableFileMeansNoCdText()
    {
        MemoryFileSource files;
        QVERIFY(!CdTextReader::read(files, "CDTEXT.BIN"));
        QVERIFY(!CdTextReader::read(files, ""));
        files.setFile("cdtext.bin", std::string());
        QVERIFY(CdTextReader::read(files, "CDTEXT.BIN")); // case-insensitive
    }
};

QTEST_GUILESS_MAIN(TestCdText)
#include "test_ddp_cdtext.moc"
