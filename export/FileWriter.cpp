#include "export/FileWriter.h"

#include "export/WavHeader.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

bool cancelled()
{
    return QThread::currentThread()->isInterruptionRequested();
}

// QFile::read may return less than asked only at the end of the file; what
// lies beyond the end reads as silence, as the zero-filled buffer of a fresh
// range would hold it.
bool readPiece(QFile& file, char* data, qint64 size)
{
    qint64 done = 0;
    while (done < size) {
        const qint64 got = file.read(data + done, size - done);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        done += got;
    }
    std::memset(data + done, 0, static_cast<std::size_t>(size - done));
    return true;
}

void removePartialFile(const QString& path)
{
    // Only a regular file we made is removed: an output path may name a
    // device (/dev/full) or something else that is not ours to delete.
    const QFileInfo info(path);
    if (info.isFile() && !info.isSymLink())
        QFile::remove(path);
}

} // namespace

FileWriter::FileWriter(QString outputPath, QString imagePath, qint64 start, qint64 end,
                       QObject* parent)
    : QObject(parent), m_outputPath(std::move(outputPath)), m_imagePath(std::move(imagePath)),
      m_start(start), m_end(end)
{}

void FileWriter::reportProgress(qint64 length)
{
    // A zero-length range has no scale to report on.
    if (length > 0)
        emit processed(m_bytesProcessed * 10000 / length);
}

QString FileWriter::writeFailure(QFile& out)
{
    const QString detail = out.errorString();
    out.close();
    removePartialFile(m_outputPath);
    return tr("Could not write \"%1\": %2").arg(m_outputPath, detail);
}

char* FileWriter::rangeBuffer(qint64 length)
{
    // The whole range is held in memory once. The buffer stays for the next
    // track of an all-tracks export and grows only for a longer one: fresh
    // pages cost a fault and a kernel zero fill each, and paying that for
    // every track made an export twice as slow as a plain copy.
    if (length > m_bufferSize || !m_buffer) {
        m_buffer.reset();
        m_bufferSize = 0;
        m_buffer.reset(
            static_cast<char*>(std::malloc(static_cast<std::size_t>(std::max<qint64>(length, 1)))));
        if (!m_buffer)
            return nullptr;
        m_bufferSize = length;
    }
    return m_buffer.get();
}

QString FileWriter::copyRange()
{
    Q_ASSERT(QThread::currentThread() == thread());
    emit fileStarted(m_outputPath);

    const qint64 length = m_end - m_start;
    if (m_start < 0 || length < 0 || length > qint64(UINT32_MAX) - 36)
        return tr("The track's range in the image is not valid (bytes %1 to %2).")
            .arg(m_start)
            .arg(m_end);

    char* buffer = rangeBuffer(length);
    if (!buffer)
        return tr("Not enough memory to export %1 bytes.").arg(length);

    QFile image(m_imagePath);
    if (!image.open(QIODevice::ReadOnly))
        return tr("Could not open the audio image \"%1\": %2")
            .arg(m_imagePath, image.errorString());
    if (!image.seek(m_start))
        return tr("Could not read the audio image \"%1\": %2")
            .arg(m_imagePath, image.errorString());
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!readPiece(image, buffer + done, piece))
            return tr("Could not read the audio image \"%1\": %2")
                .arg(m_imagePath, image.errorString());
        if (cancelled())
            return tr("The export was cancelled.");
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);
    image.close();

    // Write-only truncates a file that is already there.
    QFile out(m_outputPath);
    if (!out.open(QIODevice::WriteOnly))
        return tr("Could not create \"%1\": %2").arg(m_outputPath, out.errorString());
    const QByteArray header = wavHeader(static_cast<std::uint32_t>(length));
    if (out.write(header) != header.size())
        return writeFailure(out);
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (out.write(buffer + done, piece) != piece)
            return writeFailure(out);
        if (cancelled()) {
            out.close();
            removePartialFile(m_outputPath);
            return tr("The export was cancelled.");
        }
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);
    // Buffered bytes can still fail to reach the disk (a full disk says so
    // only now).
    if (!out.flush())
        return writeFailure(out);
    out.close();
    if (out.error() != QFileDevice::NoError)
        return writeFailure(out);
    emit fileWritten(m_outputPath);
    return {};
}
