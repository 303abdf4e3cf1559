#include "analysis/LoudnessAnalysis.h"

#include "analysis/RangeMeter.h"
#include "ddp/DiscImage.h"

#include <QRunnable>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <numeric>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace {

// A worker of the window's analysis yields to playback and to the window.
// On Linux a thread has its own nice value; the pool is private to one
// analysis, so its threads end with it and no niced thread is reused.
void lowerPriority()
{
#ifdef Q_OS_LINUX
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 10);
#else
    QThread::currentThread()->setPriority(QThread::LowPriority);
#endif
}

} // namespace

std::vector<AnalysisPart> programmeParts(const std::vector<TrackSpan>& tracks, qint64 leadOut)
{
    std::vector<AnalysisPart> parts;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        parts.push_back({tracks[i].start, tracks[i].end, true});
        const qint64 next = i + 1 < tracks.size() ? tracks[i + 1].start : leadOut;
        if (next > tracks[i].end)
            parts.push_back({tracks[i].end, next, false});
    }
    return parts;
}

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
    std::vector<std::unique_ptr<RangeMeter>> meters;
    meters.reserve(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i)
        meters.push_back(std::make_unique<RangeMeter>());

    std::vector<std::size_t> order(parts.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(), [&parts](std::size_t a, std::size_t b) {
        return parts[a].length() > parts[b].length();
    });
    qint64 total = 0;
    for (const AnalysisPart& part : parts)
        total += std::max<qint64>(0, part.length());

    // Written by the workers, read here for the progress.
    std::atomic<qint64> done{0};
    std::atomic<bool> stopped{false};
    {
        QThreadPool pool;
        const int cores = options.threads > 0 ? options.threads : QThread::idealThreadCount();
        pool.setMaxThreadCount(std::max(1, std::min<int>(cores, int(parts.size()))));
        pool.setExpiryTimeout(-1);
        const bool background = options.background;
        for (std::size_t i : order) {
            RangeMeter* meter = meters[i].get();
            const AnalysisPart part = parts[i];
            pool.start(
                QRunnable::create([&image, &cancel, &done, &stopped, meter, part, background] {
                    if (background)
                        lowerPriority();
                    if (!meter->measure(image, part.start, part.end, cancel, &done))
                        stopped.store(true);
                }));
        }
        while (!pool.waitForDone(100)) {
            if (options.progress)
                options.progress(done.load(), total);
        }
    }
    if (options.progress && !stopped.load())
        options.progress(done.load(), total);
    if (cancelled)
        *cancelled = stopped.load() || cancel.load();
    if (stopped.load() || cancel.load())
        return {};
    return combineParts(parts, meters);
}
