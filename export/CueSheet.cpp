#include "export/CueSheet.h"

#include "ddp/DDPModel.h"
#include "ddp/DiscTexts.h"
#include "ddp/PqTime.h"

#include <QStringList>

#include <exception>

namespace {

QString quoted(QString text)
{
    // Line breaks and other control characters would end the line early.
    for (QChar& c : text) {
        if (c == QLatin1Char('"'))
            c = QLatin1Char('\'');
        else if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            c = QLatin1Char(' ');
    }
    return QLatin1Char('"') + text + QLatin1Char('"');
}

void addText(QStringList& lines, const QString& indent, const DDPModel& model, int track)
{
    const struct
    {
        const char* keyword;
        CdTextRecord::SlotIndex slot;
    } kTexts[] = {{"TITLE", CdTextRecord::Title},
                  {"PERFORMER", CdTextRecord::Performer},
                  {"SONGWRITER", CdTextRecord::Songwriter}};
    for (const auto& text : kTexts) {
        const QString value = trackText(model, track, text.slot);
        if (!value.isEmpty())
            lines.append(indent + QLatin1String(text.keyword) + QLatin1Char(' ') + quoted(value));
    }
}

bool isLeadInOrOut(const PqEntry& entry)
{
    return entry.trackText() == "00" || entry.trackText() == "AA";
}

} // namespace

std::uint64_t cueAudioBytes(const DDPModel& model)
{
    return pqAudioBytes(model.entries());
}

QByteArray cueSheet(const DDPModel& model, const QString& audioFileName, CueAudioFile kind)
{
    QStringList lines;
    const QString catalog = discUpcEan(model, ZeroCodes::Skipped);
    // A catalog number is 13 digits; anything else would make burners refuse
    // the whole sheet.
    bool digits = catalog.size() == 13;
    for (QChar c : catalog)
        digits = digits && c.isDigit() && c.unicode() < 0x80;
    if (digits)
        lines.append(QStringLiteral("CATALOG ") + catalog);
    addText(lines, QString(), model, 0);
    lines.append(QStringLiteral("FILE %1 %2")
                     .arg(quoted(audioFileName), kind == CueAudioFile::Wave
                                                     ? QStringLiteral("WAVE")
                                                     : QStringLiteral("BINARY")));

    // Entries are grouped by track in the order of the descriptor; an index
    // 00 entry is the pause before its own track, as in a cue sheet. The
    // entries as the descriptor holds them: the table's moves each ISRC.
    const std::vector<PqEntry>& entries = model.pqEntries();
    int lastTrack = 0;
    int cueTrack = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const PqEntry& entry = entries[i];
        if (isLeadInOrOut(entry))
            continue;
        int track = 0;
        int index = 0;
        std::int64_t frame = 0;
        try {
            track = entry.trackNumber();
            index = entry.indexNumber();
            frame = cdFrameOf(entry);
        } catch (const std::exception&) {
            continue; // an entry without numbers has no place on the disc
        }
        if (track != lastTrack || cueTrack == 0) {
            // Track numbers as the disc has them while they rise; repeated or
            // falling numbers (a faulty descriptor) count on from the last.
            cueTrack = track > cueTrack && track <= 99 ? track : cueTrack + 1;
            lastTrack = track;
            lines.append(QStringLiteral("  TRACK %1 AUDIO").arg(cueTrack, 2, 10, QLatin1Char('0')));
            // The flags and the ISRC as the track's start carries them: the
            // index 01 entry (a pause before it may be marked otherwise).
            const PqEntry* start = &entry;
            for (std::size_t j = i; j < entries.size() && !isLeadInOrOut(entries[j]); ++j) {
                try {
                    if (entries[j].trackNumber() != track)
                        break;
                    if (entries[j].indexNumber() == 1) {
                        start = &entries[j];
                        break;
                    }
                } catch (const std::exception&) {
                    break;
                }
            }
            const PqControlFlags flags = pqControlFlags(*start);
            QStringList flagWords;
            if (flags.preEmphasis)
                flagWords.append(QStringLiteral("PRE"));
            if (flags.copyPermitted)
                flagWords.append(QStringLiteral("DCP"));
            if (flags.fourChannel)
                flagWords.append(QStringLiteral("4CH"));
            if (!flagWords.isEmpty())
                lines.append(QStringLiteral("    FLAGS ") + flagWords.join(QLatin1Char(' ')));
            const std::string isrc = validIsrc(*start);
            if (!isrc.empty())
                lines.append(QStringLiteral("    ISRC ") + QString::fromStdString(isrc));
            addText(lines, QStringLiteral("    "), model, track);
        }
        lines.append(QStringLiteral("    INDEX %1 %2")
                         .arg(index, 2, 10, QLatin1Char('0'))
                         .arg(QString::fromStdString(frameTimeText(frame))));
    }

    const QString text = lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
    for (QChar c : text) {
        if (c.unicode() > 0xFF)
            return text.toUtf8();
    }
    return text.toLatin1();
}
