#pragma once

#include "export/FileWriter.h"

#include <memory>

class DDPModel;

// Writes every track of the disc into one folder, a file per track named as
// the one-track export would propose (each name distinct), and skips tracks of
// no length. Bytes processed restart for each track, so the progress runs from
// 0 to about 20000 once per track.
class FileWriterAllTracks : public FileWriter
{
    Q_OBJECT

public:
    FileWriterAllTracks(QString outputFolder, QString imagePath, std::shared_ptr<DDPModel> model,
                        QObject* parent = nullptr);

signals:
    // Before each track: its place in the export (from 1) and the count.
    void trackStarted(int ordinal, int count);
    // Instead of fileStarted and fileWritten for a track of no length (its
    // start is the next track's): no file is written for it.
    void trackSkipped(const QString& path);

public slots:
    void process() override;

private:
    QString exportAll();

    // Written on the GUI thread before the move, then only read by the worker.
    // The model is shared: a new load in the window makes a new model and
    // leaves this one, which nobody changes any more, alive for the worker.
    QString m_outputFolder;
    std::shared_ptr<DDPModel> m_model;
};
