#pragma once

#include "jobs/BackgroundJob.h"
#include "verify/Verification.h"

#include <QObject>

#include <memory>

class DDPModel;
class DiscImage;
class IDdpFileSource;

// Verifies a loaded disc on a thread of its own: the checksum files, one
// read of every listed file, and the disc check. Playback, seeking and
// export never wait for it; it reads through the same DiscImage and file
// source as they do.
//
// start() cancels a run still going; cancel() and the destructor stop the
// current run at its next block and wait for it (a few milliseconds). A
// cancelled run reports nothing, progress included. The run is a
// BackgroundJob: signals come from a timer on the owner's thread.
class VerificationWorker : public QObject
{
    Q_OBJECT
public:
    explicit VerificationWorker(QObject* parent = nullptr);
    ~VerificationWorker() override;

    void start(std::shared_ptr<const IDdpFileSource> source, std::shared_ptr<const DDPModel> model,
               std::shared_ptr<const DiscImage> image);
    void cancel();
    bool isRunning() const { return m_job.isRunning(); }
    // The last finished run's report.
    const VerificationReport& report() const { return m_report; }

signals:
    void progressed(int percent);
    void finished();

private:
    void onFinished();

    VerificationReport m_report; // owner's thread only
    // Written by the run's thread before its work returns, read by the
    // owner's in onFinished(), after the job has joined that thread.
    VerificationReport m_runReport;
    // Last: destroyed first, so that a run still going is stopped before
    // the members it writes go.
    BackgroundJob m_job;
};
