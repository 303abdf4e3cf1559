#pragma once

#include <QString>

class DDPModel;
class DiscImage;
class QStandardItemModel;

// The Index text of a first pause that holds audio ("Hidden"): a hidden
// track, which a CD player reaches only by rewinding from track 1.
QString hiddenTrackIndexText();

// Whether the pause before track 1 holds audio: it is shown as the first row
// (3 s or more; shorter ones stay hidden and are never read) and at least one
// of its samples is not zero. Reads the pause in blocks and stops at the first
// sample that is not zero, so that a hidden track answers at once and a long
// silent pause is read once. Bytes the image does not hold count as silence.
bool firstPauseHoldsAudio(const DDPModel& model, const DiscImage& image);

// After a load: when the first pause holds audio, its row's Index cell reads
// hiddenTrackIndexText() instead of "Pause". Returns whether it does.
bool markHiddenTrack(const DDPModel& model, QStandardItemModel& table, const DiscImage& image);
