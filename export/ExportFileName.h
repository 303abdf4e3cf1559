#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>

class DDPModel;

// The longest file name the export makes, in UTF-8 bytes: the 255 a file
// system allows, less room for the temporary name the writer uses until the
// file is complete ("<name>.part", or "<name>.<random>.part").
inline constexpr int kMaxFileNameBytes = 255 - 32;

// "N - Title.wav" when the disc has CD-Text and the track's title (first
// block) is not empty, else "Track N.wav"; N without leading zeros. Made safe
// by safeFileName and cut to fit by fittedFileName. A track of the all-tracks
// export gets the name that export gives it (see exportFileNames), so the
// window proposes the same. `entryIndex` is the track's position in the
// model's entry list.
QString defaultFileName(const DDPModel& model, std::size_t entryIndex);

// The names of the all-tracks export, one for each entry of
// exportedTrackEntries(model), in that order. Every name is distinct, also
// where the file system ignores case: tracks that share a name (a number given
// twice, the same title, titles alike in the part that fits) keep it for the
// first of them and take " (2)", " (3)", ... before ".wav" for the later ones.
QStringList exportFileNames(const DDPModel& model);

// Characters a file name cannot hold become "_": "/" and control characters
// (U+0000 to U+001F, U+007F to U+009F) everywhere, and on Windows also
// \ : * ? " < > |. Only the file name changes; the title shown elsewhere
// keeps them.
QString safeFileName(QString name);

// `stem` followed by `tail` in at most `maxBytes` bytes of UTF-8: a stem too
// long loses characters at its end, whole ones only (never part of a UTF-8
// sequence, a surrogate pair or a letter with its accents), and the blanks
// the cut leaves. The tail (" (2).wav") is kept whole.
QString fittedFileName(const QString& stem, const QString& tail, int maxBytes = kMaxFileNameBytes);
