// DDPID, DDPMS and PQ descriptor bytes, file names, and the faults.
#include "tools/mkddp/Mkddp.h"

#include <QtTest>

using namespace mkddp;

namespace {

QByteArray field(const QByteArray& bytes, int offset, int width)
{
    return bytes.mid(offset, width);
}

int number(const QByteArray& bytes, int offset)
{
    return field(bytes, offset, 2).toInt();
}

QByteArray packet(const QByteArray& ms, int i)
{
    return ms.mid(128 * i, 128);
}

} // namespace

class TestMkddpRecords : public QObject
{
    Q_OBJECT

private slots:
    // Both levels of the identifier; the bad-tag fault keeps the rest.
    void ddpid()
    {
        DiscSpec spec = realisticDisc();
        for (const QByteArray& level : {QByteArray("DDP 2.00"), QByteArray("DDP 1.01")}) {
            spec.ddpLevel = level;
            spec.faults = {};
            QByteArray id = ddpidBytes(spec);
            QCOMPARE(id.size(), 128);
            QCOMPARE(field(id, 0, 8), level);
            QCOMPARE(field(id, 8, 13), QByteArray("4006381333931"));
            if (level == "DDP 1.01")
                QVERIFY(field(id, 87, 2) != "DA"); // no media type field in 1.01

            spec.faults = {Fault::DdpidBadTag};
            id = ddpidBytes(spec);
            QVERIFY(!id.startsWith("DDP "));
            QCOMPARE(field(id, 8, 13), QByteArray("4006381333931"));
        }
    }

    void mapPackets()
    {
        const DiscSpec spec = realisticDisc();
        const QByteArray ms = ddpmsBytes(spec);
        QCOMPARE(ms.size(), 3 * 128);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(field(packet(ms, i), 0, 4), QByteArray("VVVM"));

        const QByteArray image = packet(ms, 0);
        QCOMPARE(field(image, 4, 2), QByteArray("D0"));
        QCOMPARE(field(image, 74, 17), QByteArray("IMAGE.DAT        "));
        QCOMPARE(field(image, 30, 8), QByteArray(8, ' '));

        const QByteArray pq = packet(ms, 1);
        QVERIFY(field(pq, 4, 2) != "D0");
        QCOMPARE(field(pq, 30, 8), QByteArray("PQ DESCR"));
        QCOMPARE(field(pq, 74, 17), QByteArray("PQDESCR          "));

        const QByteArray cdText = packet(ms, 2);
        QCOMPARE(field(cdText, 30, 8), QByteArray("CDTEXT  "));
        QCOMPARE(field(cdText, 74, 17), QByteArray("CDTEXT.BIN       "));
    }

    void fileNames()
    {
        DiscSpec spec = realisticDisc();
        spec.cdTextName = "CD TEXT.BIN";
        spec.zeroPadNames = true;
        spec.lowerCaseOnDisk = true;
        const QByteArray ms = ddpmsBytes(spec);
        QCOMPARE(field(packet(ms, 0), 74, 17), QByteArray("IMAGE.DAT").leftJustified(17, '\0'));
        QCOMPARE(field(packet(ms, 2), 74, 17), QByteArray("CD TEXT.BIN").leftJustified(17, '\0'));

        QCOMPARE(cdTextFileName(spec), QStringLiteral("cdtext.bin"));
        const DiscFiles files = buildFiles(spec);
        const QStringList expected = {QStringLiteral("cdtext.bin"), QStringLiteral("ddpid"),
                                      QStringLiteral("ddpms"), QStringLiteral("pqdescr")};
        QStringList names;
        for (const auto& entry : files)
            names.append(entry.first);
        QCOMPARE(names, expected);
    }

    // Every entry's time fields, read back by the player's rule, give the
    // byte position that the layout promises, and the layout agrees with the
    // track lengths and pauses.
    void pqEntryPositions()
    {
        const DiscSpec spec = realisticDisc();
        const QByteArray pq = pqBytes(spec);
        const QVector<LayoutEntry> layout = pqLayout(spec);
        // lead-in, 7 index 01, 4 pauses, 1 index 02, 2 lead-out
        QCOMPARE(layout.size(), 15);
        QCOMPARE(pq.size(), 64 * layout.size());
        for (int i = 0; i < layout.size(); ++i) {
            const QByteArray e = pq.mid(64 * i, 64);
            QCOMPARE(field(e, 0, 4), QByteArray("VVVS"));
            QCOMPARE(field(e, 4, 2), layout.at(i).track);
            QCOMPARE(number(e, 6), layout.at(i).index);
            QCOMPARE(field(e, 8, 2), QByteArray("00"));
            const qint64 position =
                qint64(number(e, 10) * 60 + number(e, 12)) * 176400 + number(e, 14) * 2352;
            QCOMPARE(position, layout.at(i).bytePosition());
        }
        QCOMPARE(layout.first().track, QByteArray("00"));
        QCOMPARE(layout.at(1).index, 0); // the first pause
        QCOMPARE(layout.at(2).bytePosition(), qint64(2 * 176400));
        QCOMPARE(layout.at(layout.size() - 2).track, QByteArray("AA"));
        QCOMPARE(layout.at(layout.size() - 2).index, 1);
        QCOMPARE(layout.last().index, 0);
        QCOMPARE(layout.last().bytePosition(), imageSize(spec));

        // Track 3: a pause of 1 s 37 frames, index 02 12 s 30 frames in.
        const qint64 start3 = indexPosition(spec, 3, 1);
        QCOMPARE(indexPosition(spec, 3, 0), start3 - 112 * 2352);
        QCOMPARE(indexPosition(spec, 3, 2), start3 + (12 * 75 + 30) * 2352);
        QCOMPARE(indexPosition(spec, 3, 3), qint64(-1));
        qint64 expectedImage = 0;
        for (const TrackSpec& t : spec.tracks)
            expectedImage += qint64(t.frames + t.pauseFrames) * 2352;
        QCOMPARE(imageSize(spec), expectedImage);
    }

    void pqEntryFields()
    {
        DiscSpec spec = realisticDisc();
        spec.pqHours = 1;
        const QByteArray pq = pqBytes(spec);
        auto entry = [&](int i) { return pq.mid(64 * i, 64); };
        QCOMPARE(field(entry(0), 32, 13), QByteArray("4006381333931")); // UPC/EAN at the lead-in
        QCOMPARE(field(entry(0), 20, 12), QByteArray(12, ' '));
        QCOMPARE(field(entry(1), 20, 12), QByteArray("DEA7F2600001")); // the pause carries it
        QCOMPARE(field(entry(2), 20, 12), QByteArray("DEA7F2600001"));
        QCOMPARE(field(entry(2), 45, 19), QByteArray("take 3").leftJustified(19, ' '));
        QCOMPARE(field(entry(1), 45, 19), QByteArray(19, ' '));
        QCOMPARE(field(entry(2), 32, 13), QByteArray(13, ' '));
        QCOMPARE(field(entry(2), 8, 2), QByteArray("01"));

        spec.tracks[0].pauseIsrc = QByteArray();
        QCOMPARE(field(pqBytes(spec), 64 + 20, 12), QByteArray(12, ' '));
    }

    // The variants other authoring tools write, which the reader must take:
    // each option has to reach the bytes, or the reader's tests prove nothing.
    void authoringToolVariants()
    {
        DiscSpec spec = simpleDisc(2, 5);
        const int pairCount = int(pqBytes(spec).size() / 64);
        spec.leadOutEntries = 1;
        spec.blankHours = true;
        spec.pqControl = "0S";
        const QByteArray pq = pqBytes(spec);
        QCOMPARE(int(pq.size() / 64), pairCount - 1);
        QCOMPARE(field(pq, pq.size() - 64 + 4, 4), QByteArray("AA01"));
        QCOMPARE(field(pq, pq.size() - 128 + 4, 2), QByteArray("02"));
        for (int i = 0; i < pq.size(); i += 64) {
            QCOMPARE(field(pq, i + 8, 2), QByteArray("  "));
            QCOMPARE(field(pq, i + 16, 4), QByteArray("0S  "));
        }
    }

    void expectedTable()
    {
        // Just the lead-in and two lead-out entries: nothing to show.
        DiscSpec empty = simpleDisc(0, 10);
        QCOMPARE(pqLayout(empty).size(), 3);
        QVERIFY(expectedRows(empty).isEmpty());

        const DiscSpec spec = realisticDisc();
        const QJsonArray rows = expectedRows(spec);
        QCOMPARE(rows.size(), 12); // 11 entry rows (first pause hidden), then the total
        const QJsonArray first = rows.at(0).toArray();
        QCOMPARE(first.size(), 13);
        QVERIFY(first.at(0).isNull());
        QCOMPARE(first.at(1).toString(), QStringLiteral("01"));
        QCOMPARE(first.at(2).toString(), QStringLiteral("Start 1"));
        QCOMPARE(first.at(3).toString(), QStringLiteral("00:00"));
        QCOMPARE(first.at(4).toString(), QStringLiteral("00:31"));
        QCOMPARE(first.at(5).toString(), QStringLiteral("Opening Credits"));
        QCOMPARE(first.at(12).toString(), QStringLiteral("take 3             "));
        const QJsonArray pause = rows.at(2).toArray();
        QCOMPARE(pause.at(2).toString(), QStringLiteral("Pause"));
        QVERIFY(pause.at(5).isNull());
        QCOMPARE(pause.at(11).toString(), QString()); // the ISRC moved on to index 01
        const QJsonArray total = rows.last().toArray();
        // 4:36 to the lead-out, less the hidden two-second pause
        QCOMPARE(total.at(3).toString(), QStringLiteral("Total: 04:34"));
        QCOMPARE(expectedIndexList(spec).size(), 11);
    }

    void faultNames()
    {
        const QVector<Fault> faults = allFaults();
        QCOMPARE(faults.size(), allFaultNames().size());
        for (Fault f : faults) {
            QCOMPARE(faultFromName(faultName(f)), std::optional<Fault>(f));
            QVERIFY(expectedKind(f) >= 5 && expectedKind(f) <= 12);
        }
        QCOMPARE(faultFromName(QStringLiteral("no-such-fault")), std::nullopt);
    }

    // Each fault changes the disc, and the ones that remove or break a record
    // do exactly that.
    void faultsChangeTheDisc()
    {
        DiscSpec clean = realisticDisc();
        clean.tracks.resize(3);
        for (TrackSpec& t : clean.tracks)
            t.frames = cdFrames(2);
        clean.tracks[2].indexOffsets = {cdFrames(1)};
        for (Fault f : allFaults()) {
            DiscSpec spec = clean;
            spec.doubleByte = f == Fault::CdTextBadDoubleByte;
            const DiscFiles sound = buildFiles(spec, true);
            spec.faults = {f};
            QVERIFY2(buildFiles(spec, true) != sound, qPrintable(faultName(f)));
        }

        // One file of the disc with fault `f`; "<absent>" when it is not written.
        auto file = [&](Fault f, const char* name) {
            DiscSpec spec = clean;
            spec.faults = {f};
            const DiscFiles files = buildFiles(spec, true);
            const auto it = files.find(QString::fromLatin1(name));
            return it == files.end() ? QByteArray("<absent>") : it->second;
        };
        const std::pair<Fault, const char*> removed[] = {{Fault::NoDdpid, "DDPID"},
                                                         {Fault::NoDdpms, "DDPMS"},
                                                         {Fault::NoPqFile, "PQDESCR"},
                                                         {Fault::NoImageFile, "IMAGE.DAT"},
                                                         {Fault::NoCdTextFile, "CDTEXT.BIN"}};
        for (const auto& [f, name] : removed)
            QCOMPARE(file(f, name), QByteArray("<absent>"));
        QVERIFY(file(Fault::CdTextEmptyFile, "CDTEXT.BIN").isEmpty());
        QVERIFY(file(Fault::DdpmsEmpty, "DDPMS").isEmpty());

        const QByteArray badFirst = file(Fault::DdpmsBadFirstTag, "DDPMS");
        QVERIFY(!badFirst.startsWith("VVVM"));
        QCOMPARE(field(badFirst, 128, 4), QByteArray("VVVM"));

        // Garbage after the first packet; the PQ packet still follows.
        const QByteArray garbage = file(Fault::DdpmsGarbagePackets, "DDPMS");
        QCOMPARE(garbage.size(), 5 * 128);
        QVERIFY(!packet(garbage, 1).startsWith("VVVM") && !packet(garbage, 2).startsWith("VVVM"));
        QCOMPARE(field(packet(garbage, 3), 30, 8), QByteArray("PQ DESCR"));

        const QByteArray shortLast = file(Fault::DdpmsShortLastPacket, "DDPMS");
        QCOMPARE(shortLast.size(), 2 * 128 + 100);
        QCOMPARE(field(shortLast, 256 + 74, 10), QByteArray("CDTEXT.BIN"));

        const QByteArray noPq = file(Fault::NoPqPacket, "DDPMS");
        const QByteArray noImage = file(Fault::NoImagePacket, "DDPMS");
        QCOMPARE(noPq.size(), 2 * 128);
        QCOMPARE(noImage.size(), 2 * 128);
        QVERIFY(!noPq.contains("PQ DESCR"));
        QCOMPARE(field(noImage, 30, 8), QByteArray("PQ DESCR"));

        QVERIFY(file(Fault::PqBadTag, "PQDESCR").startsWith("VVVX"));
        const QByteArray notANumber = file(Fault::PqNotANumber, "PQDESCR");
        QCOMPARE(field(notANumber, 2 * 64 + 6, 2), QByteArray("01")); // track 1, index 01
        QCOMPARE(field(notANumber, 2 * 64 + 10, 2), QByteArray("ab"));
        QCOMPARE(file(Fault::PqTruncatedLast, "PQDESCR").size(), pqBytes(clean).size() - 24);
    }
};

QTEST_GUILESS_MAIN(TestMkddpRecords)
#include "test_mkddp_records.moc"
