#pragma once

// Small helpers shared by the export tests: a model built from PQ entries made
// in the test, a predictable audio image, and a WAV file taken apart.

#include "../ddp/DdpTestBytes.h"
#include "ddp/DDPModel.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace exporttest {

// A model holding these entries (and CD-Text when given), with the index
// list and first-track number the loader and the player would set.
std::shared_ptr<DDPModel> makeModel(const std::vector<testbytes::Entry>& entries,
                                    const CdTextRecord* cdText = nullptr,
                                    const std::string& imageName = "IMAGE.DAT");

// A CD-Text record with these titles for tracks 1, 2, ... (album title empty).
CdTextRecord titles(const std::vector<std::string>& trackTitles);

// Image bytes that differ at every position, so a shifted range shows.
QByteArray patternBytes(qint64 offset, qint64 length);
bool writePatternImage(const QString& path, qint64 size);

struct WavFile
{
    bool ok = false; // read and at least 44 bytes long
    QByteArray header;
    QByteArray data;
    quint32 u32(int offset) const;
    quint16 u16(int offset) const;
};
WavFile readWav(const QString& path);

// True when `file` is a WAV whose header is the CD audio header for its data
// length and whose data equals `expected`; on mismatch `why` says where.
bool isWavOf(const WavFile& file, const QByteArray& expected, QString* why);

} // namespace exporttest
