#include "tools/mkddp/DiscFiles.h"

#include "tools/mkddp/DemoMusic.h"
#include "tools/mkddp/Expected.h"
#include "tools/mkddp/KnownSignals.h"
#include "tools/mkddp/TestPattern.h"

#include <QDir>
#include <QFile>

#include <functional>

namespace mkddp {

namespace {

QString diskName(const DiscSpec& spec, const QByteArray& name)
{
    // The file system sees a zero-padded name up to its first zero byte.
    QString text = QString::fromLatin1(name.left(17)).section(QChar(0), 0, 0).trimmed();
    return spec.lowerCaseOnDisk ? text.toLower() : text;
}

QString fixedName(const DiscSpec& spec, const char* name)
{
    const QString text = QString::fromLatin1(name);
    return spec.lowerCaseOnDisk ? text.toLower() : text;
}

using AudioFill = std::function<void(qint64 offset, char* out, qint64 length)>;

AudioFill audioFill(const DiscSpec& spec)
{
    switch (spec.content) {
    case AudioContent::TestPattern: {
        auto pattern = std::make_shared<TestPattern>(spec);
        return [pattern](qint64 offset, char* out, qint64 length) {
            pattern->fill(offset, out, length);
        };
    }
    case AudioContent::DemoMusic: {
        auto music = std::make_shared<DemoMusic>(spec);
        return
            [music](qint64 offset, char* out, qint64 length) { music->fill(offset, out, length); };
    }
    case AudioContent::KnownSignals: {
        auto known = std::make_shared<KnownSignals>(spec);
        return
            [known](qint64 offset, char* out, qint64 length) { known->fill(offset, out, length); };
    }
    case AudioContent::Silence:
        break;
    }
    return [](qint64, char* out, qint64 length) { std::fill(out, out + length, '\0'); };
}

// The image as written: the faults that cut it leave it shorter than the PQ
// entries need.
qint64 writtenImageSize(const DiscSpec& spec)
{
    if (spec.has(Fault::ImageEmpty))
        return 0;
    if (spec.has(Fault::ImageCutShort))
        return std::max<qint64>(0, imageSize(spec) - 176400);
    if (spec.has(Fault::ImageTooLong))
        return imageSize(spec) + 176400;
    if (spec.has(Fault::ImagePartialFrame))
        return imageSize(spec) + 1000;
    return imageSize(spec);
}

} // namespace

QVector<ImageStreamFile> imageStreamFiles(const DiscSpec& spec)
{
    const qint64 size = writtenImageSize(spec);
    if (spec.imageStreams <= 1)
        return {{spec.imageName, 0, size, spec.startSector}};
    QVector<ImageStreamFile> streams;
    for (int k = 0; k < spec.imageStreams; ++k) {
        ImageStreamFile stream;
        stream.name = "IMAGE" + QByteArray::number(k + 1) + ".DAT";
        stream.begin = k == 0 ? 0
                              : indexPosition(spec, spec.firstTrackNumber + k, 1) +
                                    qint64(spec.streamGapFrames) * kBytesPerCdFrame;
        stream.end = k + 1 < spec.imageStreams
                         ? indexPosition(spec, spec.firstTrackNumber + k + 1, 1)
                         : size;
        stream.sector = spec.startSector + stream.begin / kBytesPerCdFrame;
        streams.append(stream);
    }
    return streams;
}

QString imageFileName(const DiscSpec& spec)
{
    return diskName(spec, imageStreamFiles(spec).first().name);
}

QString pqFileName(const DiscSpec& spec)
{
    return diskName(spec, spec.pqName);
}

QString cdTextFileName(const DiscSpec& spec)
{
    QByteArray name = spec.cdTextName;
    name.replace(' ', QByteArray());
    return diskName(spec, name);
}

DiscFiles buildFiles(const DiscSpec& spec, bool withImage)
{
    DiscFiles files;
    if (!spec.has(Fault::NoDdpid))
        files[fixedName(spec, "DDPID")] = ddpidBytes(spec);
    if (!spec.has(Fault::NoDdpms))
        files[fixedName(spec, "DDPMS")] = ddpmsBytes(spec);
    if (!spec.has(Fault::NoPqFile))
        files[pqFileName(spec)] = pqBytes(spec);
    if (spec.cdText && !spec.has(Fault::NoCdTextFile))
        files[cdTextFileName(spec)] = spec.has(Fault::CdTextEmptyFile) ? QByteArray()
                                      : spec.has(Fault::CdTextTooLarge)
                                          ? cdTextBytes(spec).leftJustified(8 * 256 * 18 + 18, '\0')
                                          : cdTextBytes(spec);
    if (withImage) {
        const AudioFill fill = audioFill(spec);
        const QVector<ImageStreamFile> streams = imageStreamFiles(spec);
        for (int k = spec.has(Fault::NoImageFile) ? 1 : 0; k < streams.size(); ++k) {
            QByteArray image(int(streams[k].end - streams[k].begin), '\0');
            fill(streams[k].begin, image.data(), image.size());
            files[diskName(spec, streams[k].name)] = image;
        }
    }
    if (spec.dataStream)
        files[fixedName(spec, kDataStreamName)] = QByteArray(int(kDataStreamBytes), '\x5A');
    if (withImage)
        addChecksumFile(spec, files);
    return files;
}

bool writeDisc(const DiscSpec& spec, const QString& folder, QString* error)
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!QDir().mkpath(folder))
        return fail(QStringLiteral("cannot create %1").arg(folder));
    const QDir dir(folder);

    // A file that a fault leaves out must not survive from an earlier run.
    QStringList names = {fixedName(spec, "DDPID"), fixedName(spec, "DDPMS"), pqFileName(spec),
                         cdTextFileName(spec)};
    for (const ImageStreamFile& stream : imageStreamFiles(spec))
        names.append(diskName(spec, stream.name));
    for (const QString& name : names) {
        if (!name.isEmpty() && dir.exists(name))
            QFile::remove(dir.filePath(name));
    }

    const DiscFiles files = buildFiles(spec, false);
    for (const auto& [name, bytes] : files) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            file.write(bytes) != bytes.size())
            return fail(QStringLiteral("cannot write %1").arg(file.fileName()));
    }
    const AudioFill fill = audioFill(spec);
    const QVector<ImageStreamFile> streams = imageStreamFiles(spec);
    for (int k = spec.has(Fault::NoImageFile) ? 1 : 0; k < streams.size(); ++k) {
        QFile image(dir.filePath(diskName(spec, streams[k].name)));
        if (!image.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return fail(QStringLiteral("cannot write %1").arg(image.fileName()));
        constexpr qint64 kChunk = 1 << 20; // a multiple of 4: chunks hold whole sample frames
        QByteArray chunk(int(kChunk), '\0');
        for (qint64 offset = streams[k].begin; offset < streams[k].end; offset += kChunk) {
            const qint64 length = std::min(kChunk, streams[k].end - offset);
            fill(offset, chunk.data(), length);
            if (image.write(chunk.constData(), length) != length)
                return fail(QStringLiteral("cannot write %1").arg(image.fileName()));
        }
    }
    return writeChecksumFile(spec, folder, error);
}

} // namespace mkddp
