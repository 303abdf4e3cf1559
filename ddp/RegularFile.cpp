#include "ddp/RegularFile.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

std::optional<std::uint64_t> regularFileSize(const QString& path)
{
    if (path.isEmpty())
        return std::nullopt;
    const QFileInfo info(path);
    // isFile follows links and is false for folders, pipes, devices, sockets.
    if (!info.isFile())
        return std::nullopt;
    return static_cast<std::uint64_t>(info.size());
}

#ifdef Q_OS_UNIX

bool openRegularFile(QFile& file, const QString& path, QString* reason)
{
    auto fail = [&](const QString& why) {
        if (reason)
            *reason = why;
        return false;
    };
    if (path.isEmpty())
        return fail(QStringLiteral("No file name"));
    // Non-blocking: opening a pipe that nobody writes to returns at once
    // instead of waiting for a writer. The type is then checked on what was
    // opened, not on the name, which may have changed in between.
    const QByteArray native = QFile::encodeName(path);
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return fail(QString::fromLocal8Bit(std::strerror(errno)));
    struct stat st
    {
    };
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return fail(S_ISDIR(st.st_mode) ? QStringLiteral("It is a folder")
                                        : QStringLiteral("It is not a regular file"));
    }
    // Reads of a regular file never block anyway; clear the flag so that
    // nothing downstream sees EAGAIN.
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        (void)::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return fail(file.errorString());
    }
    return true;
}

#else

bool openRegularFile(QFile& file, const QString& path, QString* reason)
{
    // Opening a file cannot block here; the type check comes first.
    if (!regularFileSize(path)) {
        if (reason)
            *reason = QFileInfo(path).isDir() ? QStringLiteral("It is a folder")
                                              : QStringLiteral("It is not a regular file");
        return false;
    }
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (reason)
            *reason = file.errorString();
        return false;
    }
    return true;
}

#endif

FileContent readRegularFile(const QString& path, std::uint64_t limit)
{
    FileContent content;
    QFile file;
    if (!openRegularFile(file, path))
        return content;
    // The size of what was opened, and one byte more than the limit read:
    // a file that grows while it is read is caught as well.
    if (static_cast<std::uint64_t>(file.size()) > limit) {
        content.status = FileContent::TooLarge;
        return content;
    }
    const QByteArray data = file.read(static_cast<qint64>(limit) + 1);
    if (static_cast<std::uint64_t>(data.size()) > limit) {
        content.status = FileContent::TooLarge;
        return content;
    }
    if (file.error() != QFileDevice::NoError)
        return content;
    content.status = FileContent::Read;
    content.bytes = data.toStdString();
    return content;
}

std::optional<std::string> readRegularFileHead(const QString& path, std::uint64_t limit)
{
    QFile file;
    if (!openRegularFile(file, path))
        return std::nullopt;
    const QByteArray data = file.read(static_cast<qint64>(limit));
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return data.toStdString();
}
