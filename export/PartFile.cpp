#include "export/PartFile.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("PartFile", text);
}

QString randomSuffix()
{
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QString suffix;
    for (int i = 0; i < 8; ++i)
        suffix += QLatin1Char(kLetters[QRandomGenerator::global()->bounded(36)]);
    return suffix;
}

} // namespace

PartFile::PartFile(QString target) : m_target(std::move(target)) {}

PartFile::~PartFile()
{
    discard();
}

QString PartFile::systemReason(const QFile& file, int savedErrno)
{
    const QString qt = file.errorString();
    if (savedErrno != 0 && (qt.isEmpty() || qt == QLatin1String("Unknown error")))
        return QString::fromLocal8Bit(std::strerror(savedErrno));
    return qt;
}

QString PartFile::create()
{
    const QFileInfo target(m_target);
    m_direct = target.exists() && !target.isFile() && !target.isSymLink();
    if (m_direct) {
        m_writingPath = m_target;
        m_file.setFileName(m_writingPath);
        if (m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return {};
        return tr("Could not create \"%1\": %2").arg(m_target, systemReason(m_file, errno));
    }
    for (int attempt = 0; attempt < 16; ++attempt) {
        m_writingPath = m_target + QLatin1Char('.') + randomSuffix() + QStringLiteral(".part");
        m_file.setFileName(m_writingPath);
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return {};
        if (!QFileInfo::exists(m_writingPath) && !QFileInfo(m_writingPath).isSymLink())
            break; // not a name clash: the folder refuses
    }
    const int savedErrno = errno;
    m_writingPath.clear();
    return tr("Could not create \"%1\": %2").arg(m_target, systemReason(m_file, savedErrno));
}

QString PartFile::writeFailure(int savedErrno) const
{
    return tr("Could not write \"%1\": %2").arg(m_target, systemReason(m_file, savedErrno));
}

QString PartFile::commit()
{
    if (m_file.isOpen()) {
        m_file.close();
        if (m_file.error() != QFileDevice::NoError) {
            const QString error = writeFailure(errno);
            discard();
            return error;
        }
    }
    if (m_direct) {
        m_done = true;
        return {};
    }
#ifdef Q_OS_UNIX
    // rename() replaces a file, or a link and never what it points to, in
    // one step: there is no moment without the old file or the new one.
    if (::rename(QFile::encodeName(m_writingPath).constData(),
                 QFile::encodeName(m_target).constData()) != 0) {
        const QString error =
            tr("Could not write \"%1\": the finished file could not be renamed: %2")
                .arg(m_target, QString::fromLocal8Bit(std::strerror(errno)));
        discard();
        return error;
    }
#else
    if ((QFile::exists(m_target) && !QFile::remove(m_target)) ||
        !QFile::rename(m_writingPath, m_target)) {
        discard();
        return tr("Could not write \"%1\": the finished file could not be renamed.").arg(m_target);
    }
#endif
    m_done = true;
    return {};
}

void PartFile::discard()
{
    if (m_done)
        return;
    m_file.close();
    // Only the temporary file this writer made is removed: a device written
    // in place is not ours.
    if (!m_direct && !m_writingPath.isEmpty())
        QFile::remove(m_writingPath);
    m_done = true;
}
