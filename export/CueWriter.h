#pragma once

#include "export/CueSheet.h"
#include "export/FileWriter.h"

#include <memory>

class DDPModel;

// Writes a cue sheet for a reference CD and, beside it, the audio it names:
// "NAME.cue" with "NAME.bin" (the image's bytes up to the lead-out, raw) or
// "NAME.wav" (the same behind a WAV header). The audio file is written
// first, so a cue sheet never names a file that is not complete; both go
// under temporary names until complete, and neither may be the image.
class CueWriter : public FileWriter
{
    Q_OBJECT

public:
    CueWriter(QString cuePath, CueAudioFile kind, QString imagePath,
              std::shared_ptr<DDPModel> model, QObject* parent = nullptr);

    // "NAME.bin" or "NAME.wav" beside "NAME.cue".
    static QString audioPathFor(const QString& cuePath, CueAudioFile kind);

protected:
    QString run() override;

private:
    QString writeAudio(const DiscImage& image, const QString& path, qint64 length);

    // Written before process() and then only read.
    CueAudioFile m_kind;
    std::shared_ptr<DDPModel> m_model;
};
