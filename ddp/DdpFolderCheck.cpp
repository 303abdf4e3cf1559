#include "ddp/DdpFolderCheck.h"

#include "ddp/DdpFileLookup.h"
#include "ddp/DdpNames.h"
#include "ddp/RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

namespace {

bool hasFile(const QString& dir, const QString& name)
{
    if (dir.isEmpty())
        return false;
    // A pipe, a device or a folder at the name is as good as no file.
    return regularFileSize(resolveDdpFile(dir, name)).has_value();
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
    const QUrl& url = urls.first();
    const QString path = url.toLocalFile();
#ifdef Q_OS_UNIX
    // toLocalFile() reads the percent-escapes as UTF-8 and turns any other
    // byte into U+FFFD: a folder named in Latin-1 arrives as "Caf%E9" and
    // would not be found. The bytes themselves, named as the file system
    // names them, find it.
    if (!path.isEmpty() && url.host().isEmpty())
        return QFile::decodeName(
            QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()));
#endif
    return path;
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
