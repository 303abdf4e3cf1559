#include "verify/DiscCheck.h"

#include "ddp/DDPModel.h"
#include "ddp/PqTime.h"

#include <QStringList>

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <set>

namespace {

constexpr int kMinTrackFrames = 4 * kCdFramesPerSecond;
constexpr int kMinFirstPauseFrames = 2 * kCdFramesPerSecond;
constexpr int kMaxDiscFrames = (79 * 60 + 59) * kCdFramesPerSecond + 74; // 79:59:74
constexpr std::size_t kPackSize = 18;

std::optional<int> number(std::string_view field)
{
    int value = 0;
    for (char c : field) {
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

// Disc time in CD frames; the hours field is ignored, as everywhere else.
std::optional<int> frameTime(const PqEntry& entry)
{
    const auto m = number(entry.field(10, 2));
    const auto s = number(entry.field(12, 2));
    const auto f = number(entry.field(14, 2));
    if (!m || !s || !f)
        return std::nullopt;
    return (*m * 60 + *s) * kCdFramesPerSecond + *f;
}

QString timeText(int frames)
{
    return QString::fromStdString(frameTimeText(frames));
}

QString text(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}

bool blankOrZero(std::string_view field)
{
    return std::all_of(field.begin(), field.end(), [](char c) { return c == ' ' || c == '\0'; });
}

struct Track
{
    int number = 0;
    std::vector<const PqEntry*> entries;
    const PqEntry* index01 = nullptr;
};

class Checker
{
public:
    Checker(const DDPModel& model, const std::string& cdText)
        : m_model(model), m_cdText(cdText),
          m_rawEntries(model.pqEntries().size() == model.entries().size() ? model.pqEntries()
                                                                          : model.entries())
    {}

    std::vector<Finding> run()
    {
        gatherTracks();
        numbering();
        times();
        image();
        isrcs();
        barcode();
        cdText();
        controlFlags();
        return std::move(m_findings);
    }

private:
    void add(const char* id, Finding::Severity severity, int track, QString sentence)
    {
        m_findings.push_back({id, severity, track, std::move(sentence)});
    }

    void gatherTracks()
    {
        const std::vector<PqEntry>& entries = m_model.entries();
        const std::size_t leadOut = std::min(leadOutEntryCount(entries), entries.size());
        m_trackEnd = entries.size() - leadOut;
        if (leadOut > 0 && m_trackEnd < entries.size())
            m_leadOut = frameTime(entries[m_trackEnd]);
        std::size_t i = 0;
        // Lead-in entries: track 00 before the first track.
        while (i < m_trackEnd && number(entries[i].trackText()) == 0)
            ++i;
        for (; i < m_trackEnd; ++i) {
            const PqEntry& entry = entries[i];
            const int trackNumber = number(entry.trackText()).value_or(-1);
            if (m_tracks.empty() || m_tracks.back().number != trackNumber)
                m_tracks.push_back({trackNumber, {}, nullptr});
            m_tracks.back().entries.push_back(&entry);
            if (number(entry.field(6, 2)) == 1 && !m_tracks.back().index01)
                m_tracks.back().index01 = &entry;
        }
    }

    static int trackOf(const Track& track) { return std::max(track.number, 0); }

    void numbering()
    {
        if (m_tracks.size() > 99)
            add("too-many-tracks", Finding::Error, 0,
                QStringLiteral("The disc has %1 tracks; a CD holds at most 99.")
                    .arg(m_tracks.size()));
        for (std::size_t k = 0; k < m_tracks.size(); ++k) {
            const Track& track = m_tracks[k];
            if (track.number < 1) {
                add("track-number-sequence", Finding::Error, 0,
                    QStringLiteral("An entry carries the track number \"%1\", which is no "
                                   "track number.")
                        .arg(text(track.entries.front()->trackText())));
            } else if (k > 0 && track.number != m_tracks[k - 1].number + 1) {
                add("track-number-sequence", Finding::Error, track.number,
                    QStringLiteral("Track %1 follows track %2: track numbers must run on by "
                                   "one.")
                        .arg(track.number)
                        .arg(m_tracks[k - 1].number));
            }
            if (!track.index01)
                add("track-without-index-01", Finding::Error, trackOf(track),
                    QStringLiteral("Track %1 has no index 01: players cannot find its "
                                   "start.")
                        .arg(track.number));
            std::optional<int> previous;
            for (const PqEntry* entry : track.entries) {
                const std::optional<int> index = number(entry->field(6, 2));
                const bool rises = index && (previous ? *index == *previous + 1 : *index <= 1);
                if (!rises) {
                    add("index-sequence", Finding::Error, trackOf(track),
                        QStringLiteral("Track %1: index \"%2\" %3.")
                            .arg(track.number)
                            .arg(text(entry->field(6, 2)))
                            .arg(previous ? QStringLiteral("follows index %1; indexes rise by one")
                                                .arg(*previous, 2, 10, QLatin1Char('0'))
                                          : QStringLiteral("opens the track; a track opens "
                                                           "with index 00 or 01")));
                    break;
                }
                previous = index;
            }
        }
    }

    void times()
    {
        std::optional<int> previous;
        const Track* previousTrack = nullptr;
        for (const Track& track : m_tracks) {
            for (const PqEntry* entry : track.entries) {
                const std::optional<int> time = frameTime(*entry);
                if (time && previous && *time <= *previous) {
                    add("time-not-rising", Finding::Error, trackOf(track),
                        QStringLiteral("Track %1 index %2 starts at %3, not after the entry "
                                       "before it (%4).")
                            .arg(track.number)
                            .arg(text(entry->field(6, 2)), timeText(*time), timeText(*previous)));
                }
                if (time)
                    previous = time;
            }
            previousTrack = &track;
        }
        if (previousTrack && m_leadOut && previous && *m_leadOut <= *previous)
            add("time-not-rising", Finding::Error, 0,
                QStringLiteral("The lead-out starts at %1, not after the last track's entries.")
                    .arg(timeText(*m_leadOut)));

        // A track runs from its index 01 to the first entry of the next track
        // (its pause, when it has one): the pause belongs to the track after.
        for (std::size_t k = 0; k < m_tracks.size(); ++k) {
            const Track& track = m_tracks[k];
            if (!track.index01)
                continue;
            const std::optional<int> start = frameTime(*track.index01);
            const std::optional<int> end =
                k + 1 < m_tracks.size() ? frameTime(*m_tracks[k + 1].entries.front()) : m_leadOut;
            if (start && end && *end - *start < kMinTrackFrames)
                add("track-too-short", Finding::Error, trackOf(track),
                    QStringLiteral("Track %1 lasts %2; a track must last at least 4 seconds.")
                        .arg(track.number)
                        .arg(timeText(std::max(0, *end - *start))));
        }
        if (!m_tracks.empty() && m_tracks.front().index01) {
            const std::optional<int> start = frameTime(*m_tracks.front().index01);
            if (start && *start < kMinFirstPauseFrames)
                add("first-pause-too-short", Finding::Error, trackOf(m_tracks.front()),
                    QStringLiteral("The pause before track %1 lasts %2; it must last at least "
                                   "2 seconds.")
                        .arg(m_tracks.front().number)
                        .arg(timeText(*start)));
        }
        if (m_leadOut && *m_leadOut > kMaxDiscFrames)
            add("disc-too-long", Finding::Error, 0,
                QStringLiteral("The disc lasts %1; a CD holds at most 79:59:74.")
                    .arg(timeText(*m_leadOut)));
    }

    void image()
    {
        const ImageLayout& layout = m_model.imageLayout();
        if (layout.streams.empty() || !m_leadOut)
            return;
        const std::uint64_t needed = std::uint64_t(*m_leadOut) * kBytesPerCdFrame;
        const std::uint64_t size = m_model.imageSize();
        if (size < needed)
            add("image-short", Finding::Error, 0,
                QStringLiteral("The audio image holds %1 bytes, %2 fewer than the lead-out at "
                               "%3 needs: audio is missing.")
                    .arg(size)
                    .arg(needed - size)
                    .arg(timeText(*m_leadOut)));
        else if (size > needed)
            add("image-long", Finding::Warning, 0,
                QStringLiteral("The audio image holds %1 bytes past the lead-out at %2: audio "
                               "that would not be pressed.")
                    .arg(size - needed)
                    .arg(timeText(*m_leadOut)));
        for (const ImageStream& stream : layout.streams)
            if (stream.length % kBytesPerCdFrame != 0)
                add("image-partial-frame", Finding::Error, 0,
                    QStringLiteral("%1 holds %2 bytes, not a whole number of 2352-byte frames.")
                        .arg(QString::fromStdString(stream.name))
                        .arg(stream.length));
    }

    void isrcs()
    {
        std::map<std::string, int> seen;
        for (const Track& track : m_tracks) {
            if (!track.index01)
                continue;
            const std::string_view isrc =
                m_rawEntries[std::size_t(track.index01 - m_model.entries().data())].isrc();
            if (blankOrZero(isrc))
                continue;
            if (!isIsrc(isrc)) {
                add("isrc-invalid", Finding::Error, trackOf(track),
                    QStringLiteral("Track %1: the ISRC \"%2\" is not two letters, three letters "
                                   "or digits, two digits and five digits.")
                        .arg(track.number)
                        .arg(text(isrc)));
                continue;
            }
            const auto [it, fresh] = seen.emplace(std::string(isrc), track.number);
            if (!fresh)
                add("isrc-duplicate", Finding::Warning, trackOf(track),
                    QStringLiteral("Track %1 has the ISRC %2 of track %3.")
                        .arg(track.number)
                        .arg(text(isrc))
                        .arg(it->second));
        }
    }

    static bool validEan13(std::string_view code)
    {
        if (code.size() != 13 || !number(code))
            return false;
        int sum = 0;
        for (std::size_t i = 0; i < 12; ++i)
            sum += (code[i] - '0') * (i % 2 == 0 ? 1 : 3);
        return (10 - sum % 10) % 10 == code[12] - '0';
    }

    void barcode()
    {
        std::string_view pq;
        for (std::size_t i = 0; i < m_trackEnd && pq.empty(); ++i)
            if (!blankOrZero(m_model.entries()[i].upcEan()))
                pq = m_model.entries()[i].upcEan();
        std::string_view ddpid = m_model.ddpIdUpcEan();
        auto absent = [](std::string_view code) {
            return blankOrZero(code) ||
                   std::all_of(code.begin(), code.end(), [](char c) { return c == '0'; });
        };
        if (absent(pq) && absent(ddpid)) {
            add("upc-none", Finding::Note, 0, QStringLiteral("The disc has no UPC/EAN barcode."));
            return;
        }
        auto check = [&](std::string_view code, const QString& where) {
            if (!absent(code) && !validEan13(code))
                add("upc-invalid", Finding::Error, 0,
                    QStringLiteral("The UPC/EAN \"%1\" of the %2 is not 13 digits with a valid "
                                   "check digit.")
                        .arg(text(code), where));
        };
        check(pq, QStringLiteral("PQ descriptor"));
        check(ddpid, QStringLiteral("DDP identifier"));
        if (!absent(pq) && !absent(ddpid) && pq != ddpid)
            add("upc-mismatch", Finding::Warning, 0,
                QStringLiteral("The DDP identifier's UPC/EAN %1 differs from the PQ "
                               "descriptor's %2.")
                    .arg(text(ddpid), text(pq)));
    }

    // The CD-Text pack CRC: CRC-16 (x^16 + x^12 + x^5 + 1, starting at 0) of
    // the first 16 bytes, inverted, high byte first.
    static bool packCrcMatches(const unsigned char* pack)
    {
        unsigned crc = 0;
        for (int i = 0; i < 16; ++i) {
            crc ^= unsigned(pack[i]) << 8;
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc & 0x8000) ? ((crc << 1) ^ 0x1021) & 0xFFFF : (crc << 1) & 0xFFFF;
        }
        crc = ~crc & 0xFFFF;
        return pack[16] == (crc >> 8) && pack[17] == (crc & 0xFF);
    }

    void cdText()
    {
        if (!m_model.hasCdText() || m_cdText.empty())
            return;
        const auto* bytes = reinterpret_cast<const unsigned char*>(m_cdText.data());
        const std::size_t packs = m_cdText.size() / kPackSize;
        std::size_t badCrc = 0;
        for (std::size_t p = 0; p < packs; ++p)
            if (!packCrcMatches(bytes + p * kPackSize))
                ++badCrc;
        if (badCrc > 0)
            add("cdtext-crc", Finding::Error, 0,
                QStringLiteral("%1 of the %2 CD-Text packs fail their CRC.")
                    .arg(badCrc)
                    .arg(packs));
        if (!m_model.cdText().fitsLeadIn())
            add("cdtext-too-large", Finding::Error, 0,
                QString::fromStdString(m_model.cdText().leadInWarning()));

        // Text of the first block for a track past the disc's last: walk the
        // strings of each text pack type, counting tracks at each zero that
        // ends one (two zeros in a double-byte block).
        int lastTrack = 0;
        for (const Track& track : m_tracks)
            lastTrack = std::max(lastTrack, track.number);
        std::set<int> beyond;
        for (std::size_t p = 0; p < packs; ++p) {
            const unsigned char* pack = bytes + p * kPackSize;
            const unsigned type = pack[0];
            const bool textType = (type >= 0x80 && type <= 0x85) || type == 0x8E;
            if (!textType || ((pack[3] >> 4) & 0x07) != 0)
                continue;
            const bool doubleByte = (pack[3] & 0x80) != 0;
            const std::size_t step = doubleByte ? 2 : 1;
            int track = pack[1] & 0x7F;
            for (std::size_t i = 4; i + step <= 16; i += step) {
                const bool end = pack[i] == 0 && (!doubleByte || pack[i + 1] == 0);
                if (end)
                    ++track;
                else if (track > lastTrack)
                    beyond.insert(track);
            }
        }
        for (int track : beyond)
            add("cdtext-extra-track", Finding::Warning, track,
                QStringLiteral("The CD-Text holds text for track %1, which the disc does not "
                               "have.")
                    .arg(track));
    }

    void controlFlags()
    {
        for (const Track& track : m_tracks) {
            if (!track.index01)
                continue;
            const PqControlFlags flags = pqControlFlags(*track.index01);
            if (flags.preEmphasis)
                add("pre-emphasis", Finding::Warning, trackOf(track),
                    QStringLiteral("Track %1 is flagged for pre-emphasis: players de-emphasize "
                                   "it, this one plays the samples as they stand.")
                        .arg(track.number));
            if (flags.copyPermitted)
                add("copy-permitted", Finding::Note, trackOf(track),
                    QStringLiteral("Track %1 is flagged as copy permitted.").arg(track.number));
            if (flags.data)
                add("data-track", Finding::Warning, trackOf(track),
                    QStringLiteral("Track %1 is flagged as data, not audio.").arg(track.number));
            if (flags.fourChannel)
                add("four-channel", Finding::Note, trackOf(track),
                    QStringLiteral("Track %1 is flagged as four-channel audio.").arg(track.number));
        }
    }

    const DDPModel& m_model;
    const std::string& m_cdText;
    // As the descriptor holds them, before the ISRC correction.
    const std::vector<PqEntry>& m_rawEntries;
    std::vector<Track> m_tracks;
    std::size_t m_trackEnd = 0;
    std::optional<int> m_leadOut;
    std::vector<Finding> m_findings;
};

} // namespace

const char* severityName(Finding::Severity severity)
{
    switch (severity) {
    case Finding::Error:
        return "error";
    case Finding::Warning:
        return "warning";
    case Finding::Note:
        break;
    }
    return "note";
}

std::vector<Finding> checkDisc(const DDPModel& model, const std::string& cdTextBytes)
{
    return Checker(model, cdTextBytes).run();
}

QString findingsSummary(const std::vector<Finding>& findings)
{
    const auto count = [&findings](Finding::Severity severity) {
        return std::count_if(findings.begin(), findings.end(),
                             [severity](const Finding& f) { return f.severity == severity; });
    };
    QStringList parts;
    if (const auto errors = count(Finding::Error))
        parts << (errors == 1 ? QStringLiteral("1 error")
                              : QStringLiteral("%1 errors").arg(errors));
    if (const auto warnings = count(Finding::Warning))
        parts << (warnings == 1 ? QStringLiteral("1 warning")
                                : QStringLiteral("%1 warnings").arg(warnings));
    return parts.join(QStringLiteral(", "));
}
