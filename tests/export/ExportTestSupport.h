#pragma once

// Helpers shared by the export tests: a model built from PQ entries made in
// the test, a predictable audio image, and a check of a written WAV file.

#include "../ddp/DdpTestBytes.h"
#include "ddp/DDPModel.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

class QProcess;

#include <memory>
#include <vector>

namespace exporttest {

// A model holding these entries (and CD-Text when given), with the index list
// that the loader would make.
std::shared_ptr<DDPModel> makeModel(const std::vector<testbytes::Entry>& entries,
                                    const CdTextRecord* cdText = nullptr);
// A CD-Text record with these titles for tracks 1, 2, ...
CdTextRecord titles(const std::vector<std::string>& trackTitles);

// Image bytes that differ from their neighbours, so a shifted range shows.
QByteArray patternBytes(qint64 offset, qint64 length);
bool writePatternImage(const QString& path, qint64 size);

// Byte position of a PQ time.
qint64 at(int minutes, int seconds, int frames);

// True when the file at `path` is the 44-byte CD audio header for
// `expected.size()` bytes followed by exactly `expected`; else `why` says
// what differs.
bool isWavOf(const QString& path, const QByteArray& expected, QString* why);

// True when the name holds a C0 or C1 control character or DEL.
bool hasControlCharacter(const QString& name);

// A finished run of the tivora-ddp binary (found through TIVORA_BINARY_DIR);
// exitCode -1 when it did not finish within a minute.
struct ToolRun
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};
QString tivoraDdpPath();
ToolRun runProgram(const QString& program, const QStringList& args);
ToolRun runTivoraDdp(const QStringList& args);
// tivora-ddp under a file size limit whose signal is ignored, so that a
// write fails with EFBIG instead of killing the process.
ToolRun runTivoraDdpLimited(int kibibytes, const QStringList& args);
// Waits for a started process and collects what it said.
ToolRun finishRun(QProcess& process);

QByteArray fileBytes(const QString& path);
bool writeFile(const QString& path, const QByteArray& bytes);

} // namespace exporttest
