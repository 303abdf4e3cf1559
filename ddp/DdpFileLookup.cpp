#include "ddp/DdpFileLookup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstring>

QString resolveDdpFile(const QString& folder, const QString& mapName)
{
    // A name padded with zero bytes is seen by the file system up to the
    // first one.
    const int zero = mapName.indexOf(QChar(0));
    const QString name = zero < 0 ? mapName : mapName.left(zero);
    const QDir dir(folder);
    const QString exact = dir.filePath(name);
    if (name.isEmpty() || QFileInfo::exists(exact))
        return exact;
    // Only plain names are matched case-insensitively; a name with a path in
    // it is taken as the map wrote it.
    if (name.contains(QLatin1Char('/')))
        return exact;
    const QStringList entries = dir.entryList(QDir::Files | QDir::Dirs | QDir::Hidden |
                                              QDir::System | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        if (entry.compare(name, Qt::CaseInsensitive) == 0)
            return dir.filePath(entry);
    }
    return exact;
}

QString ddpFileNameFromBytes(const std::string& name)
{
    const std::size_t zero = name.find('\0');
    const std::size_t length = zero == std::string::npos ? name.size() : zero;
    return QFile::decodeName(QByteArray(name.data(), static_cast<int>(length)));
}
