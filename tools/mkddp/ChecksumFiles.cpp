// Checksum files beside a written disc, in the styles authoring tools use.
#include "tools/mkddp/DiscFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <zlib.h>

namespace mkddp {

namespace {

struct FileDigests
{
    QString name;
    QByteArray md5;
    QByteArray sha1;
    quint32 crc = 0;
};

class Digester
{
public:
    void add(const QByteArray& block)
    {
        m_md5.addData(block);
        m_sha1.addData(block);
        m_crc = crc32(m_crc, reinterpret_cast<const Bytef*>(block.constData()), uInt(block.size()));
    }
    FileDigests result(const QString& name) const
    {
        return {name, m_md5.result().toHex(), m_sha1.result().toHex(), quint32(m_crc)};
    }

private:
    QCryptographicHash m_md5{QCryptographicHash::Md5};
    QCryptographicHash m_sha1{QCryptographicHash::Sha1};
    uLong m_crc = crc32(0L, Z_NULL, 0);
};

// A checksum fault without a style asks for the usual one.
ChecksumStyle styleOf(const DiscSpec& spec)
{
    if (spec.checksums == ChecksumStyle::None &&
        (spec.has(Fault::ChecksumFlippedByte) || spec.has(Fault::ChecksumMissingFile) ||
         spec.has(Fault::ChecksumUnlistedFile)))
        return ChecksumStyle::Md5;
    return spec.checksums;
}

// The DDP's own files among `names`, as a tool lists them.
QStringList listedFiles(const DiscSpec& spec, const QStringList& names)
{
    QStringList files = {imageFileName(spec), pqFileName(spec), cdTextFileName(spec)};
    for (const ImageStreamFile& stream : imageStreamFiles(spec))
        files << QString::fromLatin1(stream.name);
    files << QStringLiteral("DDPID") << QStringLiteral("DDPMS")
          << QString::fromLatin1(kDataStreamName);
    QStringList listed;
    for (const QString& name : names)
        if (files.contains(name, Qt::CaseInsensitive) && !listed.contains(name))
            listed << name;
    if (spec.has(Fault::ChecksumUnlistedFile))
        listed.removeAll(pqFileName(spec));
    listed.sort();
    return listed;
}

QByteArray checksumFileBytes(const DiscSpec& spec, const QVector<FileDigests>& files)
{
    const ChecksumStyle style = styleOf(spec);
    const bool crlf = style != ChecksumStyle::Md5 && style != ChecksumStyle::Md5LowerNames;
    const QByteArray eol = crlf ? "\r\n" : "\n";
    QByteArray out;
    if (style == ChecksumStyle::CrcIni)
        out += "[CRC32 Checksum]" + eol;
    for (const FileDigests& file : files) {
        const QByteArray name = file.name.toLatin1();
        switch (style) {
        case ChecksumStyle::None:
            break;
        case ChecksumStyle::Md5:
            out += file.md5 + "  " + name + eol;
            break;
        case ChecksumStyle::Md5CrlfUpper:
            out += file.md5.toUpper() + " *" + name + eol;
            break;
        case ChecksumStyle::Md5LowerNames:
            out += file.md5 + "  " + name.toLower() + eol;
            break;
        case ChecksumStyle::CrcIni:
            out += name + '=' + QByteArray::number(file.crc, 16).rightJustified(8, '0').toUpper() +
                   eol;
            break;
        case ChecksumStyle::Unknown:
            out += "SHA1 (" + name + ") = " + file.sha1 + eol;
            break;
        }
    }
    if (spec.has(Fault::ChecksumMissingFile)) {
        const QByteArray missing = "MISSING.DAT";
        out += style == ChecksumStyle::CrcIni ? missing + "=0BADF00D" + eol
                                              : QByteArray(32, '0') + "  " + missing + eol;
    }
    return out;
}

} // namespace

QString checksumFileName(ChecksumStyle style)
{
    switch (style) {
    case ChecksumStyle::None:
        break;
    case ChecksumStyle::Md5:
        return QStringLiteral("CHECKSUM.MD5");
    case ChecksumStyle::Md5CrlfUpper:
        return QStringLiteral("MD5_CHECKSUM.MD5");
    case ChecksumStyle::Md5LowerNames:
        return QStringLiteral("checksum.md5");
    case ChecksumStyle::CrcIni:
    case ChecksumStyle::Unknown:
        return QStringLiteral("CHECKSUM.TXT");
    }
    return {};
}

void addChecksumFile(const DiscSpec& spec, DiscFiles& files)
{
    const QString name = checksumFileName(styleOf(spec));
    if (name.isEmpty())
        return;
    QStringList names;
    for (const auto& [file, bytes] : files)
        names << file;
    QVector<FileDigests> digests;
    for (const QString& file : listedFiles(spec, names)) {
        Digester digester;
        digester.add(files.at(file));
        digests << digester.result(file);
    }
    files[name] = checksumFileBytes(spec, digests);
    if (spec.has(Fault::ChecksumFlippedByte)) {
        QByteArray& image = files[imageFileName(spec)];
        if (!image.isEmpty())
            image[image.size() / 2] = char(image[image.size() / 2] ^ 0x01);
    }
}

bool writeChecksumFile(const DiscSpec& spec, const QString& folder, QString* error)
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    const QDir dir(folder);
    for (ChecksumStyle style : {ChecksumStyle::Md5, ChecksumStyle::Md5CrlfUpper,
                                ChecksumStyle::Md5LowerNames, ChecksumStyle::CrcIni})
        QFile::remove(dir.filePath(checksumFileName(style)));
    const QString name = checksumFileName(styleOf(spec));
    if (name.isEmpty())
        return true;

    QVector<FileDigests> digests;
    for (const QString& file : listedFiles(spec, dir.entryList(QDir::Files))) {
        QFile in(dir.filePath(file));
        if (!in.open(QIODevice::ReadOnly))
            return fail(QStringLiteral("cannot read %1").arg(in.fileName()));
        Digester digester;
        QByteArray block;
        while (!(block = in.read(1 << 20)).isEmpty())
            digester.add(block);
        digests << digester.result(file);
    }
    const QByteArray bytes = checksumFileBytes(spec, digests);
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        return fail(QStringLiteral("cannot write %1").arg(file.fileName()));
    file.close();

    if (spec.has(Fault::ChecksumFlippedByte)) {
        QFile image(dir.filePath(imageFileName(spec)));
        if (!image.open(QIODevice::ReadWrite) || image.size() == 0)
            return fail(QStringLiteral("cannot change %1").arg(image.fileName()));
        const qint64 middle = image.size() / 2;
        char byte = 0;
        image.seek(middle);
        image.getChar(&byte);
        image.seek(middle);
        image.putChar(char(byte ^ 0x01));
    }
    return true;
}

} // namespace mkddp
