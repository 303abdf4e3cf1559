#include "export/FileWriterAllTracks.h"

#include "ddp/DDPModel.h"
#include "ddp/TrackRange.h"
#include "export/ExportFileName.h"

#include <QDir>

FileWriterAllTracks::FileWriterAllTracks(QString outputFolder, QString imagePath,
                                         std::shared_ptr<DDPModel> model, QObject* parent)
    : FileWriter(QString(), std::move(imagePath), 0, 0, parent),
      m_outputFolder(std::move(outputFolder)), m_model(std::move(model))
{}

QString FileWriterAllTracks::run()
{
    if (!m_model)
        return tr("No DDP is loaded.");
    // The lead-out's entries are never among these: the list stops before
    // them.
    const std::vector<std::size_t> tracks = exportedTrackEntries(*m_model);
    const QStringList names = exportFileNames(*m_model);
    const QDir folder(m_outputFolder);
    for (std::size_t n = 0; n < tracks.size(); ++n) {
        emit trackStarted(static_cast<int>(n) + 1, static_cast<int>(tracks.size()));
        m_bytesProcessed = 0;
        m_outputPath = folder.filePath(names.at(static_cast<int>(n)));
        const QString error = trackBytes(*m_model, tracks[n], m_outputPath, m_start, m_end);
        if (!error.isEmpty())
            return error;
        // A track that starts where the next one does has no audio; a WAV of
        // nothing but a header would only look like a fault.
        if (m_start == m_end) {
            emit trackSkipped(m_outputPath);
            continue;
        }
        const QString message = copyRange();
        if (!message.isEmpty())
            return message;
    }
    return {};
}
