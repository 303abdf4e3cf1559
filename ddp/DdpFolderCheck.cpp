#include "ddp/DdpFolderCheck.h"

#include "ddp/DdpFileLookup.h"
#include "ddp/DdpNames.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

namespace {

bool hasFile(const QString& dir, const QString& name)
{
    if (dir.isEmpty())
        return false;
    return QFileInfo::exists(resolveDdpFile(dir, name));
}

const QString kDdpid = QString::fromLatin1(kDdpidFileName);
const QString kDdpms = QString::fromLatin1(kDdpmsFileName);

} // namespace

bool DdpFolderCheck(const QString& dir)
{
    return hasFile(dir, kDdpms) && hasFile(dir, kDdpid);
}

bool DdpDropCheck(const QString& path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    if (info.isFile())
        return DdpFolderCheck(info.dir().path());
    return DdpFolderCheck(path);
}

QString firstDroppedPath(const QMimeData* mimeData)
{
    if (!mimeData)
        return QString();
    const QList<QUrl> urls = mimeData->urls();
    if (urls.isEmpty())
        return QString();
    return urls.first().toLocalFile();
}

ErrorKind openDialogCheck(const QString& folder)
{
    if (DdpFolderCheck(folder))
        return ErrorKind::NoError;
    if (!hasFile(folder, kDdpid))
        return ErrorKind::DdpidMissing;
    if (!hasFile(folder, kDdpms))
        return ErrorKind::DdpmsMissing;
    return ErrorKind::NoError;
}

QString ddpFolderForDroppedPath(const QString& path)
{
    const QFileInfo info(path);
    if (info.isFile())
        return info.absolutePath();
    return info.absoluteFilePath();
}
