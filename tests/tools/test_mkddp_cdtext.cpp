// CD-Text packs: CRCs, strings running across packs, size information,
// genre, double-byte text and a second language block.
#include "tools/mkddp/Mkddp.h"

#include <QtTest>

#include <map>

using namespace mkddp;

namespace {

struct Pack
{
    quint8 type, track, sequence, flags;
    QByteArray text;
    quint16 crc;
};

QVector<Pack> packsOf(const QByteArray& bytes)
{
    QVector<Pack> packs;
    for (int i = 0; i + 18 <= bytes.size(); i += 18) {
        const auto* p = reinterpret_cast<const quint8*>(bytes.constData() + i);
        packs.append({p[0], p[1], p[2], p[3], bytes.mid(i + 4, 12), quint16(p[16] << 8 | p[17])});
    }
    return packs;
}

// The strings of one pack type in one block, split at each terminator.
QList<QByteArray> stringsOf(const QVector<Pack>& packs, quint8 type, int terminatorLength = 1)
{
    QByteArray all;
    for (const Pack& p : packs) {
        if (p.type == type)
            all += p.text;
    }
    QList<QByteArray> strings = all.split('\0');
    if (terminatorLength == 2) {
        QList<QByteArray> pairs; // "a\0\0b\0\0" splits into a, "", b, ""
        for (int i = 0; i < strings.size(); i += 2)
            pairs.append(strings.at(i));
        strings = pairs;
    }
    while (!strings.isEmpty() && strings.last().isEmpty())
        strings.removeLast();
    return strings;
}

QByteArray sizeInfo(const QVector<Pack>& block)
{
    QByteArray info;
    for (const Pack& p : block) {
        if (p.type == 0x8F)
            info += p.text;
    }
    return info;
}

int byteAt(const QByteArray& bytes, int i)
{
    return quint8(bytes.at(i));
}

} // namespace

class TestMkddpCdText : public QObject
{
    Q_OBJECT

private slots:
    void packCrc()
    {
        // Reference values from an independent CRC-16/CCITT (XMODEM), inverted.
        const char title[] = "\x80\x00\x00\x00Harbour Sess";
        QCOMPARE(cdTextCrc(title), quint16(0xDA9F));
        const char size[16] = {char(0x8F), 0, 5, 0};
        QCOMPARE(cdTextCrc(size), quint16(0x0850));

        const QVector<Pack> packs = packsOf(cdTextBytes(realisticDisc()));
        QVERIFY(!packs.isEmpty());
        const QByteArray bytes = cdTextBytes(realisticDisc());
        for (int i = 0; i < packs.size(); ++i)
            QCOMPARE(packs.at(i).crc, cdTextCrc(bytes.constData() + 18 * i));
    }

    void stringsRunAcrossPacks()
    {
        const DiscSpec spec = realisticDisc();
        const QByteArray bytes = cdTextBytes(spec);
        QCOMPARE(bytes.size() % 18, 0);
        const QVector<Pack> packs = packsOf(bytes);

        const QList<QByteArray> titles = stringsOf(packs, 0x80);
        QCOMPARE(titles.size(), 8);
        QCOMPARE(titles.at(0), QByteArray("Harbour Sessions"));
        QCOMPARE(titles.at(2), QByteArray("A Long Title That Runs Across Several Packs"));
        QCOMPARE(titles.at(7), QByteArray("Hidden Shore"));

        // Each pack names the track of its first byte and how many characters
        // of that string came before it.
        QVector<Pack> titlePacks;
        for (const Pack& p : packs) {
            if (p.type == 0x80)
                titlePacks.append(p);
        }
        QCOMPARE(titlePacks.at(0).track, quint8(0));
        QCOMPARE(titlePacks.at(1).track, quint8(0)); // "ions" of the album title
        QCOMPARE(titlePacks.at(1).flags & 0x0F, 12);
        QCOMPARE(titlePacks.at(2).track, quint8(1)); // " Credits"
        QCOMPARE(titlePacks.at(2).flags & 0x0F, 7);
        QCOMPARE(titlePacks.at(4).track, quint8(2)); // 15 characters into the long title
        QCOMPARE(titlePacks.at(4).flags & 0x0F, 15);
        QCOMPARE(titlePacks.at(5).track, quint8(2)); // 27 characters in: capped at 15
        QCOMPARE(titlePacks.at(5).flags & 0x0F, 15);

        // Types in ascending order, sequence numbers consecutive from 0.
        for (int i = 0; i < packs.size(); ++i) {
            QCOMPARE(int(packs.at(i).sequence), i);
            if (i > 0)
                QVERIFY(packs.at(i).type >= packs.at(i - 1).type);
        }

        QCOMPARE(stringsOf(packs, 0x86), QList<QByteArray>{"TVR-0001"});
        const QList<QByteArray> codes = stringsOf(packs, 0x8E);
        QCOMPARE(codes.at(0), QByteArray("4006381333931"));
        QCOMPARE(codes.at(3), QByteArray("DEA7F2600003"));
        // Composer only for track 4: album and tracks 1 to 3 are empty strings.
        QCOMPARE(stringsOf(packs, 0x83), (QList<QByteArray>{"", "", "", "", "Jonas Okafor"}));
    }

    void sizeInformation()
    {
        const DiscSpec spec = realisticDisc();
        const QVector<Pack> packs = packsOf(cdTextBytes(spec));
        QCOMPARE(packs.at(packs.size() - 3).type, quint8(0x8F));
        QCOMPARE(packs.last().track, quint8(2));
        const QByteArray info = sizeInfo(packs);
        QCOMPARE(info.size(), 36);
        QCOMPARE(byteAt(info, 0), 0x00); // ISO 8859-1
        QCOMPARE(byteAt(info, 1), 1);
        QCOMPARE(byteAt(info, 2), 7);                 // last track
        QCOMPARE(byteAt(info, 20), packs.size() - 1); // last sequence number of block 0
        QCOMPARE(byteAt(info, 21), 0);                // no block 1
        QCOMPARE(byteAt(info, 28), 0x09);             // English
        std::map<int, int> counts;
        for (const Pack& p : packs)
            ++counts[p.type];
        for (int type = 0x80; type <= 0x8F; ++type)
            QCOMPARE(byteAt(info, 4 + type - 0x80), counts[type]);

        DiscSpec low = spec;
        low.faults = {Fault::CdTextLastTrackTooLow};
        QCOMPARE(byteAt(sizeInfo(packsOf(cdTextBytes(low))), 2), 6);
    }

    void genre()
    {
        DiscSpec spec = realisticDisc();
        spec.genreText = "Disco";
        auto genrePack = [](const DiscSpec& s) {
            for (const Pack& p : packsOf(cdTextBytes(s))) {
                if (p.type == 0x87)
                    return p;
            }
            return Pack{};
        };
        Pack p = genrePack(spec);
        QCOMPARE(p.type, quint8(0x87));
        QCOMPARE(p.text.left(8), QByteArray("\x00\x08"
                                            "Disco\x00",
                                            8));
        spec.faults = {Fault::CdTextBadGenre};
        QCOMPARE(byteAt(genrePack(spec).text, 1), 28);
        spec.faults.clear();
        spec.genre = 0;
        QCOMPARE(genrePack(spec).type, quint8(0));
    }

    void doubleByte()
    {
        DiscSpec spec = simpleDisc(2, 5);
        spec.cdText = true;
        spec.doubleByte = true;
        spec.album.title = QStringLiteral("テスト盤");
        spec.tracks[0].text.title = QStringLiteral("曲");
        const QVector<Pack> packs = packsOf(cdTextBytes(spec));
        QVERIFY(packs.first().flags & 0x80);
        QCOMPARE(byteAt(sizeInfo(packs), 0), 0x80); // MS-JIS
        // Code page 932, each string ending in two zero bytes.
        const QList<QByteArray> titles = stringsOf(packs, 0x80, 2);
        QCOMPARE(titles.at(0), QByteArray("\x83\x65\x83\x58\x83\x67\x94\xD5"));
        QCOMPARE(titles.at(1), QByteArray("\x8B\xC8"));
        QCOMPARE(titles.at(2), QByteArray("Track 2"));

        spec.faults = {Fault::CdTextBadDoubleByte};
        QCOMPARE(stringsOf(packsOf(cdTextBytes(spec)), 0x80, 2).at(1),
                 QByteArray("\x81\x7F\xFF\xFE"));
    }

    void extraTrackAndSecondBlock()
    {
        DiscSpec spec = simpleDisc(2, 5);
        spec.cdText = true;
        spec.faults = {Fault::CdTextExtraTrack};
        const QVector<Pack> extra = packsOf(cdTextBytes(spec));
        QCOMPARE(stringsOf(extra, 0x80).size(), 4);
        QCOMPARE(byteAt(sizeInfo(extra), 2), 2);

        spec.faults.clear();
        spec.secondBlock = {{QStringLiteral("Zweites Album"), {}, {}, {}, {}, {}, {}},
                            {QStringLiteral("Erstes Stück"), {}, {}, {}, {}, {}, {}},
                            {QStringLiteral("Zweites Stück"), {}, {}, {}, {}, {}, {}}};
        const QVector<Pack> packs = packsOf(cdTextBytes(spec));
        int split = 0;
        while (packs.at(split).flags >> 4 == 0)
            ++split;
        const QVector<Pack> first = packs.mid(0, split);
        const QVector<Pack> second = packs.mid(split);
        QCOMPARE(first.last().type, quint8(0x8F));
        QCOMPARE(second.last().type, quint8(0x8F));
        QCOMPARE(second.first().sequence, quint8(0)); // numbering restarts in each block
        for (const Pack& p : second)
            QCOMPARE((p.flags >> 4) & 0x07, 1);
        QCOMPARE(stringsOf(second, 0x80).at(1), QByteArray("Erstes St\xFC"
                                                           "ck"));
        // Both blocks' size information names both blocks.
        for (const QVector<Pack>& block : {first, second}) {
            const QByteArray info = sizeInfo(block);
            QCOMPARE(byteAt(info, 20), first.size() - 1);
            QCOMPARE(byteAt(info, 21), second.size() - 1);
            QCOMPARE(byteAt(info, 29), 0x08);
        }
    }
};

QTEST_GUILESS_MAIN(TestMkddpCdText)
#include "test_mkddp_cdtext.moc"
