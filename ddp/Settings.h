#pragma once

#include <QString>
#include <QVariant>

// The settings layer: one INI file "preferences.ini" in the per-user
// application data folder, five top-level keys. Every read and write opens
// the file afresh, so nothing holds a QSettings object for long and each
// write reaches the file at once. It lives beside the DDP reader because it
// is the lowest library that both the export and the window use.

inline const QString kMainWindowGeometryKey = QStringLiteral("mainWindowGeometry");
inline const QString kDefaultLoadDirKey = QStringLiteral("default_load_dir");
inline const QString kDefaultExportDirKey = QStringLiteral("default_export_dir");
inline const QString kAudioDeviceIdKey = QStringLiteral("audioDeviceId");
inline const QString kHeaderKey = QStringLiteral("header");

QString settingsFilePath();
// An invalid QVariant when the key is absent; no default is ever passed.
QVariant readSetting(const QString& key);
void writeSetting(const QString& key, const QVariant& value);
// Stores the absolute path of the folder above `path` (for a folder the user
// opened: its parent; for a file the user saved: its folder). Nothing is
// written for an empty path or when there is no parent.
void rememberParentDirectory(const QString& path, const QString& key);
