#pragma once

// A temporary folder of discs made by the test-disc generator, for the tests
// that run them through tivora-ddp and other programs.

#include "ExportTestSupport.h"
#include "tools/mkddp/Mkddp.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtGlobal>

#include <initializer_list>

namespace exporttest {

class GeneratedDiscs
{
public:
    // Empty when the folder was made, ctest gave TIVORA_BINARY_DIR and every
    // tool is on the PATH; else what is missing.
    QString missing(std::initializer_list<const char*> tools = {}) const
    {
        QStringList missing;
        if (!m_dir.isValid())
            missing << QStringLiteral("a temporary folder");
        if (qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"))
            missing << QStringLiteral("TIVORA_BINARY_DIR (run through ctest)");
        for (const char* tool : tools) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty())
                missing << QString::fromLatin1(tool);
        }
        return missing.join(QStringLiteral(", "));
    }
    QString path(const QString& name) const { return m_dir.filePath(name); }
    // Writes the disc into folder `name` and returns its path.
    QString write(const QString& name, const mkddp::DiscSpec& spec) const
    {
        QString error;
        if (!mkddp::writeDisc(spec, path(name), &error))
            qWarning("%s", qPrintable(error));
        return path(name);
    }

private:
    QTemporaryDir m_dir;
};

// Where track `number` ends: the next track's pause or start, or the image's end.
inline qint64 trackEnd(const mkddp::DiscSpec& spec, int number)
{
    if (number >= spec.lastTrackNumber())
        return mkddp::imageSize(spec);
    const qint64 pause = mkddp::indexPosition(spec, number + 1, 0);
    return pause >= 0 ? pause : mkddp::indexPosition(spec, number + 1, 1);
}

// What the file of track `number` holds: its index 01 up to trackEnd().
inline QByteArray trackBytes(const mkddp::DiscSpec& spec, int number)
{
    const qint64 start = mkddp::indexPosition(spec, number, 1);
    return mkddp::TestPattern(spec).bytes(start, trackEnd(spec, number) - start);
}

} // namespace exporttest
