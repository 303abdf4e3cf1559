#pragma once

#include "analysis/LoudnessAnalysis.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <vector>

class DiscImage;
class QThread;

// The window's analysis: runs analyzeLoudness on a thread of its own at low
// priority, so the window never waits, and reports back through queued
// signals. A new start or cancel() stops the running analysis at once (its
// workers see the flag within one 100 ms step of audio) and drops whatever
// it would still report; the destructor waits for the threads it stopped.
class LoudnessAnalyzer : public QObject
{
    Q_OBJECT
public:
    explicit LoudnessAnalyzer(QObject* parent = nullptr);
    ~LoudnessAnalyzer() override;

    void start(std::shared_ptr<const DiscImage> image, std::vector<AnalysisPart> parts);
    void cancel();
    bool isRunning() const { return m_running; }
    // Waits for every analysis thread this object started to end.
    void waitForThreads();

signals:
    void progressed(qint64 done, qint64 total);
    void finished(const DiscLoudness& result);

private:
    struct Job;
    // GUI thread only.
    std::shared_ptr<Job> m_job;
    std::vector<QThread*> m_threads;
    quint64 m_generation = 0;
    bool m_running = false;
};

Q_DECLARE_METATYPE(DiscLoudness)
