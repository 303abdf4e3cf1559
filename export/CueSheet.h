#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

class DDPModel;

// What the cue sheet's FILE line names: the image as raw little-endian
// samples, or one WAV of the whole image.
enum class CueAudioFile
{
    Binary,
    Wave,
};

// The cue sheet that burns the disc again: CATALOG, the album's TITLE,
// PERFORMER and SONGWRITER from CD-Text, one FILE line, then per track
// TRACK nn AUDIO, FLAGS (PRE, DCP, 4CH from the first control byte), ISRC,
// the track's CD-Text and every INDEX of the PQ descriptor in MM:SS:FF. The
// audio file holds the image from its first byte, where the PQ times start,
// to the lead-out, so each INDEX is the PQ entry's own time.
//
// The text is ISO 8859-1, the single-byte CD-Text's own encoding, when every
// string fits it; otherwise (a double-byte disc) the whole sheet is UTF-8.
// Quotes inside strings become apostrophes: a cue sheet has no escape.
QByteArray cueSheet(const DDPModel& model, const QString& audioFileName, CueAudioFile kind);

// The bytes of image the audio file holds: up to the lead-out.
std::uint64_t cueAudioBytes(const DDPModel& model);
