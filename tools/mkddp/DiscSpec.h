#pragma once

#include "tools/mkddp/Fault.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

namespace mkddp {

// CD frames: 75 a second, 2352 image bytes (588 stereo sample frames) each.
constexpr int kFramesPerSecond = 75;
constexpr int kBytesPerCdFrame = 2352;
constexpr int kSamplesPerCdFrame = 588;
constexpr int kBytesPerSecond = 176400;
constexpr int cdFrames(int seconds)
{
    return seconds * kFramesPerSecond;
}
constexpr int cdFrames(int minutes, int seconds, int frames)
{
    return (minutes * 60 + seconds) * kFramesPerSecond + frames;
}

// The seven CD-Text strings of the album (record 0) or of one track. Given as
// Unicode; written as Latin-1 in a single-byte block and as code page 932 in
// a double-byte one. `code` is the UPC/EAN for the album, the ISRC for a track.
struct CdTextStrings
{
    // Default initializers let {QStringLiteral("Title")} leave the rest empty.
    QString title{};
    QString performer{};
    QString songwriter{};
    QString composer{};
    QString arranger{};
    QString message{};
    QString code{};

    bool isEmpty() const;
};

struct TrackSpec
{
    int frames = cdFrames(10); // length from index 01 to the next track (CD frames)
    int pauseFrames = 0;       // index 00 before index 01 (CD frames); 0 = no index 00 entry
    QVector<int> indexOffsets; // index 02, 03, ...: CD frames after index 01, ascending
    QByteArray isrc;           // 12 characters, blank padded; written into every entry of
                               // the track
    std::optional<QByteArray> pauseIsrc; // ISRC of the index 00 entry when it differs
    QByteArray userText;                 // 19 characters, blank padded; index 01 entry only
    CdTextStrings text;

    double seconds() const { return frames / double(kFramesPerSecond); }
    double pauseSeconds() const { return pauseFrames / double(kFramesPerSecond); }
};

// A checksum file written beside the disc once it is complete, listing
// every file of the DDP, as authoring tools do.
enum class ChecksumStyle
{
    None,
    Md5,           // CHECKSUM.MD5: "<md5>  NAME", LF, lower-case hex
    Md5CrlfUpper,  // MD5_CHECKSUM.MD5: "<MD5> *NAME", CRLF, upper-case hex
    Md5LowerNames, // checksum.md5: the names in lower case
    CrcIni,        // CHECKSUM.TXT: "[CRC32 Checksum]" then "NAME=XXXXXXXX", CRLF
    Unknown,       // CHECKSUM.TXT holding SHA-1 lines of the BSD style
};

enum class AudioContent
{
    TestPattern, // see TestPattern.h: every byte is predictable
    DemoMusic,   // chords with envelopes, for listening
    Silence,
    KnownSignals, // see KnownSignals.h: sines, silence and clipping for loudness meters
};

// A whole disc. The PQ descriptor holds, in order: a lead-in entry (track
// "00", index 00, at 00:00:00, carrying the UPC/EAN), then per track its
// index 00 (when pauseFrames > 0), 01 and the extra indexes, then the
// lead-out entries (track "AA", index 01 then 00, both at the end time).
// The audio image starts with the first track's pause.
struct DiscSpec
{
    QVector<TrackSpec> tracks;
    int firstTrackNumber = 1;
    bool leadInEntry = true;
    int leadOutEntries = 2;              // "AA" 01, "AA" 00 (0 to 2)
    int pqHours = 0;                     // written into the hours field of every entry
    bool blankHours = false;             // two blanks in the hours field instead
    QByteArray pqControl = "0100";       // the 4 control bytes of every entry, blank padded
    QByteArray ddpLevel = "DDP 2.00";    // "DDP 1.01" writes the older DDPID layout
    QByteArray upcEan = "0000000000000"; // 13 digits: DDPID offset 8 and the lead-in entry

    // CD-Text (first block); written only when `cdText` is set.
    bool cdText = false;
    bool doubleByte = false; // code page 932, double-zero terminated strings
    CdTextStrings album;     // album.code is usually the UPC/EAN
    QString discId;          // disc identification (pack type 0x86); none when empty
    int genre = 0;           // 0 = no genre pack; written as is (1..27 are known codes)
    QByteArray genreText;    // supplementary genre text, ASCII, up to 9 bytes
    int languageCode = 0x09; // English; 0x69 Japanese
    // A second language block (single-byte, German): [0] album, [k] track k.
    QVector<CdTextStrings> secondBlock;

    // File names as written in the DDPMS (17 bytes at offset 74).
    QByteArray imageName = "IMAGE.DAT";
    QByteArray pqName = "PQDESCR";
    QByteArray cdTextName = "CDTEXT.BIN"; // may hold inner blanks ("CD TEXT.BIN"): the
                                          // file on disk is named without them
    bool lowerCaseOnDisk = false;         // every file, DDPID and DDPMS too, in lower case
    bool zeroPadNames = false;            // pad the DDPMS names with zero bytes, not blanks

    // The image split over several files, as some authoring tools write it:
    // IMAGE1.DAT, IMAGE2.DAT, ... (imageName is then unused), split at the
    // index 01 of tracks 2, 3, ..., each with its own "D0" packet and start
    // sector. The first `streamGapFrames` frames of every later stream are
    // left out of its file: a reader must play them as silence.
    int imageStreams = 1;
    int streamGapFrames = 0;
    int startSector = 0;     // the first stream's start sector in the map
    bool dataStream = false; // a data session after the audio: "D0", mode "M1", DATA.DAT

    AudioContent content = AudioContent::TestPattern;
    // The test pattern's index 00 pauses hold digital silence instead of the
    // frame counter, as a real disc's pauses do. Without it the pause before
    // track 1 holds a quiet signal: a hidden track, as far as a player can tell.
    bool silentPauses = false;
    ChecksumStyle checksums = ChecksumStyle::None;
    QVector<Fault> faults;

    bool has(Fault fault) const { return faults.contains(fault); }
    int lastTrackNumber() const { return firstTrackNumber + tracks.size() - 1; }
};

// A plain disc: `trackCount` tracks of `seconds` each, a 2 s first pause.
DiscSpec simpleDisc(int trackCount, int seconds);
// Seven tracks with pauses before some, a 2 s first pause, an index 02,
// ISRCs, user text, single-byte CD-Text with genre 8 ("Dance") and a UPC/EAN.
DiscSpec realisticDisc();
// The bundled demo: four short pieces of music, CD-Text, a 2 s first pause
// and one index 02.
DiscSpec demoDisc();
// Like simpleDisc but with long tracks summing to `minutes` (74 gives a
// full 783 MB image).
DiscSpec longDisc(int minutes);

// The longest title a single-byte CD-Text slot holds: 159 Latin-1 letters
// outside ASCII, 318 bytes once in UTF-8.
QString longLatin1Title();
// Turns on CD-Text and fills all six strings of the album and of every
// track with about 150 distinct characters: with three tracks or more, block
// 0 holds over 256 packs (more than a disc's lead-in carries).
void putLongCdText(DiscSpec& spec);
// Turns on CD-Text and puts control characters (escape sequences, BEL, tab,
// new line, DEL and the C1 CSI and NEL), as a single-byte block carries them,
// into the album title, track 1's title and the last track's performer.
void putControlCharacters(DiscSpec& spec);

} // namespace mkddp
