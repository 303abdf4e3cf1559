#pragma once

#include "tools/mkddp/DiscSpec.h"

#include <QByteArray>
#include <QString>

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

// The single files, faults applied. Also useful on their own.
QByteArray ddpidBytes(const DiscSpec& spec);
QByteArray ddpmsBytes(const DiscSpec& spec);
QByteArray pqBytes(const DiscSpec& spec);
QByteArray cdTextBytes(const DiscSpec& spec); // empty when spec.cdText is off

// Names on disk (after lower-casing and, for CD-Text, blank removal).
QString imageFileName(const DiscSpec& spec);
QString pqFileName(const DiscSpec& spec);
QString cdTextFileName(const DiscSpec& spec);

// CD-Text pack CRC: CRC-16/CCITT (x^16 + x^12 + x^5 + 1, initial 0) over the
// first 16 bytes, inverted; stored big-endian in bytes 16 and 17.
quint16 cdTextCrc(const char* pack16);

} // namespace mkddp
