#pragma once

#include "ddp/DdpLoader.h"
#include "verify/Verification.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <vector>

class DDPModel;
class DiscImage;
class IDdpFileSource;
class QThread;

// Verifies a loaded disc on a thread of its own: the checksum files, one
// read of every listed file, and the disc check. Playback, seeking and
// export never wait for it; it reads through the same DiscImage and file
// source as they do.
//
// start() cancels a run still going; cancel() and the destructor stop the
// current run at its next block. A cancelled run reports nothing: its
// results, progress included, are dropped on arrival.
class VerificationWorker : public QObject
{
    Q_OBJECT
public:
    explicit VerificationWorker(QObject* parent = nullptr);
    ~VerificationWorker() override;

    // Without `names` (all empty), the map is read again on the worker.
    void start(std::shared_ptr<const IDdpFileSource> source, std::shared_ptr<const DDPModel> model,
               DdpFileNames names, std::shared_ptr<const DiscImage> image);
    void cancel();
    bool isRunning() const { return m_running; }
    // The last finished run's report.
    const VerificationReport& report() const { return m_report; }

signals:
    void progressed(int percent);
    void finished();
    // From a run's thread, queued; only the current run's get through.
    void runProgressed(quint64 run, int percent);
    void runFinished(quint64 run);

private:
    struct Run;
    // GUI thread only: the run whose results are still wanted.
    std::shared_ptr<Run> m_current;
    quint64 m_runs = 0;
    bool m_running = false;
    std::vector<QThread*> m_threads; // GUI thread only: every run's thread, until it is done
    VerificationReport m_report;
};
