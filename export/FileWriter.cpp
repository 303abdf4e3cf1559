#include "export/FileWriter.h"

#include "export/PartFile.h"
#include "export/WavHeader.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscImage.h"
#include "ddp/TrackRange.h"

#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>

namespace {

bool cancelled()
{
    return QThread::currentThread()->isInterruptionRequested();
}

} // namespace

FileWriter::FileWriter(QString outputPath, QString imagePath, qint64 start, qint64 end,
                       QObject* parent)
    : QObject(parent), m_outputPath(std::move(outputPath)), m_imagePath(std::move(imagePath)),
      m_start(start), m_end(end)
{}

void FileWriter::process()
{
    Q_ASSERT(QThread::currentThread() == thread());
    const QString message = run();
    if (message.isEmpty())
        emit finished();
    else
        emit failed(message);
}

void FileWriter::reportProgress(qint64 length)
{
    // Two phases over the range, reading and writing; a zero-length range has
    // no scale to report on.
    if (length > 0)
        emit processed(progressValue(m_bytesProcessed, 2 * length));
}

std::shared_ptr<const DiscImage> FileWriter::openImage(QString* error) const
{
    if (m_image)
        return m_image;
    QString reason;
    std::shared_ptr<const DiscImage> image = DiscImage::openFile(m_imagePath, &reason);
    if (!image)
        *error = tr("Could not open the audio image \"%1\": %2").arg(m_imagePath, reason);
    return image;
}

std::shared_ptr<const DiscImage> FileWriter::openImage(const DDPModel* model, QString* error) const
{
    if (!model) {
        *error = tr("No DDP is loaded.");
        return nullptr;
    }
    return openImage(error);
}

bool FileWriter::isImageFile(const DiscImage& image, const QString& path)
{
    const QString output = QFileInfo(path).canonicalFilePath();
    if (output.isEmpty())
        return false;
    for (const DiscImage::Segment& segment : image.segments()) {
        if (segment.kind == DiscImage::Segment::Kind::File &&
            QFileInfo(segment.path).canonicalFilePath() == output)
            return true;
    }
    return false;
}

QString FileWriter::checkTrack(const DiscImage& image, const QString& path, qint64 start,
                               qint64 end, const QString& fileKind) const
{
    if (start < 0 || end < start)
        return tr("The track's range in the image is not valid (bytes %1 to %2).")
            .arg(start)
            .arg(end);
    if (isImageFile(image, path))
        return tr("\"%1\" is the disc's audio image; choose another name for the %2 file.")
            .arg(path, fileKind);
    if (image.length() < static_cast<std::uint64_t>(end))
        return tr("\"%1\" was not written: the track needs bytes %2 to %3 of the audio image "
                  "\"%4\", which holds only %5 bytes.")
            .arg(path)
            .arg(start)
            .arg(end)
            .arg(m_imagePath)
            .arg(image.length());
    return {};
}

QString FileWriter::readFailure(const QString& path) const
{
    // An image cut short while it is read ends here, mapped or not.
    return tr("Could not read the audio image \"%1\". It holds fewer bytes than when the export "
              "began, or the disk refused a read; \"%2\" was not written.")
        .arg(m_imagePath, path);
}

QString FileWriter::trackBytes(const DDPModel& model, std::size_t entryIndex, const QString& path,
                               qint64& start, qint64& end) const
{
    try {
        const TrackRange range = trackRange(model.entries(), entryIndex);
        start = range.start;
        end = range.end;
        return {};
    } catch (const std::exception& e) {
        return tr("The end of the track for \"%1\" is not in the PQ descriptor (%2).")
            .arg(path, QString::fromStdString(e.what()));
    }
}

QString FileWriter::copyRange()
{
    Q_ASSERT(QThread::currentThread() == thread());
    emit fileStarted(m_outputPath);

    const qint64 length = m_end - m_start;
    if (length > qint64(UINT32_MAX) - 36)
        return tr("The track's range in the image is not valid (bytes %1 to %2).")
            .arg(m_start)
            .arg(m_end);
    // The image stays open until the range is written: the range may be its
    // mapped pages. Only regular files are read: a pipe would never end.
    QString error;
    const std::shared_ptr<const DiscImage> image = openImage(&error);
    if (!image)
        return error;
    error = checkTrack(*image, m_outputPath, m_start, m_end, QStringLiteral("WAV"));
    if (!error.isEmpty())
        return error;
    struct Release
    {
        ImageRange& range;
        ~Release() { range.release(); }
    } release{m_range};
    if (!m_range.reset(*image, m_start, length))
        return tr("Not enough memory to export %1 bytes.").arg(length);

    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!m_range.load(done, piece))
            return readFailure(m_outputPath);
        if (cancelled())
            return tr("The export was cancelled.");
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);

    // The WAV takes its real name only when complete, so an export cut short
    // (a crash, Ctrl+C, power loss) never leaves a file that looks whole; on
    // any failure below the part written so far goes with `out`.
    PartFile out(m_outputPath);
    error = out.create();
    if (!error.isEmpty())
        return error;
    const QByteArray header = wavHeader(static_cast<std::uint32_t>(length));
    if (out.file().write(header) != header.size())
        return out.writeFailure(errno);
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!m_range.writeTo(out.file(), done, piece)) {
            // EFAULT: mapped pages of an image cut short meanwhile.
            if (errno == EFAULT)
                return readFailure(m_outputPath);
            return out.writeFailure(errno);
        }
        if (cancelled())
            return tr("The export was cancelled.");
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);
    error = out.commit();
    if (!error.isEmpty())
        return error;
    emit fileWritten(m_outputPath);
    return {};
}
