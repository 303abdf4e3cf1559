#include "export/CueWriter.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscImage.h"
#include "export/PartFile.h"
#include "export/WavEncoder.h"

#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <vector>

CueWriter::CueWriter(QString cuePath, CueAudioFile kind, QString imagePath,
                     std::shared_ptr<DDPModel> model, QObject* parent)
    : FileWriter(std::move(cuePath), std::move(imagePath), 0, 0, parent), m_kind(kind),
      m_model(std::move(model))
{}

QString CueWriter::audioPathFor(const QString& cuePath, CueAudioFile kind)
{
    QString base = cuePath;
    if (base.endsWith(QLatin1String(".cue"), Qt::CaseInsensitive))
        base.chop(4);
    return base + (kind == CueAudioFile::Wave ? QStringLiteral(".wav") : QStringLiteral(".bin"));
}

QString CueWriter::run()
{
    QString error;
    const std::shared_ptr<const DiscImage> image = openImage(m_model.get(), &error);
    if (!image)
        return error;
    const QString audioPath = audioPathFor(m_outputPath, m_kind);
    for (const QString& path : {m_outputPath, audioPath}) {
        if (isImageFile(*image, path))
            return tr("\"%1\" is the disc's audio image; choose another name for the cue "
                      "sheet.")
                .arg(path);
    }
    const qint64 length = static_cast<qint64>(cueAudioBytes(*m_model));
    if (image->length() < static_cast<std::uint64_t>(length))
        return tr("\"%1\" was not written: the disc needs %2 bytes of the audio image \"%3\", "
                  "which holds only %4 bytes.")
            .arg(m_outputPath)
            .arg(length)
            .arg(m_imagePath)
            .arg(image->length());

    emit fileStarted(audioPath);
    error = writeAudio(*image, audioPath, length);
    if (!error.isEmpty())
        return error;
    emit fileWritten(audioPath);

    emit fileStarted(m_outputPath);
    PartFile cue(m_outputPath);
    error = cue.create();
    if (!error.isEmpty())
        return error;
    const QByteArray text = cueSheet(*m_model, QFileInfo(audioPath).fileName(), m_kind);
    if (cue.file().write(text) != text.size())
        return cue.writeFailure(errno);
    error = cue.commit();
    if (!error.isEmpty())
        return error;
    emit fileWritten(m_outputPath);
    return {};
}

QString CueWriter::writeAudio(const DiscImage& image, const QString& path, qint64 length)
{
    PartFile part(path);
    QString error = part.create();
    if (!error.isEmpty())
        return error;
    WavEncoder wav;
    if (m_kind == CueAudioFile::Wave) {
        error = wav.begin(part.file(), length, TrackTags());
        if (!error.isEmpty())
            return tr("Could not write \"%1\": %2").arg(path, error);
    }
    std::vector<char> buffer(static_cast<std::size_t>(std::min(kPieceSize, length)));
    for (qint64 done = 0; done < length; done += kPieceSize) {
        if (QThread::currentThread()->isInterruptionRequested())
            return tr("The export was cancelled.");
        const qint64 piece = std::min(kPieceSize, length - done);
        if (image.read(static_cast<std::uint64_t>(done), buffer.data(),
                       static_cast<std::uint64_t>(piece)) != static_cast<std::uint64_t>(piece))
            return readFailure(path);
        if (part.file().write(buffer.data(), piece) != piece)
            return part.writeFailure(errno);
        emit processed(progressValue(done + piece, length));
    }
    return part.commit();
}
