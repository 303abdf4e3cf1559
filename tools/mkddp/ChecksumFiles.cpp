// Checksum files beside a written disc, in the styles authoring tools use.
#include "tools/mkddp/DiscFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <zlib.h>

namespace mkddp {

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
    const QString name = checksumFileName(spec.checksums);
    if (name.isEmpty())
        return true;

    // Every file of the disc, as written (the DDP's own files only).
    QStringList files = {imageFileName(spec), pqFileName(spec), cdTextFileName(spec)};
    for (const ImageStreamFile& stream : imageStreamFiles(spec))
        files << QString::fromLatin1(stream.name);
    files << QStringLiteral("DDPID") << QStringLiteral("DDPMS")
          << QString::fromLatin1(kDataStreamName);
    QStringList present;
    for (const QString& file : dir.entryList(QDir::Files, QDir::Name))
        if (files.contains(file, Qt::CaseInsensitive) && !present.contains(file))
            present << file;
    if (spec.has(Fault::ChecksumUnlistedFile))
        present.removeAll(pqFileName(spec));

    const bool crlf =
        spec.checksums != ChecksumStyle::Md5 && spec.checksums != ChecksumStyle::Md5LowerNames;
    const QByteArray eol = crlf ? "\r\n" : "\n";
    QByteArray out;
    if (spec.checksums == ChecksumStyle::CrcIni)
        out += "[CRC32 Checksum]" + eol;
    for (const QString& file : present) {
        QFile in(dir.filePath(file));
        if (!in.open(QIODevice::ReadOnly))
            return fail(QStringLiteral("cannot read %1").arg(in.fileName()));
        QCryptographicHash md5(QCryptographicHash::Md5);
        QCryptographicHash sha1(QCryptographicHash::Sha1);
        uLong crc = crc32(0L, Z_NULL, 0);
        QByteArray block;
        while (!(block = in.read(1 << 20)).isEmpty()) {
            md5.addData(block);
            sha1.addData(block);
            crc = crc32(crc, reinterpret_cast<const Bytef*>(block.constData()), uInt(block.size()));
        }
        const QByteArray listed = file.toLatin1();
        switch (spec.checksums) {
        case ChecksumStyle::None:
            break;
        case ChecksumStyle::Md5:
            out += md5.result().toHex() + "  " + listed + eol;
            break;
        case ChecksumStyle::Md5CrlfUpper:
            out += md5.result().toHex().toUpper() + " *" + listed + eol;
            break;
        case ChecksumStyle::Md5LowerNames:
            out += md5.result().toHex() + "  " + listed.toLower() + eol;
            break;
        case ChecksumStyle::CrcIni:
            out += listed + '=' +
                   QByteArray::number(quint32(crc), 16).rightJustified(8, '0').toUpper() + eol;
            break;
        case ChecksumStyle::Unknown:
            out += "SHA1 (" + listed + ") = " + sha1.result().toHex() + eol;
            break;
        }
    }
    if (spec.has(Fault::ChecksumMissingFile)) {
        const QByteArray missing = "MISSING.DAT";
        out += spec.checksums == ChecksumStyle::CrcIni ? missing + "=0BADF00D" + eol
                                                       : QByteArray(32, '0') + "  " + missing + eol;
    }
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(out) != out.size())
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
