#pragma once

#include "tools/mkddp/DiscSpec.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QVector>

namespace mkddp {

// One PQ entry as the generator writes it.
struct LayoutEntry
{
    QByteArray track; // "00", "01" .. "99", "AA" (track 100 is "00" again)
    int index = 0;
    int frame = 0;       // absolute CD frame from the image start
    int trackNumber = 0; // 0 for lead-in and lead-out
    int minutes() const { return frame / (60 * kFramesPerSecond); }
    int seconds() const { return frame / kFramesPerSecond % 60; }
    int frames() const { return frame % kFramesPerSecond; }
    qint64 bytePosition() const { return qint64(frame) * kBytesPerCdFrame; }
};

// Every PQ entry of a disc, in file order (faults not applied).
QVector<LayoutEntry> pqLayout(const DiscSpec& spec);
// Image size in bytes: the lead-out's position.
qint64 imageSize(const DiscSpec& spec);
// Byte position of a track's index (0 = pause, 1 = start, 2.. extra), -1 if absent.
qint64 indexPosition(const DiscSpec& spec, int trackNumber, int index);

// What `tivora-ddp info --json` should report for a sound disc (no faults):
// "rows" (13 cells each, null for a cell without an item, the "Total: " row
// included), "indexList" and "cdText" (null without CD-Text).
QJsonArray expectedRows(const DiscSpec& spec);
QJsonArray expectedIndexList(const DiscSpec& spec);
QJsonValue expectedCdText(const DiscSpec& spec);

// The disc's audio as a reader must get it back from all its streams: the
// test pattern, with the frames left out between split streams as silence.
QByteArray expectedImageBytes(const DiscSpec& spec);

} // namespace mkddp
