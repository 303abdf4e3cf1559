#include "ddp/TrackTable.h"

#include "ddp/CdTextStrings.h"
#include "ddp/CheckedAccess.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kIsrcOffset = 20;
constexpr std::size_t kIsrcWidth = 12;

// A field as text: UTF-8, up to its first zero byte (an ISRC moved on to the
// track leaves zeros at the pause, which read as nothing).
QString fieldText(std::string_view field)
{
    const std::size_t zero = field.find('\0');
    const std::string_view text = field.substr(0, zero);
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

QString timeQString(int seconds)
{
    return QString::fromStdString(timeText(seconds));
}

} // namespace

void correctIsrcs(std::vector<PqEntry>& entries)
{
    const long long n = static_cast<long long>(entries.size());
    const long long closing = static_cast<long long>(leadOutEntryCount(entries));
    for (long long i = 1; i < n - closing; ++i) {
        PqEntry& entry = entries[static_cast<std::size_t>(i)];
        PqEntry& previous = entries[static_cast<std::size_t>(i - 1)];
        if (entry.indexNumber() == 1 && previous.indexNumber() != 1) {
            std::memcpy(entry.bytes.data() + kIsrcOffset, previous.bytes.data() + kIsrcOffset,
                        kIsrcWidth);
            std::memset(previous.bytes.data() + kIsrcOffset, 0, kIsrcWidth);
        }
    }
}

TrackTableRows buildTrackTableRows(const std::vector<PqEntry>& entries, const CdTextRecord* cdText)
{
    using Column = TrackTableRows::Column;
    TrackTableRows table;
    const long long n = static_cast<long long>(entries.size());
    // The rows skip the first entry and the lead-out: usually two entries,
    // one when the descriptor closes with a single "AA".
    const long long closing = static_cast<long long>(leadOutEntryCount(entries));
    long long r = n - closing;
    int gap = 0; // the lead-in gap G: the length of the first entry
    if (r < 2) {
        --r;
    } else {
        table.rows.reserve(static_cast<std::size_t>(r));
        table.indexList.reserve(static_cast<std::size_t>(r));
        for (long long i = 1; i < r; ++i) {
            const PqEntry& entry = checkedAt(entries, i);
            const int start = entry.wholeSeconds();
            const int length = durationSeconds(entry, checkedAt(entries, i + 1));
            if (i == 1) {
                gap = length;
                if (gap < 3)
                    continue; // the usual two-second pause before track 1 is hidden
            }
            const int index = entry.indexNumber();
            TrackTableRows::Row row(TrackTableRows::kColumnCount);
            row[Column::Track] = fieldText(entry.trackText());
            row[Column::Index] = index < 1 ? QStringLiteral("Pause")
                                           : QStringLiteral("Start ") + QString::number(index);
            row[Column::CdTime] =
                i == 1 ? QStringLiteral("-") + timeQString(gap) : timeQString(start - gap);
            row[Column::Duration] = timeQString(length);
            if (cdText && index == 1) {
                const auto track = static_cast<std::size_t>(entry.trackNumber());
                const CdTextRecord::TrackTexts& texts = checkedAt(cdText->tracks, track);
                for (std::size_t slot = CdTextRecord::Title; slot <= CdTextRecord::Message; ++slot)
                    row[Column::Title + slot] = cdTextString(*cdText, texts[slot]);
            }
            row[Column::Isrc] = fieldText(entry.isrc());
            const std::string_view userText = entry.userText();
            if (std::any_of(userText.begin(), userText.end(), [](char c) { return c != ' '; }))
                row[Column::Usertext] = fieldText(userText);
            table.rows.push_back(std::move(row));
            table.indexList.push_back(static_cast<std::uint32_t>(index));
        }
        if (gap <= 2)
            --r; // one row was hidden
    }

    // The total: where the last entry before the lead-out ends, less the
    // hidden two-second pause (a one-second one is not taken off). A single
    // lead-out entry is that end whether or not a row was hidden.
    const long long totalEntry = closing == 1 ? n - 1 : r + 1;
    int total = checkedAt(entries, totalEntry).wholeSeconds();
    if (gap == 2)
        total -= 2;
    const long long totalRow = r - 1;
    if (totalRow >= 0) {
        if (static_cast<std::size_t>(totalRow) >= table.rows.size())
            table.rows.resize(static_cast<std::size_t>(totalRow) + 1,
                              TrackTableRows::Row(TrackTableRows::kColumnCount));
        table.rows[static_cast<std::size_t>(totalRow)][Column::CdTime] =
            QStringLiteral("Total: ") + timeQString(total);
    }
    return table;
}
