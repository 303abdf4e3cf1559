#include "archive/ImageUnpackJob.h"

#include "archive/ArchiveDdp.h"

#include <QMetaObject>

ImageUnpackJob::ImageUnpackJob(QObject* parent) : QObject(parent)
{
    // For queued connections and signal spies.
    qRegisterMetaType<std::shared_ptr<const DiscImage>>();
    qRegisterMetaType<LoadResult>();
}

ImageUnpackJob::~ImageUnpackJob()
{
    cancel();
}

void ImageUnpackJob::start(std::shared_ptr<ArchiveDdp> archive, ImageLayout layout)
{
    cancel();
    m_cancel = false;
    const std::uint64_t run = ++m_run;
    m_thread = std::thread([this, run, archive = std::move(archive), layout = std::move(layout)] {
        int lastPercent = -1;
        auto report = [this, run, &lastPercent](std::uint64_t done, std::uint64_t total) {
            const int percent = total ? static_cast<int>(done * 100 / total) : 100;
            if (percent == lastPercent)
                return;
            lastPercent = percent;
            QMetaObject::invokeMethod(
                this,
                [this, run, done, total] {
                    if (run == m_run && isRunning())
                        emit progress(done, total);
                },
                Qt::QueuedConnection);
        };
        LoadResult result;
        std::shared_ptr<const DiscImage> image =
            archive->openImage(layout, report, &m_cancel, &result);
        QMetaObject::invokeMethod(
            this,
            [this, run, image = std::move(image), result = std::move(result)] {
                if (run != m_run || !isRunning())
                    return;
                m_thread.join();
                emit unpacked(image, result);
            },
            Qt::QueuedConnection);
    });
}

void ImageUnpackJob::cancel()
{
    if (!m_thread.joinable())
        return;
    m_cancel = true;
    m_thread.join();
    // Results of this run still queued are dropped by their run number.
    ++m_run;
}
