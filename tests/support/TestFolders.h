#pragma once

#include <QDir>
#include <QString>

// <build>/screenshots, made when absent: where tests leave pictures of what
// they drew for a person to judge.
inline QString screenshotFolder()
{
    const QString build = qEnvironmentVariable("TIVORA_BINARY_DIR", QDir::currentPath());
    const QString folder = build + QStringLiteral("/screenshots");
    QDir().mkpath(folder);
    return folder;
}
