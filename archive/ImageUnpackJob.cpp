#include "archive/ImageUnpackJob.h"

#include "archive/ArchiveDdp.h"

#include <utility>

ImageUnpackJob::ImageUnpackJob(QObject* parent) : QObject(parent), m_job(this)
{
    // For queued connections and signal spies.
    qRegisterMetaType<std::shared_ptr<const DiscImage>>();
    qRegisterMetaType<LoadResult>();
    connect(&m_job, &BackgroundJob::progressed, this, &ImageUnpackJob::progress);
    connect(&m_job, &BackgroundJob::finished, this, &ImageUnpackJob::onFinished);
}

ImageUnpackJob::~ImageUnpackJob()
{
    cancel();
}

void ImageUnpackJob::start(std::shared_ptr<ArchiveDdp> archive, ImageLayout layout)
{
    m_job.start(
        [this, archive = std::move(archive), layout = std::move(layout)](JobContext& context) {
            m_result = LoadResult();
            m_image = archive->openImage(
                layout,
                [&context](std::uint64_t done, std::uint64_t total) {
                    context.setProgress(done, total);
                },
                &context.cancelFlag(), &m_result);
        });
}

void ImageUnpackJob::cancel()
{
    m_job.cancel();
}

void ImageUnpackJob::onFinished()
{
    const std::shared_ptr<const DiscImage> image = std::exchange(m_image, nullptr);
    const LoadResult result = std::exchange(m_result, LoadResult());
    emit unpacked(image, result);
}
