#pragma once

#include <QObject>
#include <QTimer>

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>

// What a job's work sees of its run: the flag that asks it to stop, and a
// place to publish how far it has come. Both are lock-free.
class JobContext
{
public:
    // Set by the owner's cancel(); the work stops at its next block. The
    // core functions take it as it is (or its address).
    const std::atomic<bool>& cancelFlag() const { return m_cancel; }
    bool isCancelled() const { return m_cancel.load(std::memory_order_relaxed); }
    // Any thread; the owner's timer reports it when it has changed.
    void setProgress(std::uint64_t done, std::uint64_t total);

private:
    friend class BackgroundJob;
    // Written by the owner's thread, read by the run's.
    std::atomic<bool> m_cancel{false};
    // Written by the run's thread, read by the owner's timer.
    std::atomic<std::uint64_t> m_done{0};
    std::atomic<std::uint64_t> m_total{0};
    std::atomic<bool> m_ended{false};
};

// Runs one function at a time on a thread of its own, at low priority, and
// reports on the thread that owns it. Nothing crosses threads through Qt's
// event queue: the run publishes its progress and its end in atomics, and a
// timer on the owner's thread polls them, joins the thread once the work has
// returned and then emits finished(). Atomics and the join are all that
// ThreadSanitizer has to follow.
//
// The work keeps its result wherever its owner wants it (a member of the
// owner, typically) and the owner takes it in its finished() slot. No lock
// is needed for that: the work wrote it before it returned, and the join
// that precedes finished() orders that write before the owner's read.
//
// start() while a run is going cancels that run first; cancel() stops the
// run at its next block (the core functions check the flag every block, a
// few milliseconds) and waits for it. Nothing of a cancelled run is emitted,
// even if its work had already returned. The destructor cancels.
//
// Slots connected to progressed() or finished() may call start(), cancel()
// or delete the job.
class BackgroundJob : public QObject
{
    Q_OBJECT
public:
    using Work = std::function<void(JobContext& context)>;

    explicit BackgroundJob(QObject* parent = nullptr);
    ~BackgroundJob() override;

    void start(Work work);
    void cancel();
    // From start() until finished() is emitted or the run is cancelled.
    bool isRunning() const { return m_thread.joinable(); }

signals:
    // The run's progress in whole percent, when that has changed since the
    // last poll (every 50 ms), and once more before finished() if the end
    // changed it. Nothing while the run has published no total.
    void progressed(int percent);
    // The work has returned and its thread is joined; once a run.
    void finished();

private:
    void poll();

    JobContext m_context;
    std::thread m_thread; // owner's thread only
    QTimer m_poll;
    // Owner's thread only: the percent last emitted, and a count of runs
    // started or cancelled, which tells poll() that a slot it called has
    // started or cancelled a run meanwhile.
    int m_reportedPercent = -1;
    std::uint64_t m_generation = 0;
};
