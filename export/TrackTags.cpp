#include "export/TrackTags.h"

#include "ddp/CdTextStrings.h"
#include "ddp/DDPModel.h"
#include "ddp/PqTime.h"

#include <exception>

namespace {

QString cdText(const DDPModel& model, int track, CdTextRecord::SlotIndex slot)
{
    if (!model.hasCdText() || track < 0)
        return {};
    try {
        return cdTextString(model.cdText(), static_cast<std::size_t>(track), slot).trimmed();
    } catch (const std::exception&) {
        return {}; // a track past the CD-Text has no text
    }
}

// A code field is unused when it is blank, zero bytes or all zeros.
QString usedCode(QString code)
{
    code = code.remove(QChar(0)).trimmed();
    for (QChar c : code) {
        if (c != QLatin1Char('0'))
            return code;
    }
    return {};
}

} // namespace

QString exportedUpcEan(const DDPModel& model)
{
    const QString text = usedCode(cdText(model, 0, CdTextRecord::Code));
    if (!text.isEmpty())
        return text;
    for (const PqEntry& entry : model.entries()) {
        const QString code =
            usedCode(QString::fromLatin1(entry.upcEan().data(), int(entry.upcEan().size())));
        if (!code.isEmpty())
            return code;
    }
    return usedCode(QString::fromLatin1(model.ddpIdUpcEan().c_str()));
}

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
    tags.title = cdText(model, number, CdTextRecord::Title);
    tags.performer = cdText(model, number, CdTextRecord::Performer);
    tags.composer = cdText(model, number, CdTextRecord::Composer);
    tags.album = cdText(model, 0, CdTextRecord::Title);
    tags.albumArtist = cdText(model, 0, CdTextRecord::Performer);
    // The ISRC as the descriptor gives it to the track's start (the table's
    // entries have it moved for display); CD-Text may hold it too.
    const std::vector<PqEntry>& pq = model.pqEntries();
    tags.isrc = QString::fromStdString(validIsrc(entryIndex < pq.size() ? pq[entryIndex] : entry));
    if (tags.isrc.isEmpty())
        tags.isrc = usedCode(cdText(model, number, CdTextRecord::Code));
    tags.barcode = exportedUpcEan(model);
    return tags;
}
