#pragma once

#include "export/TrackEncoder.h"

#include <vector>

struct lame_global_struct;

// MP3 through LAME at 320 kb/s constant bit rate, for listening copies. The
// first frame is LAME's info frame (the encoder delay and padding, so that
// players know the exact length); the ID3v2 tag is written by TagLib once
// the file is closed, still under its temporary name.
class Mp3Encoder : public TrackEncoder
{
public:
    Mp3Encoder() = default;
    Mp3Encoder(const Mp3Encoder&) = delete;
    Mp3Encoder& operator=(const Mp3Encoder&) = delete;
    ~Mp3Encoder() override;

    QString begin(QFile& out, qint64 pcmBytes, const TrackTags& tags) override;
    QString encode(const char* pcm, qint64 size) override;
    QString finish() override;
    QString finishClosedFile(const QString& path) override;

private:
    QString writeOut(int bytes);

    lame_global_struct* m_lame = nullptr;
    QFile* m_out = nullptr;
    TrackTags m_tags;
    std::vector<short> m_left;
    std::vector<short> m_right;
    std::vector<unsigned char> m_mp3;
};
