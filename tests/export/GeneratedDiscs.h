#pragma once

// A temporary folder of discs made by the test-disc generator, for the tests
// that export them through tivora-ddp.

#include "tools/mkddp/Mkddp.h"

#include <QTemporaryDir>
#include <QtGlobal>

namespace exporttest {

class GeneratedDiscs
{
public:
    bool isValid() const { return m_dir.isValid(); }
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

} // namespace exporttest
