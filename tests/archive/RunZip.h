#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

// Runs Info-ZIP's zip in `dir` with `args` (quietly); true on success. The
// tests make their archives with a real zip, as clients do.
inline bool runZip(const QString& dir, const QStringList& args)
{
    QProcess zip;
    zip.setWorkingDirectory(dir);
    zip.start(QStringLiteral("zip"), QStringList{QStringLiteral("-q")} + args);
    return zip.waitForFinished(120000) && zip.exitStatus() == QProcess::NormalExit &&
           zip.exitCode() == 0;
}

// The whole of `folder`'s content at the root of `archive`: stored when
// `stored`, else compressed at `level`.
inline bool zipFolder(const QString& folder, const QString& archive, bool stored, int level = 6)
{
    return runZip(folder, {stored ? QStringLiteral("-0") : QStringLiteral("-%1").arg(level),
                           QStringLiteral("-r"), archive, QStringLiteral(".")});
}
