// The disc check: every rule broken by a generated disc gives its finding,
// by its exact id, and sound discs give none.
#include "VerifyTestSupport.h"

#include "verify/DiscCheck.h"

#include <QtTest>

#include <functional>

using verifytest::loadInMemory;

namespace {

std::vector<Finding> check(const mkddp::DiscSpec& spec, bool withImage = false)
{
    const verifytest::MemoryDisc disc = loadInMemory(spec, withImage);
    return checkDisc(*disc.model, disc.cdTextBytes(), disc.pqBytes());
}

const Finding* find(const std::vector<Finding>& findings, const std::string& id)
{
    for (const Finding& f : findings)
        if (f.id == id)
            return &f;
    return nullptr;
}

QString ids(const std::vector<Finding>& findings)
{
    QStringList list;
    for (const Finding& f : findings)
        list << QString::fromStdString(f.id);
    return list.join(QLatin1Char(' '));
}

mkddp::DiscSpec base()
{
    mkddp::DiscSpec spec = mkddp::simpleDisc(3, 10);
    spec.upcEan = "4006381333931"; // a valid EAN-13
    return spec;
}

} // namespace

class TestVerifyDiscCheck : public QObject
{
    Q_OBJECT

private slots:
    void soundDiscsHaveNoErrorsOrWarnings()
    {
        for (bool withImage : {false, true}) {
            const std::vector<Finding> findings = check(base(), withImage);
            QVERIFY2(findings.empty(), qPrintable(ids(findings)));
        }
        // Pauses between tracks, an index 02, ISRCs, CD-Text.
        const std::vector<Finding> realistic = check(mkddp::realisticDisc(), true);
        for (const Finding& f : realistic)
            QVERIFY2(f.severity == Finding::Note, qPrintable(ids(realistic)));
        // Without a barcode: a note, nothing more.
        const std::vector<Finding> noBarcode = check(mkddp::simpleDisc(3, 10));
        QCOMPARE(ids(noBarcode), QStringLiteral("upc-none"));
        QCOMPARE(noBarcode.front().severity, Finding::Note);
    }

    void eachRuleBrokenByAGeneratedDisc_data()
    {
        QTest::addColumn<int>("rule");
        QTest::addColumn<QString>("id");
        QTest::addColumn<int>("severity");
        QTest::addColumn<int>("track");
        QTest::addColumn<bool>("withImage");
        using S = mkddp::DiscSpec;
        using F = mkddp::Fault;
        rules = {
            [](S& s) { s.tracks[1].frames = 4 * 75 - 1; },
            [](S& s) { s.tracks[0].pauseFrames = 2 * 75 - 1; },
            [](S& s) { s.tracks[0].pauseFrames = 0; },
            [](S& s) { s.tracks[0].frames = (79 * 60 + 59) * 75 + 74 - 150 + 1; },
            [](S& s) {
                s = mkddp::simpleDisc(100, 4);
                s.upcEan = "4006381333931";
            },
            [](S& s) { s.faults = {F::TrackNumberGap}; },
            [](S& s) {
                s.tracks[1].indexOffsets = {150};
                s.faults = {F::IndexGap};
            },
            [](S& s) {
                s.tracks[1].pauseFrames = 75;
                s.faults = {F::NoIndex01};
            },
            [](S& s) { s.faults = {F::TimeNotRising}; },
            [](S& s) { s.faults = {F::ImageCutShort}; },
            [](S& s) { s.faults = {F::ImageTooLong}; },
            [](S& s) { s.faults = {F::ImagePartialFrame}; },
            [](S& s) { s.faults = {F::BadIsrc}; },
            [](S& s) { s.faults = {F::DuplicateIsrc}; },
            [](S& s) { s.upcEan = "4006381333932"; },
            [](S& s) { s.faults = {F::UpcMismatch}; },
            [](S& s) {
                s.cdText = true;
                s.faults = {F::CdTextBadCrc};
            },
            [](S& s) { mkddp::putLongCdText(s); },
            [](S& s) {
                s.cdText = true;
                s.faults = {F::CdTextExtraTrack};
            },
            [](S& s) { s.pqControl = "11"; },
            [](S& s) { s.pqControl = "21"; },
            [](S& s) { s.pqControl = "81"; },
        };
        const int E = Finding::Error, W = Finding::Warning, N = Finding::Note;
        int r = 0;
        auto row = [&](const char* id, int severity, int track, bool withImage = false) {
            QTest::addRow("%d %s", r, id)
                << r << QString::fromLatin1(id) << severity << track << withImage;
            ++r;
        };
        row("track-too-short", E, 2);
        row("first-pause-too-short", E, 1);
        row("first-pause-too-short", E, 1);
        row("disc-too-long", E, 0);
        row("too-many-tracks", E, 0);
        row("track-number-sequence", E, 3);
        row("index-sequence", E, 2);
        row("track-without-index-01", E, 2);
        row("time-not-rising", E, 3);
        row("image-short", E, 0, true);
        row("image-long", W, 0, true);
        row("image-partial-frame", E, 0, true);
        row("isrc-invalid", E, 1);
        row("isrc-duplicate", W, 2);
        row("upc-invalid", E, 0);
        row("upc-mismatch", W, 0);
        row("cdtext-crc", E, 0);
        row("cdtext-too-large", E, 0);
        row("cdtext-extra-track", W, 4);
        row("pre-emphasis", W, 1);
        row("copy-permitted", N, 1);
        row("four-channel", N, 1);
        QCOMPARE(r, int(rules.size()));
    }

    void eachRuleBrokenByAGeneratedDisc()
    {
        QFETCH(int, rule);
        QFETCH(QString, id);
        QFETCH(int, severity);
        QFETCH(int, track);
        QFETCH(bool, withImage);
        mkddp::DiscSpec spec = base();
        rules.at(std::size_t(rule))(spec);
        const verifytest::MemoryDisc disc = loadInMemory(spec, withImage);
        // Without the image the disc loads all the same, behind its error.
        QCOMPARE(int(disc.result.kind),
                 int(withImage ? ErrorKind::NoError : ErrorKind::ImageMissing));
        const std::vector<Finding> findings =
            checkDisc(*disc.model, disc.cdTextBytes(), disc.pqBytes());
        const Finding* finding = find(findings, id.toStdString());
        QVERIFY2(finding, qPrintable(ids(findings)));
        QCOMPARE(int(finding->severity), severity);
        QCOMPARE(finding->track, track);
        QVERIFY(!finding->text.isEmpty());
    }

    void limitsAreInclusive()
    {
        // Exactly 4 s, exactly 2 s of first pause, exactly 79:59:74: all fine.
        mkddp::DiscSpec spec = base();
        spec.tracks[1].frames = 4 * 75;
        spec.tracks[0].pauseFrames = 2 * 75;
        spec.tracks[2].frames = (79 * 60 + 59) * 75 + 74 - 150 - spec.tracks[0].frames - 300;
        const std::vector<Finding> findings = check(spec);
        QVERIFY2(findings.empty(), qPrintable(ids(findings)));
    }

    void summaryCountsBySeverity()
    {
        std::vector<Finding> findings;
        QCOMPARE(findingsSummary(findings), QString());
        findings.push_back({"a", Finding::Warning, 0, {}});
        findings.push_back({"b", Finding::Note, 0, {}});
        QCOMPARE(findingsSummary(findings), QStringLiteral("1 warning"));
        findings.push_back({"c", Finding::Warning, 0, {}});
        findings.push_back({"d", Finding::Error, 0, {}});
        QCOMPARE(findingsSummary(findings), QStringLiteral("1 error, 2 warnings"));
    }

private:
    std::vector<std::function<void(mkddp::DiscSpec&)>> rules;
};

QTEST_GUILESS_MAIN(TestVerifyDiscCheck)
#include "test_verify_disc_check.moc"
