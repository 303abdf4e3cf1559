// The disc check: every rule broken by a generated disc gives its finding,
// by its exact id, and sound discs give none.
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "tools/mkddp/Mkddp.h"
#include "verify/DiscCheck.h"

#include <QStandardItemModel>
#include <QtTest>

#include <iterator>

namespace {

struct Checked
{
    LoadResult result;
    std::vector<Finding> findings;
};

// The generator's files loaded from memory, then checked.
Checked checked(const mkddp::DiscSpec& spec, bool withImage)
{
    MemoryFileSource source;
    for (const auto& [name, bytes] : mkddp::buildFiles(spec, withImage))
        source.setFile(name.toStdString(), bytes.toStdString());
    DDPModel model;
    QStandardItemModel table;
    Checked out;
    out.result = loadDdp(source, &table, model);
    const std::string cdText = source.content(model.fileNames().cdText).value_or(std::string());
    out.findings = checkDisc(model, cdText);
    return out;
}

std::vector<Finding> check(const mkddp::DiscSpec& spec, bool withImage = false)
{
    return checked(spec, withImage).findings;
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

// A rule broken on the base disc: the finding it must give, by id, with its
// severity and track (0: the disc), and whether the image is written.
struct BrokenRule
{
    const char* id;
    Finding::Severity severity;
    int track;
    bool withImage;
    void (*breakIt)(mkddp::DiscSpec&);
};

using S = mkddp::DiscSpec;
using F = mkddp::Fault;
constexpr Finding::Severity E = Finding::Error, W = Finding::Warning, N = Finding::Note;
const BrokenRule kRules[] = {
    {"track-too-short", E, 2, false, [](S& s) { s.tracks[1].frames = 4 * 75 - 1; }},
    {"first-pause-too-short", E, 1, false, [](S& s) { s.tracks[0].pauseFrames = 2 * 75 - 1; }},
    {"first-pause-too-short", E, 1, false, [](S& s) { s.tracks[0].pauseFrames = 0; }},
    {"disc-too-long", E, 0, false,
     [](S& s) { s.tracks[0].frames = (79 * 60 + 59) * 75 + 74 - 150 + 1; }},
    {"too-many-tracks", E, 0, false,
     [](S& s) {
         s = mkddp::simpleDisc(100, 4);
         s.upcEan = "4006381333931";
     }},
    {"track-number-sequence", E, 3, false, [](S& s) { s.faults = {F::TrackNumberGap}; }},
    {"index-sequence", E, 2, false,
     [](S& s) {
         s.tracks[1].indexOffsets = {150};
         s.faults = {F::IndexGap};
     }},
    {"track-without-index-01", E, 2, false,
     [](S& s) {
         s.tracks[1].pauseFrames = 75;
         s.faults = {F::NoIndex01};
     }},
    {"time-not-rising", E, 3, false, [](S& s) { s.faults = {F::TimeNotRising}; }},
    {"image-short", E, 0, true, [](S& s) { s.faults = {F::ImageCutShort}; }},
    {"image-long", W, 0, true, [](S& s) { s.faults = {F::ImageTooLong}; }},
    {"image-partial-frame", E, 0, true, [](S& s) { s.faults = {F::ImagePartialFrame}; }},
    {"isrc-invalid", E, 1, false, [](S& s) { s.faults = {F::BadIsrc}; }},
    {"isrc-duplicate", W, 2, false, [](S& s) { s.faults = {F::DuplicateIsrc}; }},
    {"upc-invalid", E, 0, false, [](S& s) { s.upcEan = "4006381333932"; }},
    {"upc-mismatch", W, 0, false, [](S& s) { s.faults = {F::UpcMismatch}; }},
    {"cdtext-crc", E, 0, false,
     [](S& s) {
         s.cdText = true;
         s.faults = {F::CdTextBadCrc};
     }},
    {"cdtext-too-large", E, 0, false, [](S& s) { mkddp::putLongCdText(s); }},
    {"cdtext-extra-track", W, 4, false,
     [](S& s) {
         s.cdText = true;
         s.faults = {F::CdTextExtraTrack};
     }},
    {"pre-emphasis", W, 1, false, [](S& s) { s.pqControl = "11"; }},
    {"copy-permitted", N, 1, false, [](S& s) { s.pqControl = "21"; }},
    {"four-channel", N, 1, false, [](S& s) { s.pqControl = "81"; }},
};

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
        for (int r = 0; r < int(std::size(kRules)); ++r)
            QTest::addRow("%d %s", r, kRules[r].id) << r;
    }

    void eachRuleBrokenByAGeneratedDisc()
    {
        QFETCH(int, rule);
        const BrokenRule& broken = kRules[rule];
        mkddp::DiscSpec spec = base();
        broken.breakIt(spec);
        const auto [result, findings] = checked(spec, broken.withImage);
        // Without the image the disc loads all the same, behind its error.
        QCOMPARE(int(result.kind),
                 int(broken.withImage ? ErrorKind::NoError : ErrorKind::ImageMissing));
        const Finding* finding = find(findings, broken.id);
        QVERIFY2(finding, qPrintable(ids(findings)));
        QCOMPARE(finding->severity, broken.severity);
        QCOMPARE(finding->track, broken.track);
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
};

QTEST_GUILESS_MAIN(TestVerifyDiscCheck)
#include "test_verify_disc_check.moc"
