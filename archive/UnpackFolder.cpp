#include "archive/UnpackFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

// The user this process runs as; folders of other users are never used.
uint currentUser()
{
#ifdef Q_OS_UNIX
    return static_cast<uint>(::getuid());
#else
    return static_cast<uint>(-2); // what QFileInfo::ownerId() says where there are no ids
#endif
}

// "<pid>-<8 random letters>": a name this program made, never one a user
// chose, so removing it never deletes somebody else's files.
const QRegularExpression& folderName()
{
    static const QRegularExpression name(QStringLiteral("^[0-9]+-[a-z0-9]{8}$"));
    return name;
}

QString randomName()
{
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QString name = QString::number(QCoreApplication::applicationPid()) + QLatin1Char('-');
    for (int i = 0; i < 8; ++i)
        name += QLatin1Char(letters[QRandomGenerator::system()->bounded(36)]);
    return name;
}

QString lockPath(const QString& folder)
{
    return folder + QStringLiteral(".lock");
}

} // namespace

QString UnpackFolder::defaultBase()
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (!cache.isEmpty())
        return QDir(cache).filePath(QStringLiteral("tivora/unpacked"));
    return QDir(QDir::tempPath())
        .filePath(QStringLiteral("tivora-unpacked-%1").arg(static_cast<qulonglong>(currentUser())));
}

std::unique_ptr<UnpackFolder> UnpackFolder::create(const QString& base, QString* error)
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return nullptr;
    };
    if (!QDir().mkpath(base))
        return fail(QStringLiteral("Could not create the folder \"%1\".").arg(base));
    const QFileInfo baseInfo(base);
    if (baseInfo.isSymLink() || !baseInfo.isDir() || baseInfo.ownerId() != currentUser())
        return fail(QStringLiteral("\"%1\" is not a folder of this user.").arg(base));
    QFile::setPermissions(base, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    std::unique_ptr<UnpackFolder> folder(new UnpackFolder);
    for (int attempt = 0; attempt < 16; ++attempt) {
        const QString path = QDir(base).filePath(randomName());
        // The lock first: a folder without a lock beside it is anybody's to
        // remove.
        auto lock = std::make_unique<QLockFile>(lockPath(path));
        lock->setStaleLockTime(0);
        if (!lock->tryLock(0))
            continue;
        if (!QDir(base).mkdir(QFileInfo(path).fileName())) {
            lock->unlock();
            continue;
        }
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        folder->m_path = path;
        folder->m_lock = std::move(lock);
        return folder;
    }
    return fail(QStringLiteral("Could not create a private folder in \"%1\".").arg(base));
}

int UnpackFolder::removeStale(const QString& base)
{
    int removed = 0;
    const QDir dir(base);
    const QStringList names =
        dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks | QDir::Hidden);
    for (const QString& name : names) {
        if (!folderName().match(name).hasMatch())
            continue;
        const QString path = dir.filePath(name);
        // With no age limit, a lock counts as stale only when the process
        // that holds it is gone.
        QLockFile lock(lockPath(path));
        lock.setStaleLockTime(0);
        if (!lock.tryLock(0))
            continue;
        if (QDir(path).removeRecursively())
            ++removed;
        lock.unlock();
    }
    return removed;
}

UnpackFolder::~UnpackFolder()
{
    QDir(m_path).removeRecursively();
    if (m_lock)
        m_lock->unlock();
}
