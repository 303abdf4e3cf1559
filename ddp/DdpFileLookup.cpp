#include "ddp/DdpFileLookup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstring>

namespace {

// A name that points out of the folder before anything is looked up: an
// absolute path, or one that climbs with "..".
bool leavesFolderByName(const QString& name)
{
    if (QDir::isAbsolutePath(name) || name.startsWith(QLatin1Char('/')))
        return true;
#ifdef Q_OS_WIN
    const QStringList parts = QDir::fromNativeSeparators(name).split(QLatin1Char('/'));
#else
    const QStringList parts = name.split(QLatin1Char('/'));
#endif
    return parts.contains(QStringLiteral(".."));
}

// True when the existing file at `path`, with every link followed, lies
// inside `folder` (also with its links followed): a link in the DDP that
// points elsewhere on the disk is not part of the DDP.
bool staysInside(const QString& folder, const QString& path)
{
    const QString canonicalFolder = QFileInfo(folder).canonicalFilePath();
    const QString canonicalFile = QFileInfo(path).canonicalFilePath();
    if (canonicalFolder.isEmpty() || canonicalFile.isEmpty())
        return false;
    const QString prefix = canonicalFolder.endsWith(QLatin1Char('/'))
                               ? canonicalFolder
                               : canonicalFolder + QLatin1Char('/');
    return canonicalFile.startsWith(prefix);
}

// The path itself when it stays inside the folder or does not exist (opening
// it then fails as it should); empty when it exists outside.
QString insideOrEmpty(const QString& folder, const QString& path)
{
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink())
        return path;
    return staysInside(folder, path) ? path : QString();
}

} // namespace

QString resolveDdpFile(const QString& folder, const QString& mapName)
{
    // A name padded with zero bytes is seen by the file system up to the
    // first one.
    const int zero = mapName.indexOf(QChar(0));
    const QString name = zero < 0 ? mapName : mapName.left(zero);
    if (name.isEmpty() || leavesFolderByName(name))
        return QString();
    const QDir dir(folder);
    const QString exact = dir.filePath(name);
    if (QFileInfo::exists(exact))
        return insideOrEmpty(folder, exact);
    // Only plain names are matched case-insensitively; a name with a path in
    // it is taken as the map wrote it.
    if (name.contains(QLatin1Char('/')))
        return insideOrEmpty(folder, exact);
    const QStringList entries = dir.entryList(QDir::Files | QDir::Dirs | QDir::Hidden |
                                              QDir::System | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        if (entry.compare(name, Qt::CaseInsensitive) == 0)
            return insideOrEmpty(folder, dir.filePath(entry));
    }
    return insideOrEmpty(folder, exact);
}

QString ddpFileNameFromBytes(const std::string& name)
{
    const std::size_t zero = name.find('\0');
    const std::size_t length = zero == std::string::npos ? name.size() : zero;
    return QFile::decodeName(QByteArray(name.data(), static_cast<int>(length)));
}
