#pragma once

// The PulseAudio server of tools/test-env.sh, from a test's point of view.

#include <QProcess>
#include <QString>
#include <QStringList>

namespace audiotest {

// Runs a command and returns its standard output; ok tells whether it ran
// and exited with 0.
inline QString runCommand(const QString& program, const QStringList& args, bool* ok = nullptr)
{
    QProcess process;
    process.start(program, args);
    const bool finished = process.waitForStarted(3000) && process.waitForFinished(10000);
    if (ok)
        *ok = finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

// True when a PulseAudio server answers (a developer without one skips the
// device tests).
inline bool pulseAnswers()
{
    bool ok = false;
    runCommand(QStringLiteral("pactl"), {QStringLiteral("info")}, &ok);
    return ok;
}

// The null sink of the test environment.
inline QString nullSinkName()
{
    const QString name = qEnvironmentVariable("TIVORA_NULL_SINK");
    return name.isEmpty() ? QStringLiteral("tivora_null") : name;
}

} // namespace audiotest
