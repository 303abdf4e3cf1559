#include "export/EncodeWriter.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscImage.h"
#include "ddp/TrackRange.h"
#include "export/ExportFileName.h"
#include "export/PartFile.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <thread>

namespace {

// 256 CD frames: large enough that reads cost little, small enough that a
// cancel is seen at once.
constexpr qint64 kBlockSize = 256 * 2352;

QString withExtension(QString wavName, ExportFormat format)
{
    if (wavName.endsWith(QLatin1String(".wav")))
        wavName.chop(4);
    return wavName + formatExtension(format);
}

} // namespace

EncodeWriter::EncodeWriter(ExportFormat format, QString outputFolder, QString imagePath,
                           std::shared_ptr<DDPModel> model, QObject* parent)
    : FileWriter(QString(), std::move(imagePath), 0, 0, parent), m_format(format),
      m_outputFolder(std::move(outputFolder)), m_model(std::move(model))
{}

EncodeWriter::EncodeWriter(ExportFormat format, QString outputPath, QString imagePath,
                           std::shared_ptr<DDPModel> model, std::size_t entryIndex, QObject* parent)
    : FileWriter(std::move(outputPath), std::move(imagePath), 0, 0, parent), m_format(format),
      m_model(std::move(model)), m_entry(entryIndex)
{}

QString EncodeWriter::prepareJobs(const DiscImage& image, std::vector<Job>& jobs)
{
    const DDPModel& model = *m_model;
    std::vector<std::size_t> entries;
    QStringList paths;
    if (m_entry) {
        entries.push_back(*m_entry);
        paths.append(m_outputPath);
    } else {
        entries = exportedTrackEntries(model);
        const QDir folder(m_outputFolder);
        for (const QString& name : exportFileNames(model))
            paths.append(folder.filePath(withExtension(name, m_format)));
    }
    const int total = static_cast<int>(exportedTrackEntries(model).size());
    for (std::size_t n = 0; n < entries.size(); ++n) {
        Job job;
        job.path = paths.at(static_cast<int>(n));
        job.ordinal = static_cast<int>(n) + 1;
        const QString error = trackBytes(model, entries[n], job.path, job.start, job.end);
        if (!error.isEmpty())
            return error;
        // A track that starts where the next one does has no audio.
        if (job.start == job.end) {
            emit trackSkipped(job.path);
            continue;
        }
        const QString trackError =
            checkTrack(image, job.path, job.start, job.end, formatName(m_format));
        if (!trackError.isEmpty())
            return trackError;
        job.tags = trackTags(model, entries[n], total);
        jobs.push_back(job);
    }
    return {};
}

QString EncodeWriter::run()
{
    QString error;
    const std::shared_ptr<const DiscImage> image = openImage(m_model.get(), &error);
    if (!image)
        return error;
    std::vector<Job> jobs;
    error = prepareJobs(*image, jobs);
    if (!error.isEmpty())
        return error;
    qint64 total = 0;
    for (const Job& job : jobs)
        total += job.end - job.start;

    int threads = QThread::idealThreadCount();
    threads = std::max(1, std::min(threads, static_cast<int>(jobs.size())));
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
        pool.emplace_back([this, &jobs, &next, &image] {
            for (std::size_t i = next++; i < jobs.size() && !m_stop; i = next++) {
                const QString message = encodeTrack(*image, jobs[i]);
                if (!message.isEmpty()) {
                    std::lock_guard<std::mutex> lock(m_mutex);
                    if (m_failure.isEmpty())
                        m_failure = message;
                    m_stop = true;
                }
            }
        });
    }

    // This thread hands on what the encoders report and watches for a cancel.
    const int count = static_cast<int>(jobs.size());
    qint64 shown = -1;
    while (true) {
        bool allDone = true;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            allDone = next >= jobs.size() + pool.size() || m_stop;
        }
        if (QThread::currentThread()->isInterruptionRequested())
            m_stop = true;
        deliverEvents(count);
        const qint64 value = progressValue(m_bytesDone, total);
        if (value != shown) {
            shown = value;
            emit processed(value);
        }
        if (allDone)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    for (std::thread& thread : pool)
        thread.join();
    deliverEvents(count);

    if (QThread::currentThread()->isInterruptionRequested() && m_failure.isEmpty())
        return tr("The export was cancelled.");
    return m_failure;
}

QString EncodeWriter::encodeTrack(const DiscImage& image, const Job& job)
{
    post({Event::Started, job.ordinal, job.path});
    PartFile part(job.path);
    QString error = part.create();
    if (!error.isEmpty())
        return error;
    const std::unique_ptr<TrackEncoder> encoder = makeTrackEncoder(m_format);
    const qint64 length = job.end - job.start;
    error = encoder->begin(part.file(), length, job.tags);
    std::vector<char> block(static_cast<std::size_t>(std::min(kBlockSize, length)));
    for (qint64 done = 0; error.isEmpty() && done < length; done += kBlockSize) {
        if (m_stop)
            return tr("The export was cancelled.");
        const qint64 piece = std::min(kBlockSize, length - done);
        if (image.read(static_cast<std::uint64_t>(job.start + done), block.data(),
                       static_cast<std::uint64_t>(piece)) != static_cast<std::uint64_t>(piece))
            return readFailure(job.path);
        error = encoder->encode(block.data(), piece);
        m_bytesDone += piece;
    }
    if (error.isEmpty())
        error = encoder->finish();
    if (!error.isEmpty())
        return tr("Could not write \"%1\": %2").arg(job.path, error);
    part.file().close();
    if (part.file().error() != QFileDevice::NoError)
        return part.writeFailure(errno);
    error = encoder->finishClosedFile(part.writingPath());
    if (!error.isEmpty())
        return tr("Could not write \"%1\": %2").arg(job.path, error);
    error = part.commit();
    if (!error.isEmpty())
        return error;
    post({Event::Written, job.ordinal, job.path});
    return {};
}

void EncodeWriter::post(Event event)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back(std::move(event));
}

void EncodeWriter::deliverEvents(int count)
{
    std::vector<Event> events;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        events.swap(m_events);
    }
    for (const Event& event : events) {
        if (event.kind == Event::Started) {
            emit trackStarted(event.ordinal, count);
            emit fileStarted(event.path);
        } else {
            emit fileWritten(event.path);
        }
    }
}
