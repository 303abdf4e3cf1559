#include "export/TrackTags.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscTexts.h"
#include "ddp/PqTime.h"

#include <exception>

TrackTags trackTags(const DDPModel& model, std::size_t entryIndex, int trackTotal)
{
    TrackTags tags;
    const PqEntry& entry = model.entries().at(entryIndex);
    int number = -1;
    try {
        number = entry.trackNumber();
    } catch (const std::exception&) {
    }
    tags.trackNumber = number > 0 ? number : 0;
    tags.trackTotal = trackTotal;
    tags.title = trackText(model, number, CdTextRecord::Title);
    tags.performer = trackText(model, number, CdTextRecord::Performer);
    tags.composer = trackText(model, number, CdTextRecord::Composer);
    tags.album = albumText(model, CdTextRecord::Title);
    tags.albumArtist = albumText(model, CdTextRecord::Performer);
    // The ISRC as the descriptor gives it to the track's start (the table's
    // entries have it moved for display); CD-Text may hold it too.
    const std::vector<PqEntry>& pq = model.pqEntries();
    tags.isrc = QString::fromStdString(validIsrc(entryIndex < pq.size() ? pq[entryIndex] : entry));
    if (tags.isrc.isEmpty()) {
        tags.isrc = trackText(model, number, CdTextRecord::Code).remove(QChar(0)).trimmed();
        if (isZeroCode(tags.isrc))
            tags.isrc.clear();
    }
    tags.barcode = discUpcEan(model, ZeroCodes::Skipped);
    return tags;
}
