#include "export/FileWriter.h"

#include "export/WavHeader.h"

#include "ddp/DiscImage.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

bool cancelled()
{
    return QThread::currentThread()->isInterruptionRequested();
}

// The system's words for the last failure of a file; Qt falls back on
// "Unknown error" where the system had a reason.
QString systemReason(const QFile& file, int savedErrno = 0)
{
    const QString qt = file.errorString();
    if (savedErrno != 0 && (qt.isEmpty() || qt == QLatin1String("Unknown error")))
        return QString::fromLocal8Bit(std::strerror(savedErrno));
    return qt;
}

QString randomSuffix()
{
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QString suffix;
    for (int i = 0; i < 8; ++i)
        suffix += QLatin1Char(kLetters[QRandomGenerator::global()->bounded(36)]);
    return suffix;
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
    const int savedErrno = errno;
    const QString detail = systemReason(out, savedErrno);
    out.close();
    removeOwnFile(out, m_writingPath == m_outputPath);
    return tr("Could not write \"%1\": %2").arg(m_outputPath, detail);
}

QString FileWriter::imageFailure(const QString& readError)
{
    // An image cut short while it is read ends here, mapped or not.
    return tr("%1 It holds fewer bytes than when the export began, or the disk refused a "
              "read; \"%2\" was not written.")
        .arg(readError, m_outputPath);
}

QString FileWriter::createTemporaryFile(QFile& out)
{
    // "<name>.<8 letters>.part": new each time, never an existing file.
    for (int attempt = 0; attempt < 16; ++attempt) {
        m_writingPath = m_outputPath + QLatin1Char('.') + randomSuffix() + QStringLiteral(".part");
        out.setFileName(m_writingPath);
        if (out.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return {};
        if (!QFileInfo::exists(m_writingPath) && !QFileInfo(m_writingPath).isSymLink())
            break; // not a name clash: the folder refuses
    }
    const int savedErrno = errno;
    return tr("Could not create \"%1\": %2").arg(m_outputPath, systemReason(out, savedErrno));
}

QString FileWriter::replaceTarget()
{
#ifdef Q_OS_UNIX
    // rename() replaces a file (or a link, never what it points to) in one
    // step: there is no moment without the old file or the new one, and
    // nothing is removed that this export did not write.
    if (::rename(QFile::encodeName(m_writingPath).constData(),
                 QFile::encodeName(m_outputPath).constData()) == 0)
        return {};
    return tr("Could not write \"%1\": the finished file could not be renamed: %2")
        .arg(m_outputPath, QString::fromLocal8Bit(std::strerror(errno)));
#else
    if (QFile::exists(m_outputPath) && !QFile::remove(m_outputPath))
        return tr("Could not replace \"%1\".").arg(m_outputPath);
    if (!QFile::rename(m_writingPath, m_outputPath))
        return tr("Could not write \"%1\": the finished file could not be renamed.")
            .arg(m_outputPath);
    return {};
#endif
}

void FileWriter::removeOwnFile(QFile& out, bool direct)
{
    // Only the temporary file this export made is removed: an output path
    // may name a device (/dev/full) or something else that is not ours.
    if (!direct)
        out.remove();
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

    // The image stays open until the range is written: the range may be its
    // mapped pages. Only regular files are read: a pipe would never end.
    std::shared_ptr<const DiscImage> image = m_image;
    if (!image) {
        QString reason;
        image = DiscImage::openFile(m_imagePath, &reason);
        if (!image)
            return tr("Could not open the audio image \"%1\": %2").arg(m_imagePath, reason);
    }
    // Writing over the image would destroy the master the WAV comes from.
    const QString output = QFileInfo(m_outputPath).canonicalFilePath();
    for (const DiscImage::Segment& segment : image->segments()) {
        if (!output.isEmpty() && segment.kind == DiscImage::Segment::Kind::File &&
            QFileInfo(segment.path).canonicalFilePath() == output)
            return tr("\"%1\" is the disc's audio image; choose another name for the WAV file.")
                .arg(m_outputPath);
    }
    // A track the image does not hold in full would be written as silence
    // behind a success: it is an error for that track.
    if (image->length() < static_cast<std::uint64_t>(m_end))
        return tr("\"%1\" was not written: the track needs bytes %2 to %3 of the audio image "
                  "\"%4\", which holds only %5 bytes.")
            .arg(m_outputPath)
            .arg(m_start)
            .arg(m_end)
            .arg(m_imagePath)
            .arg(image->length());
    struct Release
    {
        ImageRange& range;
        ~Release() { range.release(); }
    } release{m_range};
    if (!m_range.reset(*image, m_start, length))
        return tr("Not enough memory to export %1 bytes.").arg(length);

    const QString readError = tr("Could not read the audio image \"%1\".").arg(m_imagePath);
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!m_range.load(done, piece))
            return imageFailure(readError);
        if (cancelled())
            return tr("The export was cancelled.");
        if (piece == kPieceSize) {
            m_bytesProcessed += kPieceSize;
            reportProgress(length);
        }
    }
    reportProgress(length);

    // The WAV is written under a temporary name of its own and takes its real
    // name only when complete, so an export cut short (a crash, Ctrl+C,
    // power loss) never leaves a file that looks whole. The temporary file
    // is made new: a link planted at its name is never followed, and two
    // exports into one folder never write or remove each other's files. A
    // device is written as it is.
    const QFileInfo target(m_outputPath);
    const bool direct = target.exists() && !target.isFile() && !target.isSymLink();
    // Unbuffered: every write goes to the system at once, and its failure
    // shows at once.
    QFile out;
    if (direct) {
        m_writingPath = m_outputPath;
        out.setFileName(m_writingPath);
        if (!out.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return tr("Could not create \"%1\": %2").arg(m_outputPath, systemReason(out));
    } else {
        const QString error = createTemporaryFile(out);
        if (!error.isEmpty())
            return error;
    }
    const QByteArray header = wavHeader(static_cast<std::uint32_t>(length));
    if (out.write(header) != header.size())
        return writeFailure(out);
    for (qint64 done = 0; done < length; done += kPieceSize) {
        const qint64 piece = std::min(kPieceSize, length - done);
        if (!m_range.writeTo(out, done, piece)) {
            // EFAULT: mapped pages of an image cut short meanwhile.
            if (errno == EFAULT) {
                out.close();
                removeOwnFile(out, direct);
                return imageFailure(readError);
            }
            return writeFailure(out);
        }
        if (cancelled()) {
            out.close();
            removeOwnFile(out, direct);
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
        // The finished file replaces whatever had the name, in one step.
        const QString error = replaceTarget();
        if (!error.isEmpty()) {
            removeOwnFile(out, direct);
            return error;
        }
    }
    emit fileWritten(m_outputPath);
    return {};
}
