#pragma once

#include "export/TrackEncoder.h"

#include <FLAC/format.h>
#include <FLAC/stream_encoder.h>

#include <vector>

// FLAC through libFLAC's stream encoder at compression level 5, lossless:
// decoding gives the track's bytes exactly. The tags are a Vorbis comment
// block built with libFLAC's metadata API, followed by some padding so that
// a tagger can add to it without rewriting the file.
class FlacEncoder : public TrackEncoder
{
public:
    FlacEncoder() = default;
    FlacEncoder(const FlacEncoder&) = delete;
    FlacEncoder& operator=(const FlacEncoder&) = delete;
    ~FlacEncoder() override;

    QString begin(QFile& out, qint64 pcmBytes, const TrackTags& tags) override;
    QString encode(const char* pcm, qint64 size) override;
    QString finish() override;

    // What libFLAC's callbacks write to, and the system's reason for a
    // failed write.
    struct Client
    {
        QFile* out = nullptr;
        QString reason;
    };

private:
    QString encoderError() const;

    FLAC__StreamEncoder* m_encoder = nullptr;
    FLAC__StreamMetadata* m_metadata[2] = {nullptr, nullptr};
    std::vector<int> m_samples; // one block of samples widened for libFLAC
    Client m_client;
};
