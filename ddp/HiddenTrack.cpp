#include "ddp/HiddenTrack.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscImage.h"
#include "ddp/TrackTable.h"

#include <QStandardItemModel>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <vector>

QString hiddenTrackIndexText()
{
    // As short as "Start 1", so that it fits the Index column unwrapped.
    return QStringLiteral("Hidden");
}

bool firstPauseHoldsAudio(const DDPModel& model, const DiscImage& image)
{
    // The pause row is the first one, made of entry 1 up to entry 2; the
    // index list holds a 0 first only when that row is shown.
    const std::vector<PqEntry>& entries = model.entries();
    if (model.indexList().empty() || model.indexList().front() != 0 || entries.size() < 3)
        return false;
    double from = 0.0;
    double to = 0.0;
    try {
        from = entries[1].bytePosition();
        to = entries[2].bytePosition();
    } catch (const std::exception&) {
        return false; // times that do not parse: the loader has said so already
    }
    if (!(from >= 0.0) || !(to > from))
        return false;
    std::uint64_t offset = static_cast<std::uint64_t>(from);
    const std::uint64_t end = std::min(static_cast<std::uint64_t>(to), image.length());

    // 64 KiB: about 0.4 s of audio a read, few reads for a pause of minutes.
    std::vector<char> block(64 * 1024);
    while (offset < end) {
        const std::uint64_t want = std::min<std::uint64_t>(block.size(), end - offset);
        const std::uint64_t got = image.read(offset, block.data(), want);
        const auto last = block.begin() + static_cast<std::ptrdiff_t>(got);
        if (std::any_of(block.begin(), last, [](char byte) { return byte != 0; }))
            return true;
        if (got < want)
            return false; // the image ends here
        offset += got;
    }
    return false;
}

bool markHiddenTrack(const DDPModel& model, QStandardItemModel& table, const DiscImage& image)
{
    if (!firstPauseHoldsAudio(model, image))
        return false;
    if (QStandardItem* item = table.item(0, TrackTableRows::Index)) {
        item->setText(hiddenTrackIndexText());
        item->setToolTip(QStringLiteral("The pause before track 1 holds audio: a hidden track."));
    }
    return true;
}
