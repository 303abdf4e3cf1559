#include "tools/mkddp/Expected.h"

namespace mkddp {

namespace {

QByteArray twoDigits(int n)
{
    return QByteArray::number(n).rightJustified(2, '0');
}

} // namespace

QVector<LayoutEntry> pqLayout(const DiscSpec& spec)
{
    QVector<LayoutEntry> entries;
    if (spec.leadInEntry)
        entries.append({"00", 0, 0, 0});
    int cursor = 0;
    for (int k = 0; k < spec.tracks.size(); ++k) {
        const TrackSpec& track = spec.tracks.at(k);
        const int number = spec.firstTrackNumber + k;
        // Two characters hold no number past 99: such a disc's numbers wrap
        // to 00, as a tool writing the last two digits would leave them.
        const QByteArray text = twoDigits(number % 100);
        if (track.pauseFrames > 0) {
            entries.append({text, 0, cursor, number});
            cursor += track.pauseFrames;
        }
        entries.append({text, 1, cursor, number});
        for (int i = 0; i < track.indexOffsets.size(); ++i)
            entries.append({text, 2 + i, cursor + track.indexOffsets.at(i), number});
        cursor += track.frames;
    }
    if (spec.leadOutEntries >= 1)
        entries.append({"AA", 1, cursor, 0});
    if (spec.leadOutEntries >= 2)
        entries.append({"AA", 0, cursor, 0});
    return entries;
}

qint64 imageSize(const DiscSpec& spec)
{
    qint64 frames = 0;
    for (const TrackSpec& track : spec.tracks)
        frames += track.pauseFrames + track.frames;
    return frames * kBytesPerCdFrame;
}

qint64 indexPosition(const DiscSpec& spec, int trackNumber, int index)
{
    const QVector<LayoutEntry> entries = pqLayout(spec);
    for (const LayoutEntry& e : entries) {
        if (e.trackNumber == trackNumber && e.index == index)
            return e.bytePosition();
    }
    return -1;
}

} // namespace mkddp
