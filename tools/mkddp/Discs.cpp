// Ready-made discs.
#include "tools/mkddp/DiscSpec.h"

#include <QStringList>

namespace mkddp {

bool CdTextStrings::isEmpty() const
{
    return title.isEmpty() && performer.isEmpty() && songwriter.isEmpty() && composer.isEmpty() &&
           arranger.isEmpty() && message.isEmpty() && code.isEmpty();
}

namespace {

QByteArray isrcFor(int track)
{
    return "DEA7F2600" + QByteArray::number(track).rightJustified(3, '0');
}

} // namespace

DiscSpec simpleDisc(int trackCount, int seconds)
{
    DiscSpec spec;
    for (int k = 0; k < trackCount; ++k) {
        TrackSpec t;
        t.frames = cdFrames(seconds);
        t.pauseFrames = k == 0 ? cdFrames(2) : 0;
        t.isrc = isrcFor(k + 1);
        t.userText = QByteArray(19, ' ');
        t.text.title = QStringLiteral("Track %1").arg(k + 1);
        t.text.performer = QStringLiteral("Test Signal");
        spec.tracks.append(t);
    }
    spec.album.title = QStringLiteral("Simple Disc");
    spec.album.performer = QStringLiteral("Test Signal");
    return spec;
}

DiscSpec realisticDisc()
{
    struct Row
    {
        int minutes, seconds, frames;
        int pause; // CD frames
        const char* title;
        const char* performer;
        const char* songwriter;
        const char* userText;
    };
    const Row rows[] = {
        {0, 31, 40, cdFrames(2), "Opening Credits", "Mara Lindqvist", "M. Lindqvist", "take 3"},
        {0, 45, 10, 0, "A Long Title That Runs Across Several Packs", "Mara Lindqvist",
         "M. Lindqvist", ""},
        {0, 28, 73, 112, "Interlude", "The Harbour Quartet", "J. Okafor", "fade shortened"},
        {0, 52, 0, 0, "Night Train", "Mara Lindqvist & The Harbour Quartet", "J. Okafor", ""},
        {0, 33, 33, cdFrames(3), "Glass", "The Harbour Quartet", "", "approved 2026-11-02"},
        {0, 15, 50, 0, "Coda", "Mara Lindqvist", "M. Lindqvist", ""},
        {1, 1, 7, cdFrames(2), "Hidden Shore", "Mara Lindqvist", "M. Lindqvist", "bonus"},
    };
    DiscSpec spec;
    int number = 1;
    for (const Row& r : rows) {
        TrackSpec t;
        t.frames = cdFrames(r.minutes, r.seconds, r.frames);
        t.pauseFrames = r.pause;
        t.isrc = isrcFor(number);
        t.userText = QByteArray(r.userText);
        t.text.title = QString::fromUtf8(r.title);
        t.text.performer = QString::fromUtf8(r.performer);
        t.text.songwriter = QString::fromUtf8(r.songwriter);
        t.text.code = QString::fromLatin1(t.isrc);
        spec.tracks.append(t);
        ++number;
    }
    spec.tracks[2].indexOffsets = {cdFrames(0, 12, 30)}; // index 02 in the interlude
    spec.tracks[3].text.composer = QStringLiteral("Jonas Okafor");
    spec.tracks[3].text.arranger = QStringLiteral("Mara Lindqvist");
    spec.tracks[4].text.message = QStringLiteral("Recorded live");
    spec.upcEan = "4006381333931";
    spec.cdText = true;
    spec.album.title = QStringLiteral("Harbour Sessions");
    spec.album.performer = QStringLiteral("Mara Lindqvist");
    spec.album.code = QString::fromLatin1(spec.upcEan);
    spec.discId = QStringLiteral("TVR-0001");
    spec.genre = 8; // Dance
    return spec;
}

DiscSpec demoDisc()
{
    struct Piece
    {
        int seconds;
        const char* title;
        const char* message;
    };
    const Piece pieces[] = {
        {24, "Morning Light", "In C, four chords"},
        {20, "Harbour Lights", "Index 02 at 00:12"},
        {18, "Slow Tide", ""},
        {22, "Evening Walk", ""},
    };
    DiscSpec spec;
    int number = 1;
    for (const Piece& p : pieces) {
        TrackSpec t;
        t.frames = cdFrames(p.seconds);
        t.isrc = "XXT0026000" + QByteArray::number(number).rightJustified(2, '0');
        t.userText = QByteArray(19, ' ');
        t.text.title = QString::fromLatin1(p.title);
        t.text.performer = QStringLiteral("Tivora Demo Ensemble");
        t.text.songwriter = QStringLiteral("Tivora");
        t.text.message = QString::fromLatin1(p.message);
        t.text.code = QString::fromLatin1(t.isrc);
        spec.tracks.append(t);
        ++number;
    }
    spec.tracks[0].pauseFrames = cdFrames(2);
    spec.tracks[1].indexOffsets = {cdFrames(12)};
    // A short pause before the track after the index 02, so that the index
    // 01 entry follows its own pause entry and keeps its own ISRC.
    spec.tracks[2].pauseFrames = cdFrames(1);
    spec.upcEan = "0712345678904";
    spec.cdText = true;
    spec.album.title = QStringLiteral("Tivora Demo Disc");
    spec.album.performer = QStringLiteral("Tivora Demo Ensemble");
    spec.album.code = QString::fromLatin1(spec.upcEan);
    spec.genre = 17; // New Age
    spec.content = AudioContent::DemoMusic;
    return spec;
}

DiscSpec longDisc(int minutes)
{
    // Four-minute tracks and a shorter last one; the 2 s first pause counts
    // towards the length, so 74 minutes is exactly 783216000 bytes.
    const int total = cdFrames(minutes * 60) - cdFrames(2);
    DiscSpec spec;
    int left = total;
    int number = 1;
    while (left > 0) {
        TrackSpec t;
        t.frames = qMin(left, cdFrames(4 * 60));
        t.isrc = isrcFor(number++);
        t.userText = QByteArray(19, ' ');
        left -= t.frames;
        spec.tracks.append(t);
    }
    if (!spec.tracks.isEmpty())
        spec.tracks[0].pauseFrames = cdFrames(2);
    return spec;
}

QString longLatin1Title()
{
    const QString letters = QStringLiteral("ÄÖÜäöüßéèàçñ");
    QString title;
    for (int i = 0; i < 159; ++i)
        title += letters.at(i % letters.size());
    return title;
}

void putLongCdText(DiscSpec& spec)
{
    spec.cdText = true;
    const QStringList names = {QStringLiteral("Title"),      QStringLiteral("Performer"),
                               QStringLiteral("Songwriter"), QStringLiteral("Composer"),
                               QStringLiteral("Arranger"),   QStringLiteral("Message")};
    // "Title of track 2: Title of track 2: ..." cut to 150 characters, so
    // every string differs from every other one over its whole length.
    auto fill = [&](CdTextStrings& text, const QString& owner) {
        QString* strings[] = {&text.title,    &text.performer, &text.songwriter,
                              &text.composer, &text.arranger,  &text.message};
        for (int slot = 0; slot < 6; ++slot) {
            const QString unit = QStringLiteral("%1 of %2: ").arg(names.at(slot), owner);
            *strings[slot] = unit.repeated(150 / unit.size() + 1).left(150);
        }
    };
    fill(spec.album, QStringLiteral("the album"));
    for (int k = 0; k < spec.tracks.size(); ++k)
        fill(spec.tracks[k].text, QStringLiteral("track %1").arg(spec.firstTrackNumber + k));
}

void putControlCharacters(DiscSpec& spec)
{
    spec.cdText = true;
    spec.album.title = QStringLiteral("Album\x1b]0;retitled\x07 Sessions");
    if (spec.tracks.isEmpty())
        return;
    spec.tracks[0].text.title = QStringLiteral("Red\x1b[31m\tTab\nLine\x7f\u009b2J");
    spec.tracks.last().text.performer = QStringLiteral("Bell\x07 NEL\u0085 End");
}

} // namespace mkddp
