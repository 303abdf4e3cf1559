#include "verify/VerificationWorker.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"

#include <QThread>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <vector>

// One run: its cancel flag (written by the GUI thread, read by the run's
// thread between blocks) and its thread.
struct VerificationWorker::Run
{
    std::atomic<bool> cancel{false};
    QThread* thread = nullptr;
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

VerificationWorker::VerificationWorker(QObject* parent) : QObject(parent) {}

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
    m_current = run;
    m_running = true;
    VerificationWorker* self = this;

    run->thread = QThread::create([self, run, source, model, names, image]() {
        yieldToOtherThreads();
        DdpFileNames files = names;
        if (files.image.empty() && files.pq.empty() && files.cdText.empty())
            files = readDdpFileNames(*source);
        VerificationPlan plan = planVerification(*source, *model, files, image);
        const std::uint64_t total = plan.totalBytes();
        int lastPercent = -1;
        auto post = [self, run](auto function) {
            // Runs on the GUI thread, and only while this run is the current one.
            QMetaObject::invokeMethod(
                self,
                [self, run, function]() {
                    if (self->m_current == run)
                        function(*self);
                },
                Qt::QueuedConnection);
        };
        runVerification(plan, &run->cancel, [&](std::uint64_t done, std::uint64_t) {
            const int percent = total ? int(done * 100 / total) : 100;
            if (percent != lastPercent) {
                lastPercent = percent;
                post([percent](VerificationWorker& worker) { emit worker.progressed(percent); });
            }
        });
        if (run->cancel.load())
            return;
        auto report = std::make_shared<VerificationReport>(std::move(plan.report));
        post([report](VerificationWorker& worker) {
            worker.m_report = std::move(*report);
            worker.m_running = false;
            worker.m_current.reset();
            emit worker.finished();
        });
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
