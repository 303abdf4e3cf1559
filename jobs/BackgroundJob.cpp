#include "jobs/BackgroundJob.h"

#include "jobs/ThreadPriority.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace {

constexpr int kPollMs = 50;

} // namespace

void JobContext::setProgress(std::uint64_t done, std::uint64_t total)
{
    // Two stores, not one: the poll may pair a new `done` with the old
    // `total` for one tick, which a progress bar never shows.
    m_total.store(total, std::memory_order_relaxed);
    m_done.store(done, std::memory_order_relaxed);
}

BackgroundJob::BackgroundJob(QObject* parent) : QObject(parent), m_poll(this)
{
    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &BackgroundJob::poll);
}

BackgroundJob::~BackgroundJob()
{
    cancel();
}

void BackgroundJob::start(Work work)
{
    cancel();
    ++m_generation;
    m_context.m_cancel.store(false);
    m_context.m_ended.store(false);
    m_context.m_done.store(0);
    m_context.m_total.store(0);
    m_reportedPercent = -1;
    m_thread = std::thread([this, work = std::move(work)] {
        lowerThisThreadsPriority();
        work(m_context);
        // Release: whatever the work wrote is visible to whoever sees the
        // flag (the join orders it again before finished()).
        m_context.m_ended.store(true, std::memory_order_release);
    });
    m_poll.start();
}

void BackgroundJob::cancel()
{
    ++m_generation;
    m_poll.stop();
    if (!m_thread.joinable())
        return;
    m_context.m_cancel.store(true);
    m_thread.join();
}

void BackgroundJob::poll()
{
    if (!m_thread.joinable()) {
        m_poll.stop();
        return;
    }
    // The flag first: once it is seen, the progress read after it is the
    // run's last.
    const bool ended = m_context.m_ended.load(std::memory_order_acquire);
    const std::uint64_t done = m_context.m_done.load(std::memory_order_relaxed);
    const std::uint64_t total = m_context.m_total.load(std::memory_order_relaxed);
    const int percent = total > 0 ? int(std::min(done, total) * 100 / total) : -1;
    if (percent != m_reportedPercent) {
        m_reportedPercent = percent;
        const std::uint64_t generation = m_generation;
        const QPointer<BackgroundJob> alive(this);
        emit progressed(percent);
        // A slot may have deleted this job, or cancelled or restarted it.
        if (!alive || generation != m_generation)
            return;
    }
    if (!ended)
        return;
    m_poll.stop();
    m_thread.join();
    emit finished();
}
