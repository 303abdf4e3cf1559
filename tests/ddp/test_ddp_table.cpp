// PQ entries as times and positions, the ISRC pass and the track table rows.
#include "DdpTestBytes.h"

#include "ddp/CdTextReader.h"
#include "ddp/DdpImageReader.h"
#include "ddp/TrackTable.h"

#include <QtTest>

#include <cstring>

using namespace testbytes;

namespace {

std::vector<PqEntry> parse(const std::vector<Entry>& entries)
{
    return DdpImageReader::parsePqEntries(pqDescriptor(entries));
}

using Column = TrackTableRows::Column;

QString cell(const TrackTableRows& t, std::size_t row, int column)
{
    const auto& c = t.rows.at(row).at(static_cast<std::size_t>(column));
    return c ? *c : QStringLiteral("<none>");
}

template <typename Exception, typename F> QString failureText(F f)
{
    try {
        f();
    } catch (const Exception& e) {
        return QString::fromLatin1(e.what());
    }
    return QStringLiteral("<no exception>");
}

} // namespace

class TestTrackTable : public QObject
{
    Q_OBJECT

private slots:
    void timesIgnoreTheHoursField()
    {
        Entry e{"01", 1, 5, 7, 30};
        e.hours = 1;
        const PqEntry entry = parse({e})[0];
        QCOMPARE(entry.wholeSeconds(), 5 * 60 + 7);
        QCOMPARE(entry.bytePosition(), 307.0 * 176400 + 30 * 2352);

        // The largest two-digit time still fits the 32-bit products.
        const PqEntry last = parse({{"99", 1, 99, 99, 99}})[0];
        QCOMPARE(last.bytePosition(), (99.0 * 60 + 99) * 176400 + 99 * 2352);
    }

    void timeText()
    {
        QCOMPARE(::timeText(3725), std::string("62:05"));
        QCOMPARE(::timeText(59), std::string("00:59"));
        QCOMPARE(::timeText(0), std::string("00:00"));
        // The clock wraps at 24 hours, also going backwards.
        QCOMPARE(::timeText(24 * 3600 + 61), std::string("01:01"));
        QCOMPARE(::timeText(-1), std::string("1439:59"));
    }

    void durationsAreWholeSeconds()
    {
        const auto e = parse({{"01", 1, 0, 2, 40}, {"02", 1, 1, 2, 39}, {"03", 1, 1, 5, 39}});
        QCOMPARE(durationSeconds(e[0], e[1]), 59); // a frame short of a minute
        QCOMPARE(durationSeconds(e[1], e[2]), 3);
    }

    void numberFieldsThatHoldNoNumberFail()
    {
        const PqEntry entry = PqEntry::fromBytes("VVVS01  ");
        QCOMPARE(failureText<std::invalid_argument>([&] { entry.indexNumber(); }),
                 QStringLiteral("invalid stoi argument"));
        QCOMPARE(entry.trackNumber(), 1);
        QCOMPARE(PqEntry::fromBytes("VVVS 7 9").indexNumber(), 9); // stoi skips a blank
    }

    void isrcMovesFromThePauseToTheTrack()
    {
        std::vector<Entry> in = simpleEntries(2, {60, 60, 60});
        in[1].isrc = "DEA620000001";
        in[3].isrc = "DEA620000002"; // an index-1 entry after an index-1 one keeps its own
        in.insert(in.begin() + 4, {"03", 0, 2, 0, 0}); // a pause with a blank ISRC ...
        in[5].isrc = "DEA620000003";                   // ... blanks track 3's
        auto e = parse(in);
        correctIsrcs(e);
        QCOMPARE(e[2].isrc(), std::string_view("DEA620000001"));
        QCOMPARE(e[1].isrc(), std::string_view(std::string(12, '\0')));
        QCOMPARE(e[3].isrc(), std::string_view("DEA620000002"));
        QCOMPARE(e[5].isrc(), std::string_view(std::string(12, ' ')));
        QCOMPARE(e[4].isrc(), std::string_view(std::string(12, '\0')));

        // The last two entries are never touched, nor is anything when
        // N - 2 <= 1.
        std::vector<Entry> tail = {{"01", 0}, {"01", 1}, {"AA", 0}, {"AA", 1}};
        tail[2].isrc = "XXXXXXXXXXXX";
        auto t = parse(tail);
        correctIsrcs(t);
        QCOMPARE(t[3].isrc(), std::string_view(std::string(12, ' ')));
        QCOMPARE(t[1].isrc(), std::string_view(std::string(12, ' ')));
        auto three = parse({{"01", 0, 0, 0, 0, "AAAAAAAAAAAA"}, {"AA", 1}, {"AA", 0}});
        correctIsrcs(three);
        QCOMPARE(three[0].isrc(), std::string_view("AAAAAAAAAAAA"));
    }

    void leadInGap_data()
    {
        QTest::addColumn<int>("gap");
        QTest::addColumn<QStringList>("times"); // CD-Time of every row, the total last
        QTest::newRow("2 s: hidden and taken off the total")
            << 2 << QStringList{"00:00", "01:00", "Total: 01:30"};
        QTest::newRow("1 s: hidden, not taken off")
            << 1 << QStringList{"00:00", "01:00", "Total: 01:31"};
        QTest::newRow("3 s: shown as a pause row")
            << 3 << QStringList{"-00:03", "00:00", "01:00", "Total: 01:33"};
        QTest::newRow("0 s: an empty pause is hidden too")
            << 0 << QStringList{"00:00", "01:00", "Total: 01:30"};
    }

    void leadInGap()
    {
        QFETCH(int, gap);
        QFETCH(QStringList, times);
        const TrackTableRows t = buildTrackTableRows(parse(simpleEntries(gap, {60, 30})), nullptr);
        QStringList got;
        for (std::size_t r = 0; r < t.rows.size(); ++r)
            got << cell(t, r, Column::CdTime);
        QCOMPARE(got, times);
        QCOMPARE(t.indexList.size(), static_cast<std::size_t>(times.size() - 1));
        if (gap >= 3) {
            QCOMPARE(cell(t, 0, Column::Index), QStringLiteral("Pause"));
            QCOMPARE(cell(t, 0, Column::Duration), QStringLiteral("00:03"));
            QCOMPARE(t.indexList.front(), 0u);
        }
        // The total row holds nothing but its time.
        const auto& total = t.rows.back();
        for (int c = 0; c < TrackTableRows::kColumnCount; ++c)
            QCOMPARE(bool(total[static_cast<std::size_t>(c)]), c == Column::CdTime);
    }

    void tooFewEntriesMakeNoRows()
    {
        QVERIFY(
            buildTrackTableRows(parse({{"01", 1}, {"AA", 1}, {"AA", 0}}), nullptr).rows.empty());
        QVERIFY(buildTrackTableRows(parse({{"01", 0}, {"AA", 1}}), nullptr).rows.empty());
        // With one entry the total has no entry to come from.
        QCOMPARE(failureText<std::out_of_range>([] {
                     buildTrackTableRows(parse({{"01", 0}}), nullptr);
                 }),
                 QStringLiteral("invalid vector subscript"));
        // Four entries and a hidden gap: no track row, the total in row 0,
        // taken from the third entry.
        const auto four = buildTrackTableRows(
            parse({{"00", 0}, {"01", 0}, {"AA", 1, 0, 2}, {"AA", 0, 0, 2}}), nullptr);
        QCOMPARE(four.rows.size(), std::size_t{1});
        QCOMPARE(cell(four, 0, Column::CdTime), QStringLiteral("Total: 00:00"));
    }

    void rowCells()
    {
        std::vector<Entry> in = simpleEntries(2, {200, 100});
        in[1].isrc = "DEA620000001"; // at the pause, as mastering tools put it
        in[2].userText = "Mastered at Studio";
        in.insert(in.begin() + 3, {"01", 2, 1, 40, 0}); // index 02 inside track 1
        in.insert(in.begin() + 4, {"02", 0, 3, 19, 0}); // a pause before track 2

        Block b;
        b.lastTrack = 2;
        b.texts[0x80] = {"Album", "First", "Second"};
        b.texts[0x82] = {"", "Writer 1", ""};
        b.texts[0x84] = {"", "", "Arr 2"};
        const CdTextRecord cdText = CdTextReader::decode(cdTextBlock(b));

        auto entries = parse(in);
        correctIsrcs(entries);
        const TrackTableRows t = buildTrackTableRows(entries, &cdText);
        QCOMPARE(t.rows.size(), std::size_t{5});
        QCOMPARE(t.indexList, (std::vector<std::uint32_t>{1, 2, 0, 1}));

        // Track 1, index 1.
        QCOMPARE(cell(t, 0, Column::Type), QStringLiteral("<none>"));
        QCOMPARE(cell(t, 0, Column::Track), QStringLiteral("01"));
        QCOMPARE(cell(t, 0, Column::Index), QStringLiteral("Start 1"));
        QCOMPARE(cell(t, 0, Column::Duration), QStringLiteral("01:38"));
        QCOMPARE(cell(t, 0, Column::Title), QStringLiteral("First"));
        QCOMPARE(cell(t, 0, Column::Songwriter), QStringLiteral("Writer 1"));
        QCOMPARE(cell(t, 0, Column::Arranger), QStringLiteral(""));
        QCOMPARE(cell(t, 0, Column::Isrc), QStringLiteral("DEA620000001"));
        QCOMPARE(cell(t, 0, Column::Usertext), QStringLiteral("Mastered at Studio "));
        // Index 02 and the pause carry no CD-Text, and a blank user text
        // leaves no item while the blank ISRC still gets one.
        QCOMPARE(cell(t, 1, Column::Index), QStringLiteral("Start 2"));
        QCOMPARE(cell(t, 1, Column::CdTime), QStringLiteral("01:38"));
        QCOMPARE(cell(t, 1, Column::Title), QStringLiteral("<none>"));
        QCOMPARE(cell(t, 1, Column::Usertext), QStringLiteral("<none>"));
        QCOMPARE(cell(t, 1, Column::Isrc), QString(12, QLatin1Char(' ')));
        QCOMPARE(cell(t, 2, Column::Index), QStringLiteral("Pause"));
        QCOMPARE(cell(t, 2, Column::Title), QStringLiteral("<none>"));
        QCOMPARE(cell(t, 3, Column::Title), QStringLiteral("Second"));
        QCOMPARE(cell(t, 3, Column::Arranger), QStringLiteral("Arr 2"));
        QCOMPARE(cell(t, 3, Column::CdTime), QStringLiteral("03:20"));
        QCOMPARE(cell(t, 4, Column::CdTime), QStringLiteral("Total: 05:00"));
    }

    // Some authoring tools close the descriptor with one "AA" entry instead
    // of the pair: the table must be the same as with the pair, down to the
    // last track's row, its duration and the total.
    void aSingleLeadOutEntryShowsTheLastTrack_data()
    {
        QTest::addColumn<int>("gap");
        QTest::addColumn<bool>("lastTrackPause");
        QTest::newRow("2 s hidden pause") << 2 << false;
        QTest::newRow("1 s hidden pause") << 1 << false;
        QTest::newRow("3 s pause shown") << 3 << false;
        QTest::newRow("pause before the last track") << 2 << true;
    }

    void aSingleLeadOutEntryShowsTheLastTrack()
    {
        QFETCH(int, gap);
        QFETCH(bool, lastTrackPause);
        std::vector<Entry> pair = simpleEntries(gap, {60, 30, 45});
        for (std::size_t i = 2; i < pair.size() - 2; ++i)
            pair[i].isrc = "DEA62000000" + std::to_string(i);
        if (lastTrackPause) {
            // The ISRC sits at the pause and must move onto the track's start.
            Entry pause = pair[4];
            pause.index = 0;
            pause.seconds -= 3;
            pair[4].isrc = std::string(12, ' ');
            pair.insert(pair.begin() + 4, pause);
        }
        std::vector<Entry> single = pair;
        single.pop_back(); // "AA" 00

        auto withPair = parse(pair);
        auto withSingle = parse(single);
        QCOMPARE(leadOutEntryCount(withPair), std::size_t{2});
        QCOMPARE(leadOutEntryCount(withSingle), std::size_t{1});
        correctIsrcs(withPair);
        correctIsrcs(withSingle);
        const TrackTableRows expected = buildTrackTableRows(withPair, nullptr);
        const TrackTableRows got = buildTrackTableRows(withSingle, nullptr);
        QCOMPARE(got.rows, expected.rows);
        QCOMPARE(got.indexList, expected.indexList);

        // Not two equally wrong tables: the last track and the total are there.
        const std::size_t lastRow = got.rows.size() - 2;
        QCOMPARE(cell(got, lastRow, Column::Track), QStringLiteral("03"));
        QCOMPARE(cell(got, lastRow, Column::Index), QStringLiteral("Start 1"));
        QCOMPARE(cell(got, lastRow, Column::Duration), QStringLiteral("00:45"));
        QCOMPARE(cell(got, lastRow, Column::Isrc), QStringLiteral("DEA620000004"));
        QCOMPARE(cell(got, lastRow + 1, Column::CdTime),
                 QStringLiteral("Total: ") +
                     QString::fromStdString(::timeText(135 + (gap == 2 ? 0 : gap))));
    }

    void oddHoursAndControlFieldsAreNeverRead()
    {
        // Blank or "00" hours and control fields as authoring tools fill
        // them: nothing parses them, so times, rows and total stay put.
        const auto reference = parse(simpleEntries(2, {10, 20}));
        const TrackTableRows expected = buildTrackTableRows(reference, nullptr);
        for (const char* hours : {"  ", "00", "\0\0"}) {
            for (const char* control : {"01  ", "11  ", "A1  ", "B1  ", "0S  ", "41  ", "    "}) {
                auto entries = reference;
                for (PqEntry& e : entries) {
                    std::memcpy(e.bytes.data() + 8, hours, 2);
                    std::memcpy(e.bytes.data() + 16, control, 4);
                }
                QCOMPARE(entries[2].bytePosition(), reference[2].bytePosition());
                QCOMPARE(buildTrackTableRows(entries, nullptr).rows, expected.rows);
                QCOMPARE(pqAudioBytes(entries), pqAudioBytes(reference));
            }
        }
    }

    void faultsInTheEntries()
    {
        // A track beyond the CD-Text's last record.
        Block b;
        b.lastTrack = 1;
        b.texts[0x80] = {"Album", "One"};
        const CdTextRecord cdText = CdTextReader::decode(cdTextBlock(b));
        const auto entries = parse(simpleEntries(2, {10, 10, 10}));
        QCOMPARE(failureText<std::out_of_range>([&] { buildTrackTableRows(entries, &cdText); }),
                 QStringLiteral("invalid vector subscript"));
        // An index field with letters.
        auto bad = simpleEntries(2, {10, 10});
        auto e = parse(bad);
        e[2].bytes[6] = 'x';
        e[2].bytes[7] = 'y';
        QCOMPARE(failureText<std::invalid_argument>([&] { buildTrackTableRows(e, nullptr); }),
                 QStringLiteral("invalid stoi argument"));
    }
};

QTEST_GUILESS_MAIN(TestTrackTable)
#include "test_ddp_table.moc"
