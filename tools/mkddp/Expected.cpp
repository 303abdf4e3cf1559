// What the player's track table should show for a generated disc, worked out
// from the disc's layout with the table's own rules: the first entry and the
// lead-out entries (the last two, or a single closing "AA") are never rows, a
// first pause under 3 s is hidden, times are shown relative to the end of
// that pause, and so on.
#include "tools/mkddp/Expected.h"

#include "tools/mkddp/DiscFiles.h"
#include "tools/mkddp/TestPattern.h"

#include <QStringList>

namespace mkddp {

namespace {

QString timeText(int seconds)
{
    const int s = ((seconds % 86400) + 86400) % 86400;
    auto two = [](int n) { return QString::number(n).rightJustified(2, QLatin1Char('0')); };
    return two(s / 60) + QLatin1Char(':') + two(s % 60);
}

int wholeSeconds(const LayoutEntry& e)
{
    return e.minutes() * 60 + e.seconds();
}

int duration(const LayoutEntry& a, const LayoutEntry& b)
{
    return wholeSeconds(b) - wholeSeconds(a) - (b.frames() < a.frames() ? 1 : 0);
}

// The entries after the last track that make no row: the "AA" 01 and 00
// pair, or a single "AA" entry when that is all the descriptor closes with.
int leadOutCount(const QVector<LayoutEntry>& layout)
{
    const int n = layout.size();
    return n >= 2 && layout.at(n - 1).track == "AA" && layout.at(n - 2).track != "AA" ? 1 : 2;
}

QByteArray padded(const QByteArray& text, int width)
{
    return text.left(width).leftJustified(width, ' ');
}

// The ISRC as each entry carries it after the player's correction pass: an
// index 01 entry that follows an entry of another index takes that entry's
// ISRC, which is left empty.
QVector<QString> shownIsrcs(const DiscSpec& spec, const QVector<LayoutEntry>& layout)
{
    QVector<QByteArray> isrc;
    for (const LayoutEntry& e : layout) {
        if (e.trackNumber == 0) {
            isrc.append(QByteArray(12, ' '));
            continue;
        }
        const TrackSpec& t = spec.tracks.at(e.trackNumber - spec.firstTrackNumber);
        isrc.append(padded(e.index == 0 && t.pauseIsrc ? *t.pauseIsrc : t.isrc, 12));
    }
    const int n = layout.size();
    for (int i = 1; i < n - leadOutCount(layout); ++i) {
        if (layout.at(i).index == 1 && layout.at(i - 1).index != 1) {
            isrc[i] = isrc.at(i - 1);
            isrc[i - 1].clear();
        }
    }
    QVector<QString> shown;
    for (const QByteArray& b : isrc)
        shown.append(QString::fromUtf8(b));
    return shown;
}

const CdTextStrings* trackText(const DiscSpec& spec, int trackNumber)
{
    if (!spec.cdText)
        return nullptr;
    if (trackNumber == 0)
        return &spec.album;
    const int k = trackNumber - spec.firstTrackNumber;
    return k >= 0 && k < spec.tracks.size() ? &spec.tracks.at(k).text : nullptr;
}

struct Table
{
    QJsonArray rows;
    QJsonArray indexList;
};

Table expectedTable(const DiscSpec& spec)
{
    const QVector<LayoutEntry> layout = pqLayout(spec);
    const QVector<QString> isrcs = shownIsrcs(spec, layout);
    Table table;
    const int closing = leadOutCount(layout);
    int r = layout.size() - closing;
    int gap = 0;
    if (r < 2) {
        --r;
    } else {
        for (int i = 1; i < r; ++i) {
            const LayoutEntry& e = layout.at(i);
            const int length = duration(e, layout.at(i + 1));
            if (i == 1) {
                gap = length;
                if (gap < 3)
                    continue;
            }
            QJsonArray row;
            row.append(QJsonValue::Null); // "Type": the play-state mark, no item
            row.append(QString::fromLatin1(e.track));
            // The test pattern's pauses hold its frame counter: a first
            // pause of the pattern holds audio unless made silent.
            const bool hiddenTrack =
                i == 1 && spec.content == AudioContent::TestPattern && !spec.silentPauses;
            row.append(e.index >= 1  ? QStringLiteral("Start %1").arg(e.index)
                       : hiddenTrack ? QStringLiteral("Hidden")
                                     : QStringLiteral("Pause"));
            row.append(i == 1 ? QStringLiteral("-") + timeText(gap)
                              : timeText(wholeSeconds(e) - gap));
            row.append(timeText(length));
            const CdTextStrings* text = e.index == 1 ? trackText(spec, e.trackNumber) : nullptr;
            const QString* texts[] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
            if (text) {
                texts[0] = &text->title;
                texts[1] = &text->performer;
                texts[2] = &text->songwriter;
                texts[3] = &text->composer;
                texts[4] = &text->arranger;
                texts[5] = &text->message;
            }
            for (const QString* s : texts)
                row.append(s ? QJsonValue(*s) : QJsonValue(QJsonValue::Null));
            row.append(isrcs.at(i));
            QByteArray userText;
            if (e.index == 1 && e.trackNumber > 0)
                userText = spec.tracks.at(e.trackNumber - spec.firstTrackNumber).userText;
            userText = padded(userText, 19);
            row.append(userText.trimmed().isEmpty() ? QJsonValue(QJsonValue::Null)
                                                    : QJsonValue(QString::fromUtf8(userText)));
            table.rows.append(row);
            table.indexList.append(e.index);
        }
        if (gap <= 2)
            --r;
    }
    const int totalEntry = closing == 1 ? layout.size() - 1 : r + 1;
    if (r - 1 >= 0 && totalEntry < layout.size()) {
        const int total = wholeSeconds(layout.at(totalEntry)) - (gap == 2 ? 2 : 0);
        QJsonArray row;
        for (int c = 0; c < 13; ++c)
            row.append(c == 3 ? QJsonValue(QStringLiteral("Total: ") + timeText(total))
                              : QJsonValue(QJsonValue::Null));
        while (table.rows.size() < r - 1) {
            QJsonArray empty;
            for (int c = 0; c < 13; ++c)
                empty.append(QJsonValue::Null);
            table.rows.append(empty);
        }
        table.rows.append(row);
    }
    return table;
}

QString genreName(int code)
{
    static const QStringList names = {QStringLiteral("Not Defined"),
                                      QStringLiteral("Adult Contemporary"),
                                      QStringLiteral("Alternative Rock"),
                                      QStringLiteral("Childrens Music"),
                                      QStringLiteral("Classical"),
                                      QStringLiteral("Contemporary Christian"),
                                      QStringLiteral("Country"),
                                      QStringLiteral("Dance"),
                                      QStringLiteral("Easy Listening"),
                                      QStringLiteral("Erotic"),
                                      QStringLiteral("Folk"),
                                      QStringLiteral("Gospel"),
                                      QStringLiteral("Hip Hop"),
                                      QStringLiteral("Jazz"),
                                      QStringLiteral("Latin"),
                                      QStringLiteral("Musical"),
                                      QStringLiteral("New Age"),
                                      QStringLiteral("Opera"),
                                      QStringLiteral("Operetta"),
                                      QStringLiteral("Pop Music"),
                                      QStringLiteral("Rap"),
                                      QStringLiteral("Reggae"),
                                      QStringLiteral("Rock Music"),
                                      QStringLiteral("Rhythm & Blues"),
                                      QStringLiteral("Sound Effects"),
                                      QStringLiteral("Spoken Word"),
                                      QStringLiteral("World Music")};
    return code >= 1 && code <= names.size() ? names.at(code - 1) : QString();
}

QJsonObject recordJson(const CdTextStrings& s)
{
    return QJsonObject{
        {QStringLiteral("title"), s.title},
        {QStringLiteral("performer"), s.performer},
        {QStringLiteral("songwriter"), s.songwriter},
        {QStringLiteral("composer"), s.composer},
        {QStringLiteral("arranger"), s.arranger},
        {QStringLiteral("message"), s.message},
        {QStringLiteral("code"), s.code},
    };
}

} // namespace

QJsonArray expectedRows(const DiscSpec& spec)
{
    return expectedTable(spec).rows;
}

QJsonArray expectedIndexList(const DiscSpec& spec)
{
    return expectedTable(spec).indexList;
}

QJsonValue expectedCdText(const DiscSpec& spec)
{
    if (!spec.cdText)
        return QJsonValue(QJsonValue::Null);
    QJsonArray tracks;
    tracks.append(recordJson(spec.album));
    // Records run from 0 to the last track number; tracks before the first
    // track number (rare) have empty records.
    for (int n = 1; n <= spec.lastTrackNumber(); ++n) {
        const CdTextStrings* text = trackText(spec, n);
        tracks.append(recordJson(text ? *text : CdTextStrings()));
    }
    return QJsonObject{
        {QStringLiteral("doubleByte"), spec.doubleByte},
        {QStringLiteral("genre"), genreName(spec.genre)},
        {QStringLiteral("album"), spec.discId},
        {QStringLiteral("tracks"), tracks},
    };
}

QByteArray expectedImageBytes(const DiscSpec& spec)
{
    QByteArray bytes = TestPattern(spec).bytes(0, imageSize(spec));
    qint64 end = 0;
    for (const ImageStreamFile& stream : imageStreamFiles(spec)) {
        bytes.replace(int(end), int(stream.begin - end), QByteArray(int(stream.begin - end), '\0'));
        end = stream.end;
    }
    return bytes;
}

} // namespace mkddp
