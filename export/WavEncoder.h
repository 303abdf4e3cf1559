#pragma once

#include "export/TrackEncoder.h"

// The 44-byte CD audio header and the bytes unchanged, as the WAV export
// writes them (the cue sheet's one WAV of the whole disc uses it). WAV has no
// place for the tags: they are left out.
class WavEncoder : public TrackEncoder
{
public:
    QString begin(QFile& out, qint64 pcmBytes, const TrackTags& tags) override;
    QString encode(const char* pcm, qint64 size) override;
    QString finish() override { return {}; }

private:
    QFile* m_out = nullptr;
};
