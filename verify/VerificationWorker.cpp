#include "verify/VerificationWorker.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"

#include <QThread>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <mutex>
#include <vector>

// One run. The run's thread talks back through queued signals that carry
// plain numbers; the report itself waits here, under the mutex, for the GUI
// thread to take it.
struct VerificationWorker::Run
{
    quint64 number = 0;
    std::atomic<bool> cancel{false}; // written by the GUI thread, read by the run's
    QThread* thread = nullptr;       // GUI thread only
    std::mutex mutex;
    VerificationReport report; // written by the run's thread, then read by the GUI thread
};

namespace {

// The worker reads and hashes flat out; the GUI thread's 16 ms tick and the
// audio must never wait for it. A nice value of 10 for this thread alone
// lets the scheduler hand the CPU to them at once when they wake, while the
// worker still has every cycle nobody else wants. (Qt's own priorities do
// nothing for ordinary threads on Linux.)
void yieldToOtherThreads()
{
#ifdef Q_OS_LINUX
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 10);
#endif
}

} // namespace

VerificationWorker::VerificationWorker(QObject* parent) : QObject(parent)
{
    // Emitted from a run's thread: queued to this object's.
    connect(
        this, &VerificationWorker::runProgressed, this,
        [this](quint64 run, int percent) {
            if (m_current && m_current->number == run)
                emit progressed(percent);
        },
        Qt::QueuedConnection);
    connect(
        this, &VerificationWorker::runFinished, this,
        [this](quint64 run) {
            if (!m_current || m_current->number != run)
                return;
            {
                std::lock_guard<std::mutex> lock(m_current->mutex);
                m_report = std::move(m_current->report);
            }
            m_current.reset();
            m_running = false;
            emit finished();
        },
        Qt::QueuedConnection);
}

// A cancelled run stops at its next block, a few milliseconds: waiting for
// it here keeps every run within the life of the worker it posts to.
VerificationWorker::~VerificationWorker()
{
    cancel();
    for (QThread* thread : m_threads) {
        thread->wait();
        delete thread;
    }
}

void VerificationWorker::cancel()
{
    if (m_current)
        m_current->cancel.store(true);
    m_current.reset();
    m_running = false;
}

void VerificationWorker::start(std::shared_ptr<const IDdpFileSource> source,
                               std::shared_ptr<const DDPModel> model, DdpFileNames names,
                               std::shared_ptr<const DiscImage> image)
{
    cancel();
    auto run = std::make_shared<Run>();
    run->number = ++m_runs;
    m_current = run;
    m_running = true;

    run->thread = QThread::create([this, run, source, model, names, image]() {
        yieldToOtherThreads();
        DdpFileNames files = names;
        if (files.image.empty() && files.pq.empty() && files.cdText.empty())
            files = readDdpFileNames(*source);
        VerificationPlan plan = planVerification(*source, *model, files, image);
        const std::uint64_t total = plan.totalBytes();
        int lastPercent = -1;
        runVerification(plan, &run->cancel, [&](std::uint64_t done, std::uint64_t) {
            const int percent = total ? int(done * 100 / total) : 100;
            if (percent != lastPercent) {
                lastPercent = percent;
                emit runProgressed(run->number, percent);
            }
        });
        if (run->cancel.load())
            return;
        {
            std::lock_guard<std::mutex> lock(run->mutex);
            run->report = std::move(plan.report);
        }
        emit runFinished(run->number);
    });
    // Threads of earlier runs that are done go now.
    for (auto it = m_threads.begin(); it != m_threads.end();) {
        if ((*it)->isFinished()) {
            delete *it;
            it = m_threads.erase(it);
        } else {
            ++it;
        }
    }
    m_threads.push_back(run->thread);
    run->thread->start(QThread::LowPriority);
}
