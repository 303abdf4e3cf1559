#include "analysis/LoudnessAnalysis.h"

#include "analysis/RangeMeter.h"
#include "ddp/DiscImage.h"

#include <QThread>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <thread>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace {

// A worker of the window's analysis yields to playback and to the window.
// On Linux a thread has its own nice value; the workers belong to one
// analysis and end with it, so no niced thread is reused.
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

std::vector<AnalysisPart> programmeParts(const std::vector<TrackSpan>& tracks,
                                         const std::vector<PqEntry>& entries)
{
    const qint64 leadOut =
        entries.size() >= 2
            ? static_cast<qint64>(
                  entries[entries.size() - leadOutEntryCount(entries)].bytePosition())
            : 0;
    return programmeParts(tracks, leadOut);
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
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::condition_variable allDone;
    std::size_t running = 0; // guarded by mutex

    const int cores = options.threads > 0 ? options.threads : QThread::idealThreadCount();
    const std::size_t count = std::size_t(std::max(1, std::min<int>(cores, int(parts.size()))));
    // Plain threads, joined at the end: ThreadSanitizer follows a join, but
    // not the futexes inside a Qt pool, so a race there would go unseen.
    std::vector<std::thread> workers;
    running = count;
    for (std::size_t w = 0; w < count; ++w) {
        workers.emplace_back([&] {
            if (options.background)
                lowerPriority();
            // Each worker takes the longest part left.
            for (std::size_t k = next++; k < order.size() && !stopped.load(); k = next++) {
                const std::size_t i = order[k];
                if (!meters[i]->measure(image, parts[i].start, parts[i].end, cancel, &done))
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
    return combineParts(parts, meters);
}
