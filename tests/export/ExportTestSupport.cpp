#include "ExportTestSupport.h"

#include <QFile>
#include <QProcess>

#include <algorithm>

namespace exporttest {

std::shared_ptr<DDPModel> makeModel(const std::vector<testbytes::Entry>& entries,
                                    const CdTextRecord* cdText)
{
    auto model = std::make_shared<DDPModel>();
    std::vector<PqEntry> pq;
    for (const testbytes::Entry& e : entries)
        pq.push_back(PqEntry::fromBytes(testbytes::pqEntry(e)));
    if (cdText)
        model->setCdText(*cdText);
    // A row per entry after the first and before the last two, without a
    // lead-in pause shorter than 3 s.
    for (std::size_t i = 1; i + 2 < pq.size(); ++i) {
        if (i > 1 || durationSeconds(pq[1], pq[2]) >= 3)
            model->appendIndex(static_cast<std::uint32_t>(entries[i].index));
    }
    model->setEntries(std::move(pq));
    model->setImageFileName("IMAGE.DAT");
    return model;
}

CdTextRecord titles(const std::vector<std::string>& trackTitles)
{
    CdTextRecord record;
    record.tracks.resize(trackTitles.size() + 1);
    for (std::size_t t = 0; t < trackTitles.size(); ++t)
        trackTitles[t].copy(record.tracks[t + 1][CdTextRecord::Title].data(),
                            CdTextRecord::kSlotSize - 1);
    return record;
}

QByteArray patternBytes(qint64 offset, qint64 length)
{
    QByteArray bytes(static_cast<int>(length), Qt::Uninitialized);
    for (qint64 i = 0; i < length; ++i) {
        const quint64 p = static_cast<quint64>(offset + i);
        bytes[static_cast<int>(i)] = static_cast<char>(p ^ (p >> 8) ^ (p >> 16) ^ (p >> 24));
    }
    return bytes;
}

bool writePatternImage(const QString& path, qint64 size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (qint64 done = 0; done < size; done += 1 << 22) {
        const QByteArray chunk = patternBytes(done, std::min<qint64>(1 << 22, size - done));
        if (file.write(chunk) != chunk.size())
            return false;
    }
    return file.flush();
}

qint64 at(int minutes, int seconds, int frames)
{
    return (minutes * 60 + seconds) * qint64(176400) + frames * 2352;
}

bool isWavOf(const QString& path, const QByteArray& expected, QString* why)
{
    QFile in(path);
    const QByteArray file = in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    auto le = [](quint32 v, int bytes) {
        QByteArray out;
        for (int i = 0; i < bytes; ++i)
            out.append(static_cast<char>(v >> (8 * i)));
        return out;
    };
    const quint32 n = static_cast<quint32>(expected.size());
    const QByteArray header = "RIFF" + le(n + 36, 4) + "WAVEfmt " + le(16, 4) + le(1, 2) +
                              le(2, 2) + le(44100, 4) + le(176400, 4) + le(4, 2) + le(16, 2) +
                              "data" + le(n, 4);
    if (file.left(44) != header) {
        *why = QStringLiteral("header %1").arg(QString::fromLatin1(file.left(44).toHex()));
        return false;
    }
    if (file.size() - 44 != expected.size()) {
        *why = QStringLiteral("%1 data bytes, expected %2").arg(file.size() - 44).arg(n);
        return false;
    }
    for (int i = 0; i < expected.size(); ++i) {
        if (file[44 + i] != expected[i]) {
            *why = QStringLiteral("data differs at byte %1").arg(i);
            return false;
        }
    }
    return true;
}

bool hasControlCharacter(const QString& name)
{
    return std::any_of(name.begin(), name.end(), [](QChar c) {
        return c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() <= 0x9F);
    });
}

QString tivoraDdpPath()
{
    return QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR")) +
           QStringLiteral("/tools/tivora-ddp/tivora-ddp");
}

ToolRun finishRun(QProcess& process)
{
    ToolRun run;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit) {
        run.exitCode = process.exitCode();
        run.out = process.readAllStandardOutput();
        run.err = process.readAllStandardError();
    }
    return run;
}

ToolRun runProgram(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    return finishRun(process);
}

ToolRun runTivoraDdp(const QStringList& args)
{
    return runProgram(tivoraDdpPath(), args);
}

ToolRun runTivoraDdpLimited(int kibibytes, const QStringList& args)
{
    return runProgram(
        QStringLiteral("/bin/sh"),
        QStringList{QStringLiteral("-c"),
                    QStringLiteral("ulimit -f %1; trap '' XFSZ; exec \"$0\" \"$@\"").arg(kibibytes),
                    tivoraDdpPath()} +
            args);
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace exporttest
