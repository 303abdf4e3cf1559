#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace mkddp {

// A deliberate defect in a generated disc. Each one reaches one answer of the
// loader (see `expectedKind`), so a test can ask for a broken folder by name
// instead of committing a broken binary.
enum class Fault
{
    NoDdpid,               // the DDPID file is not written
    NoDdpms,               // the DDPMS file is not written
    DdpidBadTag,           // DDPID starts "DDQ " instead of "DDP "
    DdpmsEmpty,            // DDPMS is 0 bytes
    DdpmsBadFirstTag,      // the first packet starts "VVVX" (later ones are sound)
    DdpmsGarbagePackets,   // two 128-byte packets of garbage after the first packet
    DdpmsShortLastPacket,  // the last packet is cut to 100 bytes (its name survives)
    NoPqPacket,            // no "PQ DESCR" packet in the map
    NoPqFile,              // the PQ descriptor file is not written
    PqBadTag,              // the first PQ entry starts "VVVX"
    PqNotANumber,          // minutes "ab" in the first track's index 01 entry
    PqTruncatedLast,       // the last PQ entry is cut to 40 bytes (times survive)
    LeadOutNotANumber,     // index "xx" in the first lead-out entry: the last track has no end
    NoImagePacket,         // no "D0" packet in the map
    NoImageFile,           // the image file is not written
    NoCdTextFile,          // the CD-Text packet is in the map, its file is not written
    CdTextEmptyFile,       // the CD-Text file is 0 bytes: no tracks, so track 1's row fails
    CdTextBadGenre,        // a genre pack with code 28 (outside 1..27)
    CdTextLastTrackTooLow, // the size information's last track is one below the PQ's
    CdTextExtraTrack,      // strings for one track beyond the last one (dropped by readers)
    CdTextBadDoubleByte,   // track 1's title is not valid code page 932 (double-byte discs)
    DdpmsTooLarge,         // 1024 more "VVVM" packets: over the loader's limit for DDPMS
    PqTooManyEntries,      // 10 001 entries: over the loader's limit for the PQ descriptor
    CdTextTooLarge,        // CD-Text over 8 blocks of 256 packs
    ImageEmpty,            // the image file is 0 bytes
    ImageCutShort,         // the image lacks its last second (176 400 bytes)
    DuplicateTrackNumbers, // every track's PQ entries carry the first track's number
    // Breaking the rules a plant checks; these load (12), but for
    // TrackNumberGap on a disc with CD-Text: its last track number has no
    // CD-Text record, and the rows cannot be built (10).
    TrackNumberGap,    // tracks after the first are numbered one higher (1, 3, 4, ...)
    IndexGap,          // a track's index 02 is written as index 03 (with --index2)
    NoIndex01,         // track 2's index 01 entry is written as index 02
    TimeNotRising,     // the last track's index 01 carries the time of the entry before it
    BadIsrc,           // track 1's ISRC is "US-AB1-23-45"
    DuplicateIsrc,     // track 2 carries track 1's ISRC
    UpcMismatch,       // the DDPID's UPC/EAN differs from the PQ descriptor's
    CdTextBadCrc,      // the CRC of the first three CD-Text packs is wrong
    ImageTooLong,      // one second of audio past the lead-out
    ImagePartialFrame, // 1000 bytes past the lead-out: no whole number of frames
    // Checksum files (with --checksums); all of these load (12).
    ChecksumFlippedByte,  // one byte in the middle of the image flipped after checksumming
    ChecksumMissingFile,  // the checksum file also lists MISSING.DAT, which is not written
    ChecksumUnlistedFile, // the checksum file leaves out the PQ descriptor
};

// Command-line names: "no-ddpid", "ddpms-bad-first-tag", ...
QString faultName(Fault fault);
std::optional<Fault> faultFromName(const QString& name);
QVector<Fault> allFaults();
QStringList allFaultNames();

// The loader's ErrorKind number for a disc that is otherwise sound, as
// `tivora-ddp info` reports it: 5 and 6 no DDP, 7 image missing, 8 DDPID
// invalid, 9 DDPMS invalid, 10 PQ descriptor invalid, 11 CD-Text failure,
// 12 loaded. The DDPMS garbage and short-packet faults, PqTruncatedLast,
// NoCdTextFile, CdTextExtraTrack, CdTextBadDoubleByte and DuplicateTrackNumbers
// load (12). The CdText* faults need a disc with CD-Text, CdTextBadDoubleByte a
// double-byte one.
int expectedKind(Fault fault);

} // namespace mkddp
