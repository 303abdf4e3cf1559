#pragma once

#include "ddp/ErrorKind.h"
#include "ddp/ImageLayout.h"
#include "jobs/BackgroundJob.h"

#include <QObject>

#include <memory>

class ArchiveDdp;
class DiscImage;

// Unpacks the compressed audio of an archive on a thread of its own, so that
// the window stays live while hundreds of megabytes inflate. The archive is
// the job's alone until it ends: nobody else reads it meanwhile.
//
// Signals arrive on the thread that owns the job (a BackgroundJob). cancel()
// stops the work between two blocks and waits for it; after it, no signal of
// that run comes.
class ImageUnpackJob : public QObject
{
    Q_OBJECT

public:
    explicit ImageUnpackJob(QObject* parent = nullptr);
    ~ImageUnpackJob() override;

    // Starts a run; cancels one still running first.
    void start(std::shared_ptr<ArchiveDdp> archive, ImageLayout layout);
    void cancel();
    bool isRunning() const { return m_job.isRunning(); }

signals:
    // Of the bytes to unpack, in whole percent, once per step.
    void progress(int percent);
    // The image, or nothing with the reason (ArchiveInvalid; ImageMissing).
    void unpacked(std::shared_ptr<const DiscImage> image, const LoadResult& result);

private:
    void onFinished();

    // Written by the run's thread before its work returns, read by the
    // owner's in onFinished(), after the job has joined that thread.
    std::shared_ptr<const DiscImage> m_image;
    LoadResult m_result;
    // Last: destroyed first, so that a run still going is stopped before
    // the members it writes go.
    BackgroundJob m_job;
};

Q_DECLARE_METATYPE(std::shared_ptr<const DiscImage>)
Q_DECLARE_METATYPE(LoadResult)
