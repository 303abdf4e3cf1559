#include "analysis/LoudnessAnalyzer.h"

#include "ddp/DiscImage.h"

#include <QMetaObject>
#include <QThread>

#include <algorithm>

// What one analysis shares with its thread. `cancel` is written by the GUI
// thread and read by the workers; the rest is set before the thread starts.
struct LoudnessAnalyzer::Job
{
    std::atomic<bool> cancel{false};
    quint64 generation = 0;
};

LoudnessAnalyzer::LoudnessAnalyzer(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<DiscLoudness>();
}

LoudnessAnalyzer::~LoudnessAnalyzer()
{
    cancel();
    waitForThreads();
    for (QThread* thread : m_threads)
        delete thread;
}

void LoudnessAnalyzer::start(std::shared_ptr<const DiscImage> image,
                             std::vector<AnalysisPart> parts)
{
    cancel();
    auto job = std::make_shared<Job>();
    job->generation = ++m_generation;
    m_job = job;
    m_running = true;

    // The destructor waits for this thread, so `self` outlives it; what it
    // posts is dropped if the analyzer is gone by the time it would run.
    LoudnessAnalyzer* self = this;
    QThread* thread = QThread::create([self, job, image, parts = std::move(parts)] {
        AnalysisOptions options;
        options.background = true;
        // Posted, never sent: the GUI thread runs the handlers, and only if
        // this analysis is still the current one.
        options.progress = [self, job](qint64 done, qint64 total) {
            QMetaObject::invokeMethod(
                self,
                [self, job, done, total] {
                    if (self->m_job == job)
                        emit self->progressed(done, total);
                },
                Qt::QueuedConnection);
        };
        bool cancelled = false;
        DiscLoudness result = analyzeLoudness(*image, parts, job->cancel, options, &cancelled);
        if (cancelled)
            return;
        QMetaObject::invokeMethod(
            self,
            [self, job, result = std::move(result)] {
                if (self->m_job != job)
                    return;
                self->m_running = false;
                self->m_job.reset();
                emit self->finished(result);
            },
            Qt::QueuedConnection);
    });
    thread->setObjectName(QStringLiteral("loudness"));
    connect(thread, &QThread::finished, this, [this, thread] {
        m_threads.erase(std::remove(m_threads.begin(), m_threads.end(), thread), m_threads.end());
        thread->deleteLater();
    });
    m_threads.push_back(thread);
    thread->start(QThread::LowPriority);
}

void LoudnessAnalyzer::cancel()
{
    if (m_job)
        m_job->cancel.store(true);
    m_job.reset();
    m_running = false;
}

void LoudnessAnalyzer::waitForThreads()
{
    for (QThread* thread : m_threads)
        thread->wait();
}
