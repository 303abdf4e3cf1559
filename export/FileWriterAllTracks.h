#pragma once

#include "export/FileWriter.h"

#include <memory>

class DDPModel;

// Writes every track of the disc into one folder, a file per track named as
// the one-track export would propose (each name distinct), and skips tracks of
// no length (with trackSkipped instead of fileStarted and fileWritten). Bytes processed restart for
// each track, so the progress runs from 0 to about 20000 once per track.
class FileWriterAllTracks : public FileWriter
{
    Q_OBJECT

public:
    FileWriterAllTracks(QString outputFolder, QString imagePath, std::shared_ptr<DDPModel> model,
                        QObject* parent = nullptr);

protected:
    QString run() override;

private:
    // Written on the GUI thread before the move, then only read by the worker.
    // The model is shared: a new load in the window makes a new model and
    // leaves this one, which nobody changes any more, alive for the worker.
    QString m_outputFolder;
    std::shared_ptr<DDPModel> m_model;
};
