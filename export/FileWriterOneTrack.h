#pragma once

#include "export/FileWriter.h"

// Writes the image bytes [start, end) as one WAV file.
class FileWriterOneTrack : public FileWriter
{
    Q_OBJECT

public:
    using FileWriter::FileWriter;

protected:
    QString run() override { return copyRange(); }
};
