#pragma once

#include "ddp/ErrorKind.h"
#include "ddp/ImageLayout.h"

#include <QObject>

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

class ArchiveDdp;
class DiscImage;

// Unpacks the compressed audio of an archive on a thread of its own, so that
// the window stays live while hundreds of megabytes inflate. The archive is
// the job's alone until it ends: nobody else reads it meanwhile.
//
// Signals arrive on the thread that owns the job. cancel() stops the work
// between two blocks and waits for it; after it, no signal of that run comes.
class ImageUnpackJob : public QObject
{
    Q_OBJECT

public:
    explicit ImageUnpackJob(QObject* parent = nullptr);
    ~ImageUnpackJob() override;

    // Starts a run; cancels one still running first.
    void start(std::shared_ptr<ArchiveDdp> archive, ImageLayout layout);
    void cancel();
    bool isRunning() const { return m_thread.joinable(); }

signals:
    // Bytes unpacked of those to unpack, at most once per percent.
    void progress(quint64 done, quint64 total);
    // The image, or nothing with the reason (ArchiveInvalid; ImageMissing).
    void unpacked(std::shared_ptr<const DiscImage> image, const LoadResult& result);

private:
    std::thread m_thread;
    std::atomic<bool> m_cancel{false};
    // Which run a queued result belongs to: one that arrives after its run
    // was cancelled is dropped.
    std::uint64_t m_run = 0;
};

Q_DECLARE_METATYPE(std::shared_ptr<const DiscImage>)
Q_DECLARE_METATYPE(LoadResult)
