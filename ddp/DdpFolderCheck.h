#pragma once

#include "ddp/ErrorKind.h"

#include <QString>

class QMimeData;

// The cheap tests that decide whether a path looks like a DDP at all, before
// anything is parsed. File names are found as the file system has them first,
// then case-insensitively (see DdpFileLookup.h).

// True when "DDPMS" and then "DDPID" exist in the folder (DDPID is asked only
// when DDPMS is there).
bool DdpFolderCheck(const QString& dir);

// While a drag hovers: a file stands for its folder, anything else is tested
// as a folder.
bool DdpDropCheck(const QString& path);

// The local path of the first URL of a drop; empty without URLs (every test
// then fails).
QString firstDroppedPath(const QMimeData* mimeData);

// The "Open DDP" dialog's answer for a chosen folder: NoError when
// DdpFolderCheck holds; otherwise DDPID is asked first, so a folder with
// DDPID only gives DdpmsMissing (5) and one without DDPID (with or without
// DDPMS) gives DdpidMissing (6). A cancelled dialog (empty path) is the
// caller's business and must be handled before this is asked.
ErrorKind openDialogCheck(const QString& folder);

// The folder a dropped path stands for: the absolute path of a file's folder,
// or the absolute path of the folder itself.
QString ddpFolderForDroppedPath(const QString& path);
