#include "ddp/Settings.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

QString settingsFilePath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    // The platform's INI suffix, taken from a default settings object.
    const QString suffix = QFileInfo(QSettings().fileName()).suffix();
    const QString base = QDir(folder).filePath(QStringLiteral("preferences"));
    return suffix.isEmpty() ? base : base + QLatin1Char('.') + suffix;
}

QVariant readSetting(const QString& key)
{
    QSettings settings(settingsFilePath(), QSettings::defaultFormat());
    return settings.value(key);
}

void writeSetting(const QString& key, const QVariant& value)
{
    QSettings settings(settingsFilePath(), QSettings::defaultFormat());
    settings.setValue(key, value);
}

void rememberParentDirectory(const QString& path, const QString& key)
{
    if (path.isEmpty())
        return;
    QDir dir(path);
    if (!dir.cdUp())
        return;
    writeSetting(key, dir.absolutePath());
}
