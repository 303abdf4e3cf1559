// The PQ descriptor: one 64-byte "VVVS" entry per track and index start.
#include "tools/mkddp/Bytes.h"
#include "tools/mkddp/DiscFiles.h"
#include "tools/mkddp/Expected.h"

namespace mkddp {

namespace {

constexpr int kEntrySize = 64;

QByteArray entryIsrc(const DiscSpec& spec, const LayoutEntry& e)
{
    if (e.trackNumber == 0)
        return {};
    const TrackSpec& track = spec.tracks.at(e.trackNumber - spec.firstTrackNumber);
    if (e.index == 0 && track.pauseIsrc)
        return *track.pauseIsrc;
    const int k = e.trackNumber - spec.firstTrackNumber;
    if (k == 0 && spec.has(Fault::BadIsrc))
        return "US-AB1-23-45";
    if (k == 1 && spec.has(Fault::DuplicateIsrc))
        return spec.tracks.at(0).isrc;
    return track.isrc;
}

} // namespace

QByteArray pqBytes(const DiscSpec& spec)
{
    const QVector<LayoutEntry> layout = pqLayout(spec);
    QByteArray pq;
    bool brokeNumber = false;
    for (int i = 0; i < layout.size(); ++i) {
        const LayoutEntry& e = layout.at(i);
        QByteArray entry(kEntrySize, ' ');
        putField(entry, 0, 4, i == 0 && spec.has(Fault::PqBadTag) ? "VVVX" : "VVVS");
        const bool renumber = spec.has(Fault::DuplicateTrackNumbers) && e.trackNumber > 0;
        const bool gap = spec.has(Fault::TrackNumberGap) && e.trackNumber > spec.firstTrackNumber;
        putField(entry, 4, 2,
                 renumber ? digits(spec.firstTrackNumber, 2)
                 : gap    ? digits((e.trackNumber + 1) % 100, 2)
                          : e.track);
        int index = e.index;
        if (spec.has(Fault::IndexGap) && index == 2)
            index = 3;
        if (spec.has(Fault::NoIndex01) && index == 1 && e.trackNumber == spec.firstTrackNumber + 1)
            index = 2;
        const bool leadOutBroken =
            spec.has(Fault::LeadOutNotANumber) && e.track == "AA" && e.index == 1;
        putField(entry, 6, 2, leadOutBroken ? QByteArray("xx") : digits(index, 2));
        putField(entry, 8, 2, spec.blankHours ? QByteArray("  ") : digits(spec.pqHours, 2));
        putField(entry, 10, 2, digits(e.minutes(), 2));
        putField(entry, 12, 2, digits(e.seconds(), 2));
        putField(entry, 14, 2, digits(e.frames(), 2));
        if (spec.has(Fault::TimeNotRising) && i > 0 && e.index == 1 &&
            e.trackNumber == spec.lastTrackNumber() && spec.tracks.size() > 1) {
            const LayoutEntry& before = layout.at(i - 1);
            putField(entry, 10, 2, digits(before.minutes(), 2));
            putField(entry, 12, 2, digits(before.seconds(), 2));
            putField(entry, 14, 2, digits(before.frames(), 2));
        }
        putField(entry, 16, 4, spec.pqControl); // control bytes: "0100" is audio, ADR 1
        putField(entry, 20, 12, entryIsrc(spec, e));
        if (e.track == "00")
            putField(entry, 32, 13, spec.upcEan);
        if (e.index == 1 && e.trackNumber > 0)
            putField(entry, 45, 19, spec.tracks.at(e.trackNumber - spec.firstTrackNumber).userText);
        if (spec.has(Fault::PqNotANumber) && !brokeNumber && e.index == 1 && e.trackNumber > 0) {
            putField(entry, 10, 2, "ab");
            brokeNumber = true;
        }
        pq += entry;
    }
    if (spec.has(Fault::PqTooManyEntries) && pq.size() >= 2 * kEntrySize) {
        // Copies of the second entry, so that every entry still parses.
        const QByteArray copy = pq.mid(kEntrySize, kEntrySize);
        const int count = int(pq.size() / kEntrySize);
        QByteArray grown = pq.left(kEntrySize);
        for (int i = 0; i < 10001 - count; ++i)
            grown += copy;
        pq = grown + pq.mid(kEntrySize);
    }
    if (spec.has(Fault::PqTruncatedLast) && !pq.isEmpty())
        pq.chop(kEntrySize - 40);
    return pq;
}

} // namespace mkddp
