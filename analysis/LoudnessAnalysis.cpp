#include "analysis/LoudnessAnalysis.h"

#include "analysis/RangeMeter.h"
#include "analysis/TruePeakMeter.h"
#include "analysis/WorkPlan.h"
#include "ddp/DiscImage.h"
#include "jobs/ThreadPriority.h"

#include <QThread>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

// Five seconds of audio: short enough that the cores finish within a few
// milliseconds of each other, long enough that the interpolator's history
// read before each stretch costs nothing.
constexpr qint64 kStretchBytes = 5 * 176400;

} // namespace

DiscLoudness combineParts(const std::vector<AnalysisPart>& parts,
                          const std::vector<std::unique_ptr<RangeMeter>>& meters)
{
    DiscLoudness out;
    std::vector<const RangeMeter*> all;
    LoudnessResult& disc = out.disc;
    disc.integrated = LoudnessResult::kMinusInfinity;
    for (std::size_t i = 0; i < parts.size() && i < meters.size(); ++i) {
        const LoudnessResult r = meters[i]->result();
        if (parts[i].isTrack)
            out.tracks.push_back(r);
        all.push_back(meters[i].get());
        disc.maxMomentary = std::max(disc.maxMomentary, r.maxMomentary);
        disc.maxShortTerm = std::max(disc.maxShortTerm, r.maxShortTerm);
        disc.samplePeak = std::max(disc.samplePeak, r.samplePeak);
        disc.truePeak = std::max(disc.truePeak, r.truePeak);
        disc.clippedRuns += r.clippedRuns;
        disc.frames += r.frames;
        disc.complete = disc.complete && r.complete;
    }
    RangeMeter::combine(all, &disc.integrated, &disc.range);
    return out;
}

DiscLoudness analyzeLoudness(const DiscImage& image, const std::vector<AnalysisPart>& parts,
                             const std::atomic<bool>& cancel, const AnalysisOptions& options,
                             bool* cancelled)
{
    const int cores = options.threads > 0 ? options.threads : QThread::idealThreadCount();
    const int count = std::max(1, std::min<int>(cores, int(parts.size())));
    std::vector<qint64> starts;
    std::vector<qint64> lengths;
    for (const AnalysisPart& part : parts) {
        starts.push_back(part.start);
        lengths.push_back(std::max<qint64>(0, part.length()));
    }
    const WorkPlan plan = planWork(starts, lengths, count, kStretchBytes);

    std::vector<std::unique_ptr<RangeMeter>> meters;
    meters.reserve(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i)
        meters.push_back(std::make_unique<RangeMeter>(
            plan.split[i] ? RangeMeter::TruePeak::HandedIn : RangeMeter::TruePeak::Measured));
    // Each true-peak stretch's result, written by the worker that measured
    // it and read after the join.
    std::vector<double> stretchPeaks(plan.items.size(), 0.0);
    qint64 total = 0;
    for (const WorkItem& item : plan.items)
        total += item.end - item.start;

    // Written by the workers, read here for the progress.
    std::atomic<qint64> done{0};
    std::atomic<bool> stopped{false};
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::condition_variable allDone;
    int running = count; // guarded by mutex

    auto runItem = [&](std::size_t k) {
        const WorkItem& item = plan.items[k];
        if (item.kind != WorkItem::TruePeak)
            return meters[item.part]->measure(image, item.start, item.end, cancel, &done);
        TruePeakMeter meter;
        const bool measured =
            meter.measure(image, parts[item.part].start, item.start, item.end, cancel, &done);
        stretchPeaks[k] = meter.peak();
        return measured;
    };
    // Plain threads, joined at the end: ThreadSanitizer follows a join, but
    // not the futexes inside a Qt pool, so a race there would go unseen.
    std::vector<std::thread> workers;
    for (int w = 0; w < count; ++w) {
        workers.emplace_back([&] {
            if (options.background)
                lowerThisThreadsPriority();
            for (std::size_t k = next++; k < plan.items.size() && !stopped.load(); k = next++) {
                if (!runItem(k))
                    stopped.store(true);
            }
            const std::lock_guard<std::mutex> lock(mutex);
            if (--running == 0)
                allDone.notify_all();
        });
    }
    {
        std::unique_lock<std::mutex> lock(mutex);
        while (!allDone.wait_for(lock, std::chrono::milliseconds(100),
                                 [&running] { return running == 0; })) {
            if (options.progress) {
                lock.unlock();
                options.progress(done.load(), total);
                lock.lock();
            }
        }
    }
    for (std::thread& worker : workers)
        worker.join();
    if (options.progress && !stopped.load())
        options.progress(done.load(), total);
    if (cancelled)
        *cancelled = stopped.load() || cancel.load();
    if (stopped.load() || cancel.load())
        return {};
    std::vector<double> partPeaks(parts.size(), 0.0);
    for (std::size_t k = 0; k < plan.items.size(); ++k)
        if (plan.items[k].kind == WorkItem::TruePeak)
            partPeaks[plan.items[k].part] =
                std::max(partPeaks[plan.items[k].part], stretchPeaks[k]);
    for (std::size_t i = 0; i < parts.size(); ++i)
        if (plan.split[i])
            meters[i]->setTruePeak(partPeaks[i]);
    return combineParts(parts, meters);
}
