#pragma once

// For the tests that run the built tivora-ddp (found through
// TIVORA_BINARY_DIR) on discs made by the test-disc generator.

#include "tools/mkddp/Mkddp.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

namespace ddptest {

struct Run
{
    bool finished = false; // false: still running after the limit (a hang)
    int exitCode = -1;
    qint64 milliseconds = 0;
    QByteArray out;
    QByteArray err;
    QJsonObject json; // `out` read as JSON, empty when it is not
};

// A hang is a failure, not a stuck test: the command is killed at the limit.
inline Run tivoraDdp(const QStringList& args, int limitMs = 60000)
{
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(qEnvironmentVariable("TIVORA_BINARY_DIR") +
                      QStringLiteral("/tools/tivora-ddp/tivora-ddp"),
                  args);
    Run run;
    run.finished = process.waitForFinished(limitMs) && process.exitStatus() == QProcess::NormalExit;
    if (!run.finished) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.milliseconds = timer.elapsed();
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    run.json = QJsonDocument::fromJson(run.out).object();
    return run;
}

inline Run info(const QString& folder, int limitMs = 60000)
{
    return tivoraDdp({QStringLiteral("info"), QStringLiteral("--json"), folder}, limitMs);
}

// A JSON value as comparable text, so a failing QCOMPARE shows both sides.
inline QByteArray jsonText(const QJsonValue& v)
{
    if (v.isArray())
        return QJsonDocument(v.toArray()).toJson(QJsonDocument::Indented);
    if (v.isObject())
        return QJsonDocument(v.toObject()).toJson(QJsonDocument::Indented);
    return v.isNull() ? QByteArray("null") : QByteArray("<other>");
}

// Generated discs in a temporary folder, each under a new name.
class Discs
{
public:
    bool isValid() const { return m_dir.isValid(); }
    QString path(const QString& name) const { return m_dir.filePath(name); }
    int count() const { return m_count; }
    QString write(const mkddp::DiscSpec& spec, const QString& pattern = QStringLiteral("disc %1"))
    {
        const QString folder = path(pattern.arg(++m_count));
        QString error;
        if (!mkddp::writeDisc(spec, folder, &error))
            qWarning("writeDisc: %s", qPrintable(error));
        return folder;
    }

private:
    QTemporaryDir m_dir;
    int m_count = 0;
};

} // namespace ddptest
