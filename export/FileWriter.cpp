#include "export/FileWriter.h"

#include "export/WavHeader.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cstdint>

namespace {

bool cancelled()
{
    return QThread::currentThread()->isInterruptionRequested();
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
    removePartialFile(m_writingPath);
    return tr("Could not write \"%1\": %2").arg(m_outputPath, detail);
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

    // Writing over the image would destroy the master the WAV comes from.
    const QString imageFile = QFileInfo(m_imagePath).canonicalFilePath();
    if (!imageFile.isEmpty() && QFileInfo(m_outputPath).canonicalFilePath() == imageFile)
        return tr("\"%1\" is the disc's audio image; choose another name for the WAV file.")
            .arg(m_outputPath);

    // The image stays open until the range is written: the range may be its
    // mapped pages.
    QFile image(m_imagePath);
    if (!image.open(QIODevice::ReadOnly))
        return tr("Could not open the audio image \"%1\": %2")
            .arg(m_imagePath, image.errorString());
    struct Release
    {
        ImageRange& range;
        ~Release() { range.release(); }
    } release{m_range};
    if (!m_range.reset(image, m_start, length))
        return tr("Not enough memory to export %1 bytes.").arg(length);

    const QString readError = tr("Could not read the audio image \"%1\".").arg(m_imagePath);
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!m_range.load(done, piece))
            return readError;
        if (cancelled())
            return tr("The export was cancelled.");
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);

    // The WAV is written under a ".part" name and takes its own name only
    // when complete, so an export cut short (a crash, Ctrl+C, power loss)
    // never leaves a file that looks whole. A device is written as it is.
    const QFileInfo target(m_outputPath);
    const bool direct = target.exists() && !target.isFile();
    m_writingPath = direct ? m_outputPath : m_outputPath + QStringLiteral(".part");
    // Unbuffered: every write goes to the system at once, and its failure
    // shows at once.
    QFile out(m_writingPath);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return tr("Could not create \"%1\": %2").arg(m_outputPath, out.errorString());
    const QByteArray header = wavHeader(static_cast<std::uint32_t>(length));
    if (out.write(header) != header.size())
        return writeFailure(out);
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!m_range.writeTo(out, done, piece))
            return writeFailure(out);
        if (cancelled()) {
            out.close();
            removePartialFile(m_writingPath);
            return tr("The export was cancelled.");
        }
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);
    out.close();
    if (out.error() != QFileDevice::NoError)
        return writeFailure(out);
    if (!direct) {
        // Write-only would have replaced a file already there; so does this.
        if (QFile::exists(m_outputPath) && !QFile::remove(m_outputPath)) {
            removePartialFile(m_writingPath);
            return tr("Could not replace \"%1\".").arg(m_outputPath);
        }
        if (!QFile::rename(m_writingPath, m_outputPath)) {
            removePartialFile(m_writingPath);
            return tr("Could not write \"%1\": the finished file could not be renamed.")
                .arg(m_outputPath);
        }
    }
    emit fileWritten(m_outputPath);
    return {};
}
