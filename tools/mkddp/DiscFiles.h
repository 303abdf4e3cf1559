#pragma once

#include "tools/mkddp/DiscSpec.h"

#include <QByteArray>
#include <QString>

#include <QVector>

#include <map>

namespace mkddp {

// The files of a disc, by their name on disk ("DDPID", "DDPMS", "PQDESCR",
// "IMAGE.DAT", "CDTEXT.BIN", or lower case), faults applied: a file that a
// fault removes is absent from the map.
using DiscFiles = std::map<QString, QByteArray>;

// Everything in memory. Without the image the map holds every other file
// (meant for parser tests and fuzz seeds); with it, the whole image is built,
// so keep such discs short.
DiscFiles buildFiles(const DiscSpec& spec, bool withImage = false);

// Writes the disc into `folder` (created when missing), streaming the image
// in 1 MB chunks. False with a reason in `error` on any I/O failure.
bool writeDisc(const DiscSpec& spec, const QString& folder, QString* error = nullptr);

// Writes the checksum file that spec.checksums asks for into a written
// disc's folder (and applies the checksum faults; one of them without a
// style asks for CHECKSUM.MD5).
bool writeChecksumFile(const DiscSpec& spec, const QString& folder, QString* error = nullptr);
// The same for files in memory (with their image).
void addChecksumFile(const DiscSpec& spec, DiscFiles& files);
// Its name for a style; empty for None.
QString checksumFileName(ChecksumStyle style);

// The single files, faults applied. Also useful on their own.
QByteArray ddpidBytes(const DiscSpec& spec);
QByteArray ddpmsBytes(const DiscSpec& spec);
QByteArray pqBytes(const DiscSpec& spec);
// CD-Text: block 0 (the first language), then the second block if any. Each
// block holds its text packs by ascending type (0x80..0x85 strings, 0x86 disc
// id, 0x87 genre, 0x8E codes), the strings of a type running on across packs,
// then its three 0x8F size packs; sequence numbers restart at 0 per block.
// Empty when spec.cdText is off. Sequence numbers are one byte, so a block
// holds at most 256 packs (about 3 KB of text): beyond that they wrap, as on
// no real disc, and a reader trusting the size information decodes only part.
// Slots are 160 bytes: longer strings are written whole, readers cut them.
// Characters that code page 932 lacks end a double-byte string.
QByteArray cdTextBytes(const DiscSpec& spec);

// One audio stream's file: bytes [begin, end) of the whole image (see
// DiscSpec::imageStreams), at `sector` in the map.
struct ImageStreamFile
{
    QByteArray name;
    qint64 begin = 0;
    qint64 end = 0;
    qint64 sector = 0;
};
QVector<ImageStreamFile> imageStreamFiles(const DiscSpec& spec);
// The data session's file (DiscSpec::dataStream).
inline constexpr const char* kDataStreamName = "DATA.DAT";
inline constexpr qint64 kDataStreamBytes = 20480;

// Names on disk (after lower-casing and, for CD-Text, blank removal).
QString imageFileName(const DiscSpec& spec);
QString pqFileName(const DiscSpec& spec);
QString cdTextFileName(const DiscSpec& spec);

// CD-Text pack CRC: CRC-16/CCITT (x^16 + x^12 + x^5 + 1, initial 0) over the
// first 16 bytes, inverted; stored big-endian in bytes 16 and 17.
quint16 cdTextCrc(const char* pack16);

} // namespace mkddp
