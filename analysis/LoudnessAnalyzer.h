#pragma once

#include "analysis/LoudnessAnalysis.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class DiscImage;

// The window's analysis: runs analyzeLoudness on a thread of its own with
// its workers at low priority, so the window never waits for it. Its
// signals come from a 100 ms timer on the owner's thread, which reads what
// the run has published: nothing crosses threads but atomics, one mutex and
// the final join, all of which ThreadSanitizer can follow.
//
// A new start() or cancel() stops the running analysis: its workers see the
// flag within one 100 ms step of audio, a few milliseconds, and cancel()
// waits that long for them; nothing of a cancelled run is reported.
class LoudnessAnalyzer : public QObject
{
    Q_OBJECT
public:
    explicit LoudnessAnalyzer(QObject* parent = nullptr);
    ~LoudnessAnalyzer() override;

    void start(std::shared_ptr<const DiscImage> image, std::vector<AnalysisPart> parts);
    void cancel();
    bool isRunning() const { return m_thread.joinable(); }

signals:
    // Bytes measured of all, about every 100 ms.
    void progressed(qint64 done, qint64 total);
    void finished(const DiscLoudness& result);

private:
    void poll();

    std::thread m_thread;
    QTimer m_poll;
    // Written by the owner's thread, read by the workers.
    std::atomic<bool> m_cancel{false};
    // Written by the run's thread, read by the owner's.
    std::atomic<qint64> m_done{0};
    std::atomic<qint64> m_total{0};
    std::atomic<bool> m_ended{false};
    std::mutex m_resultMutex;
    DiscLoudness m_result; // guarded by m_resultMutex
    // Owner's thread only: the progress last reported.
    qint64 m_reported = -1;
};

Q_DECLARE_METATYPE(DiscLoudness)
