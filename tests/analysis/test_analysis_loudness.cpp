// Loudness, loudness range, peaks and clipped runs of known signals, the
// disc's figures from its parts, and cancelling.
#include "analysis/ClippedRuns.h"
#include "analysis/Ebur128State.h"
#include "analysis/IntegratedLoudness.h"
#include "analysis/LoudnessAnalysis.h"
#include "analysis/LoudnessAnalyzer.h"
#include "analysis/LoudnessRange.h"
#include "analysis/LoudnessText.h"
#include "analysis/LoudnessUnits.h"
#include "analysis/ProgrammeParts.h"
#include "analysis/RangeBlocks.h"
#include "analysis/RangeMeter.h"
#include "analysis/TruePeakMeter.h"
#include "analysis/WorkPlan.h"
#include "ddp/DDPModel.h"
#include "ddp/DiscImage.h"
#include "tools/mkddp/Mkddp.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <thread>

namespace {

constexpr qint64 kBytesPerCdFrame = 2352;

// The parts of a generated disc: its tracks from index 01 to the next
// track's start, as the generator lays them out, and the pauses between.
std::vector<AnalysisPart> partsOf(const mkddp::DiscSpec& spec)
{
    std::vector<TrackRange> tracks;
    qint64 at = 0;
    for (const mkddp::TrackSpec& t : spec.tracks) {
        at += t.pauseFrames * kBytesPerCdFrame;
        tracks.push_back({at, at + t.frames * kBytesPerCdFrame});
        at += t.frames * kBytesPerCdFrame;
    }
    return programmeParts(tracks, at);
}

// A PQ entry for track `track` ("01", "AA") and index at whole seconds.
PqEntry pq(const char* track, int index, int seconds)
{
    // Track, index, hours, minutes, seconds, frames.
    const std::string text = QStringLiteral("VVVS%1%2%3%4%5%6")
                                 .arg(QLatin1String(track))
                                 .arg(index, 2, 10, QLatin1Char('0'))
                                 .arg(0, 2, 10, QLatin1Char('0'))
                                 .arg(seconds / 60, 2, 10, QLatin1Char('0'))
                                 .arg(seconds % 60, 2, 10, QLatin1Char('0'))
                                 .arg(0, 2, 10, QLatin1Char('0'))
                                 .toStdString();
    return PqEntry::fromBytes(text);
}

std::vector<qint16> samplesOf(int kind, qint64 frames)
{
    std::vector<qint16> out(std::size_t(2 * frames));
    for (qint64 f = 0; f < frames; ++f)
        for (int c = 0; c < 2; ++c)
            out[std::size_t(2 * f + c)] = mkddp::KnownSignals::sample(kind, f, c);
    return out;
}

// Every figure, exactly: the ways of cutting the work may not change a bit.
void compareFigures(const LoudnessResult& actual, const LoudnessResult& expected)
{
    QCOMPARE(actual.truePeak, expected.truePeak);
    QCOMPARE(actual.samplePeak, expected.samplePeak);
    QCOMPARE(actual.integrated, expected.integrated);
    QCOMPARE(actual.range, expected.range);
    QCOMPARE(actual.maxMomentary, expected.maxMomentary);
    QCOMPARE(actual.maxShortTerm, expected.maxShortTerm);
    QCOMPARE(actual.clippedRuns, expected.clippedRuns);
}

} // namespace

class TestAnalysisLoudness : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_signals;
    std::shared_ptr<const DiscImage> m_image;
    mkddp::DiscSpec m_spec;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_spec = mkddp::signalsDisc();
        m_signals = m_dir.filePath(QStringLiteral("signals"));
        QString error;
        QVERIFY2(mkddp::writeDisc(m_spec, m_signals, &error), qPrintable(error));
        m_image = DiscImage::openFile(m_signals + QStringLiteral("/IMAGE.DAT"), &error);
        QVERIFY2(m_image, qPrintable(error));
    }

    // The EBU Tech 3341 cases: sines at -23 and -33 dBFS read their level in
    // LUFS, the quarter-rate sine's true peak lies 3 dB over its samples,
    // silence reads minus infinity, clipped runs are counted exactly.
    void knownSignals()
    {
        const std::atomic<bool> never{false};
        const DiscLoudness result = analyzeLoudness(*m_image, partsOf(m_spec), never);
        QCOMPARE(int(result.tracks.size()), 5);
        const LoudnessResult& sine23 = result.tracks[0];
        const LoudnessResult& sine33 = result.tracks[1];
        const LoudnessResult& between = result.tracks[2];
        const LoudnessResult& silence = result.tracks[3];
        const LoudnessResult& clipped = result.tracks[4];

        QVERIFY2(std::abs(sine23.integrated + 23.0) <= 0.1,
                 qPrintable(lufsText(sine23.integrated)));
        QVERIFY2(std::abs(sine33.integrated + 33.0) <= 0.1,
                 qPrintable(lufsText(sine33.integrated)));
        // A steady tone: every window reads the same, so no range.
        QVERIFY(std::abs(sine23.maxMomentary + 23.0) <= 0.1);
        QVERIFY(std::abs(sine23.maxShortTerm + 23.0) <= 0.1);
        QVERIFY(sine23.range < 0.1);
        QVERIFY(std::abs(sine23.samplePeak + 23.0) <= 0.1);
        QVERIFY(std::abs(sine23.truePeak + 23.0) <= 0.1);

        QVERIFY2(std::abs(between.samplePeak + 3.01) <= 0.1,
                 qPrintable(dbfsText(between.samplePeak)));
        // An interpolating filter of finite length ripples: true-peak meters
        // are allowed +0.2 / -0.4 dB, and libebur128 reads this one 0.10 dB
        // high.
        QVERIFY2(between.truePeak <= 0.2 && between.truePeak >= -0.4,
                 qPrintable(QString::number(between.truePeak)));
        QVERIFY(between.truePeak - between.samplePeak > 2.9);
        QVERIFY(truePeakNeedsLook(between.truePeak));
        QVERIFY(!truePeakNeedsLook(sine23.truePeak));

        QVERIFY(std::isinf(silence.integrated) && silence.integrated < 0);
        QVERIFY(std::isinf(silence.truePeak) && silence.truePeak < 0);
        QCOMPARE(lufsText(silence.integrated), QStringLiteral("-inf"));
        QCOMPARE(dbtpText(silence.truePeak), QStringLiteral("-inf"));
        QCOMPARE(silence.clippedRuns, qint64(0));

        QCOMPARE(clipped.clippedRuns, qint64(mkddp::KnownSignals::kClippedRuns));
        QVERIFY(std::abs(clipped.samplePeak) < 0.01);
        for (const LoudnessResult& r : result.tracks) {
            QVERIFY(r.complete);
            QCOMPARE(r.frames, qint64(20 * 44100));
        }
    }

    // The disc's figures come from its parts combined, without a second
    // pass. The gating blocks formed from the library's 100 ms windows gate
    // as the library's own do, per track and for the disc, where the loud
    // clipped track puts the quiet ones under the relative gate; the rest
    // match one pass over the whole programme.
    void discFromParts()
    {
        const std::atomic<bool> never{false};
        const std::vector<AnalysisPart> parts = partsOf(m_spec);
        const DiscLoudness result = analyzeLoudness(*m_image, parts, never);
        std::vector<std::unique_ptr<Ebur128State>> states;
        std::vector<ebur128_state*> all;
        auto agree = [](double actual, double expected) {
            return std::isinf(expected) ? actual == expected : std::abs(actual - expected) < 1e-9;
        };
        std::size_t track = 0;
        for (const AnalysisPart& part : parts) {
            states.push_back(std::make_unique<Ebur128State>(EBUR128_MODE_I));
            ebur128_state* st = states.back()->st;
            all.push_back(st);
            QCOMPARE(RangeBlocks::read(*m_image, part.start, part.end, 4410, never, nullptr,
                                       [st](const qint16* audio, std::size_t frames) {
                                           ebur128_add_frames_short(st, audio, frames);
                                       }),
                     RangeBlocks::End::Complete);
            if (!part.isTrack)
                continue;
            double expected = 0.0;
            ebur128_loudness_global(st, &expected);
            const double actual = result.tracks.at(track++).integrated;
            QVERIFY2(agree(actual, expected),
                     qPrintable(QStringLiteral("%1 against %2").arg(actual).arg(expected)));
        }
        double disc = 0.0;
        ebur128_loudness_global_multiple(all.data(), all.size(), &disc);
        QVERIFY2(agree(result.disc.integrated, disc),
                 qPrintable(QStringLiteral("%1 against %2").arg(result.disc.integrated).arg(disc)));
        QVERIFY(std::isinf(integratedLoudness({})));
        QVERIFY(std::isinf(integratedLoudness({0.0, energyOf(-75.0)})));

        RangeMeter whole;
        QVERIFY(whole.measure(*m_image, parts.front().start, parts.back().end, never));
        const LoudnessResult single = whole.result();
        QVERIFY(std::abs(result.disc.range - single.range) <= 0.2);
        QCOMPARE(result.disc.truePeak, single.truePeak);
        QCOMPARE(result.disc.samplePeak, single.samplePeak);
        QCOMPARE(result.disc.clippedRuns, qint64(mkddp::KnownSignals::kClippedRuns));
    }

    // The programme runs to the lead-out however the descriptor closes: the
    // last track's tail after its span (here a hidden gap) is measured for
    // the disc, and a descriptor without a lead-out adds nothing past it.
    void programmeEndsAtTheLeadOut()
    {
        const std::vector<TrackRange> tracks{{2 * 176400, 10 * 176400}};
        const std::vector<PqEntry> pair{pq("00", 0, 0), pq("01", 1, 2), pq("AA", 1, 12),
                                        pq("AA", 0, 12)};
        const std::vector<PqEntry> single{pq("00", 0, 0), pq("01", 1, 2), pq("AA", 1, 12)};
        for (const std::vector<PqEntry>& entries : {pair, single}) {
            const std::vector<AnalysisPart> parts = programmeParts(tracks, entries);
            QCOMPARE(parts.size(), std::size_t(2));
            QCOMPARE(parts[1].start, qint64(10 * 176400));
            QCOMPARE(parts[1].end, qint64(12 * 176400));
            QVERIFY(!parts[1].isTrack);
        }
        QCOMPARE(programmeParts(tracks, std::vector<PqEntry>{pq("01", 1, 2)}).size(),
                 std::size_t(1));
    }

    // What every caller measures: the tracks as the export writes them (an
    // index 02 inside its track) and the pause between two of them, whether
    // the first row is a pause or not (the first-track number comes from the
    // index list); and nothing, with the track named, when the descriptor
    // gives a track no end.
    void discProgrammeIsWhatTheExportWrites()
    {
        auto modelOf = [](int firstStart, const std::vector<std::uint32_t>& indexList,
                          const PqEntry& leadOut) {
            DDPModel model;
            model.setEntries({pq("00", 0, 0), pq("01", 0, 0), pq("01", 1, firstStart),
                              pq("01", 2, 5), pq("02", 0, 8), pq("02", 1, 9), pq("03", 1, 12),
                              leadOut, pq("AA", 0, 20)});
            for (std::uint32_t index : indexList)
                model.appendIndex(index);
            return model;
        };
        auto bytes = [](int seconds) { return qint64(seconds) * 176400; };
        const PqEntry leadOut = pq("AA", 1, 20);
        struct Case
        {
            int firstStart;
            std::vector<std::uint32_t> indexList;
            std::uint32_t firstTrackNumber;
        };
        for (const Case& c : {Case{2, {1, 2, 0, 1, 1}, 2}, Case{4, {0, 1, 2, 0, 1, 1}, 1}}) {
            const DDPModel model = modelOf(c.firstStart, c.indexList, leadOut);
            QCOMPARE(model.firstTrackNumber(), c.firstTrackNumber);
            QString error;
            const std::optional<DiscProgramme> programme = discProgramme(model, &error);
            QVERIFY(programme);
            QCOMPARE(programme->trackEntries, (std::vector<std::size_t>{2, 5, 6}));
            const std::vector<AnalysisPart>& parts = programme->parts;
            QCOMPARE(parts.size(), std::size_t(4));
            const qint64 starts[] = {bytes(c.firstStart), bytes(8), bytes(9), bytes(12)};
            const qint64 ends[] = {bytes(8), bytes(9), bytes(12), bytes(20)};
            for (std::size_t i = 0; i < parts.size(); ++i) {
                QCOMPARE(parts[i].start, starts[i]);
                QCOMPARE(parts[i].end, ends[i]);
                QCOMPARE(parts[i].isTrack, i != 1);
            }
            QVERIFY(error.isEmpty());
        }

        PqEntry unreadable = leadOut;
        unreadable.bytes[6] = unreadable.bytes[7] = 'x';
        const DDPModel broken = modelOf(2, {1, 2, 0, 1, 1}, unreadable);
        QString error;
        QVERIFY(!discProgramme(broken, &error));
        QCOMPARE(error, QStringLiteral("The end of track 03 is not in the PQ descriptor."));
        QVERIFY(!discProgramme(broken, nullptr));
    }

    // Parts split among the cores give exactly what one pass per part gives:
    // the true peak from stretches with their interpolator history, the
    // loudness from a pass without true peak.
    void splitPartsMeasureAsWholeOnes()
    {
        const std::vector<AnalysisPart> parts = partsOf(m_spec);
        std::vector<qint64> starts;
        std::vector<qint64> lengths;
        for (const AnalysisPart& part : parts) {
            starts.push_back(part.start);
            lengths.push_back(part.length());
        }
        const WorkPlan plan = planWork(starts, lengths, 2, 5 * 176400);
        QVERIFY(std::count(plan.split.begin(), plan.split.end(), true) > 0);

        const std::atomic<bool> never{false};
        AnalysisOptions one;
        one.threads = 1;
        AnalysisOptions two;
        two.threads = 2;
        const DiscLoudness whole = analyzeLoudness(*m_image, parts, never, one);
        const DiscLoudness shared = analyzeLoudness(*m_image, parts, never, two);
        QCOMPARE(shared.tracks.size(), whole.tracks.size());
        for (std::size_t i = 0; i <= whole.tracks.size(); ++i) {
            compareFigures(i < whole.tracks.size() ? shared.tracks[i] : shared.disc,
                           i < whole.tracks.size() ? whole.tracks[i] : whole.disc);
            if (QTest::currentTestFailed())
                return;
        }

        // Stretches cut anywhere, even inside the interpolator's reach of
        // the quarter-rate sine's peaks.
        std::vector<AnalysisPart> tracks;
        std::copy_if(parts.begin(), parts.end(), std::back_inserter(tracks),
                     [](const AnalysisPart& part) { return part.isTrack; });
        const AnalysisPart& between = tracks.at(2);
        RangeMeter reference;
        QVERIFY(reference.measure(*m_image, between.start, between.end, never));
        double peak = 0.0;
        for (qint64 at = between.start; at < between.end;) {
            const qint64 to = std::min(between.end, at + 4 * 12347);
            TruePeakMeter stretch;
            QVERIFY(stretch.measure(*m_image, between.start, at, to, never));
            peak = std::max(peak, stretch.peak());
            at = to;
        }
        QCOMPARE(20.0 * std::log10(peak), reference.result().truePeak);
    }

    // Every part is measured once; a split part's stretches cover it end to
    // end; one core, or parts that share out evenly, are never split.
    void workPlans()
    {
        const qint64 minute = 60 * 176400;
        const qint64 stretch = 5 * 176400;
        struct Case
        {
            std::vector<qint64> lengths;
            int workers;
            bool splits;
        };
        std::vector<qint64> disc(18, 4 * minute); // a 74-minute disc
        disc.push_back(2 * minute - 2 * 176400);
        const Case cases[] = {
            {disc, 2, true},
            {{minute, minute, minute}, 2, true},
            {{minute, minute, minute}, 1, false},
            {{minute, minute, minute, minute}, 2, false},
            {{minute, 0, 3 * stretch + 4}, 4, true},
            {{}, 2, false},
        };
        for (const Case& c : cases) {
            std::vector<qint64> starts;
            qint64 at = 0;
            for (qint64 length : c.lengths) {
                starts.push_back(at);
                at += length + 7 * 2352;
            }
            const WorkPlan plan = planWork(starts, c.lengths, c.workers, stretch);
            QCOMPARE(plan.split.size(), c.lengths.size());
            QCOMPARE(std::count(plan.split.begin(), plan.split.end(), true) > 0, c.splits);
            for (std::size_t part = 0; part < c.lengths.size(); ++part) {
                int passes = 0;
                qint64 covered = starts[part];
                for (const WorkItem& item : plan.items) {
                    if (item.part != part)
                        continue;
                    if (item.kind == WorkItem::TruePeak) {
                        QCOMPARE(item.start, covered);
                        QVERIFY(item.end - item.start <= stretch);
                        covered = item.end;
                        continue;
                    }
                    ++passes;
                    QCOMPARE(item.kind == WorkItem::Loudness, bool(plan.split[part]));
                    QCOMPARE(item.start, starts[part]);
                    QCOMPARE(item.end, starts[part] + c.lengths[part]);
                }
                QCOMPARE(passes, 1);
                if (plan.split[part])
                    QCOMPARE(covered, starts[part] + c.lengths[part]);
            }
        }
    }

    // Windows and runs do not depend on how the audio is cut into blocks.
    void blocksOfAnySize()
    {
        const std::vector<qint16> audio = samplesOf(4, 44100 * 18);
        const std::size_t frames = audio.size() / 2;
        RangeMeter once;
        once.add(audio.data(), frames);
        RangeMeter pieces;
        // Odd sizes around the 100 ms step and the reads' block size.
        const std::size_t sizes[] = {1, 4409, 2, 7000, 70560, 3, 100003};
        for (std::size_t at = 0, i = 0; at < frames; ++i) {
            const std::size_t n = std::min(sizes[i % 7], frames - at);
            pieces.add(audio.data() + 2 * at, n);
            at += n;
        }
        compareFigures(pieces.result(), once.result());
    }

    void clippedRunsAcrossBlocks()
    {
        // Left: a lone full-scale sample, then a run of two split across
        // the blocks, then a run of two at the end. Right: a run of four
        // mixing both ends of the scale.
        const qint16 a[] = {32767, 0, 0, 0, 32767, 0};
        const qint16 b[] = {32767, 0, 0, 32767, 0, -32768, 0, -32768, 32767, 32767, 32767, 32767};
        ClippedRuns runs;
        runs.add(a, 3);
        runs.add(b, 6);
        QCOMPARE(runs.count(), qint64(3));
        // A block without a full-scale sample ends every run.
        const qint16 loud[] = {32767, 0};
        const qint16 quiet[] = {0, 0};
        ClippedRuns apart;
        apart.add(loud, 1);
        apart.add(quiet, 1);
        apart.add(loud, 1);
        QCOMPARE(apart.count(), qint64(0));
    }

    void loudnessRangeGates()
    {
        auto energy = energyOf;
        std::vector<double> blocks;
        for (int i = 0; i < 50; ++i)
            blocks.push_back(energy(-20.0));
        for (int i = 0; i < 50; ++i)
            blocks.push_back(energy(-30.0));
        QVERIFY(std::abs(loudnessRange(blocks) - 10.0) < 1e-9);
        // Under the relative gate (20 LU below the mean) or under -70 LUFS:
        // no part of the range.
        for (int i = 0; i < 200; ++i)
            blocks.push_back(i % 2 ? energy(-60.0) : 0.0);
        QVERIFY(std::abs(loudnessRange(blocks) - 10.0) < 1e-9);
        QCOMPARE(loudnessRange({}), 0.0);
        QCOMPARE(loudnessRange({0.0, energy(-80.0)}), 0.0);
    }

    void cancelStopsAtOnce()
    {
        // Long enough to take a few seconds to measure.
        mkddp::DiscSpec spec = mkddp::simpleDisc(4, 150);
        const QString folder = m_dir.filePath(QStringLiteral("long"));
        QVERIFY(mkddp::writeDisc(spec, folder));
        const auto image = DiscImage::openFile(folder + QStringLiteral("/IMAGE.DAT"));
        QVERIFY(image);

        std::atomic<bool> cancel{false};
        bool cancelled = false;
        QElapsedTimer timer;
        std::thread stopper([&cancel, &timer] {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            timer.start();
            cancel.store(true);
        });
        const DiscLoudness result = analyzeLoudness(*image, partsOf(spec), cancel, {}, &cancelled);
        stopper.join();
        QVERIFY(cancelled);
        QVERIFY(result.tracks.empty());
        QVERIFY2(timer.elapsed() < 100, qPrintable(QString::number(timer.elapsed())));

        // The window's analyzer: a second start drops the first one's
        // results; only the second reports.
        LoudnessAnalyzer analyzer;
        QSignalSpy finished(&analyzer, &LoudnessAnalyzer::finished);
        analyzer.start(image, partsOf(spec));
        analyzer.start(m_image, partsOf(m_spec));
        QVERIFY(finished.wait(60000));
        QTest::qWait(200);
        QCOMPARE(finished.count(), 1);
        const auto result2 = finished.at(0).at(0).value<DiscLoudness>();
        QCOMPARE(int(result2.tracks.size()), 5);
        QVERIFY(!analyzer.isRunning());

        // Cancelled while running: the workers are gone within a step of
        // audio, and nothing is reported.
        auto running = std::make_unique<LoudnessAnalyzer>();
        QSignalSpy none(running.get(), &LoudnessAnalyzer::finished);
        running->start(image, partsOf(spec));
        QTest::qWait(100);
        timer.restart();
        running->cancel();
        QVERIFY2(timer.elapsed() < 100, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(!running->isRunning());
        QTest::qWait(100);
        QCOMPARE(none.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestAnalysisLoudness)
#include "test_analysis_loudness.moc"
