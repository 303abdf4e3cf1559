#pragma once

#include <QString>

#include <cstddef>

class DDPModel;

// "N - Title.wav" when the disc has CD-Text and the track's title (first
// block) is not empty, else "Track N.wav"; N without leading zeros.
// `entryIndex` is the track's position in the model's entry list.
QString defaultFileName(const DDPModel& model, std::size_t entryIndex);

// Characters a file name cannot hold become "_": "/" everywhere, and on
// Windows also \ : * ? " < > |. Only the file name changes; the title
// shown elsewhere keeps them.
QString safeFileName(QString name);
