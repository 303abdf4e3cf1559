#pragma once

#include "export/TrackTags.h"

#include <QString>
#include <QtGlobal>

#include <memory>
#include <optional>

class QFile;

// The file formats a track is exported to.
enum class ExportFormat
{
    Wav,
    Flac,
    Mp3,
};

// ".wav", ".flac", ".mp3".
QString formatExtension(ExportFormat format);
// "WAV", "FLAC", "MP3", as the dialogs and messages name them.
QString formatName(ExportFormat format);
// "wav", "flac" or "mp3" (any case), or a file name ending in one of them.
std::optional<ExportFormat> formatFromText(const QString& text);

// Turns a track's CD audio (16-bit little-endian stereo at 44100 Hz, as the
// image holds it) into one file of a format. One encoder writes one file, on
// the thread that made it; several encoders may run at once.
//
//   begin(out, bytes, tags) → encode(...) as often as needed → finish()
//   → out.close() → finishClosedFile(path)
//
// Each step returns an empty string on success, else what went wrong.
class TrackEncoder
{
public:
    virtual ~TrackEncoder() = default;
    // `out` is open for writing (unbuffered, positioned at 0) and stays open
    // until finish(); `pcmBytes` is the track's length, a multiple of 4.
    virtual QString begin(QFile& out, qint64 pcmBytes, const TrackTags& tags) = 0;
    // The next `size` bytes of the track (a multiple of 4).
    virtual QString encode(const char* pcm, qint64 size) = 0;
    // Writes what the encoder still holds.
    virtual QString finish() = 0;
    // After the file is closed: tags written by a library that works on a
    // path (the MP3's ID3v2 tag).
    virtual QString finishClosedFile(const QString& path)
    {
        Q_UNUSED(path);
        return {};
    }
};

std::unique_ptr<TrackEncoder> makeTrackEncoder(ExportFormat format);
