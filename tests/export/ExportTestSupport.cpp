#include "ExportTestSupport.h"

#include <QFile>

namespace exporttest {

std::shared_ptr<DDPModel> makeModel(const std::vector<testbytes::Entry>& entries,
                                    const CdTextRecord* cdText, const std::string& imageName)
{
    auto model = std::make_shared<DDPModel>();
    std::vector<PqEntry> pq;
    for (const testbytes::Entry& e : entries)
        pq.push_back(PqEntry::fromBytes(testbytes::pqEntry(e)));
    if (cdText)
        model->setCdText(*cdText);
    // One index per table row: the entries after the first and before the
    // last two, without a lead-in pause shorter than 3 s.
    bool firstRowPause = false;
    for (std::size_t i = 1; i + 2 < entries.size(); ++i) {
        if (i == 1 && entries.size() > 2 && durationSeconds(pq[1], pq[2]) < 3)
            continue;
        if (model->indexList().empty())
            firstRowPause = entries[i].index == 0;
        model->appendIndex(static_cast<std::uint32_t>(entries[i].index));
    }
    model->setEntries(std::move(pq));
    model->setImageFileName(imageName);
    model->setFirstTrackNumber(firstRowPause ? 1 : 2);
    return model;
}

CdTextRecord titles(const std::vector<std::string>& trackTitles)
{
    CdTextRecord record;
    record.tracks.resize(trackTitles.size() + 1);
    for (std::size_t t = 0; t < trackTitles.size(); ++t) {
        CdTextRecord::Slot& slot = record.tracks[t + 1][CdTextRecord::Title];
        trackTitles[t].copy(slot.data(), slot.size() - 1);
    }
    return record;
}

QByteArray patternBytes(qint64 offset, qint64 length)
{
    QByteArray bytes(static_cast<int>(length), Qt::Uninitialized);
    for (qint64 i = 0; i < length; ++i) {
        const quint64 p = static_cast<quint64>(offset + i);
        bytes[static_cast<int>(i)] =
            static_cast<char>((p ^ (p >> 8) ^ (p >> 16) ^ (p >> 24)) & 0xFF);
    }
    return bytes;
}

bool writePatternImage(const QString& path, qint64 size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    constexpr qint64 kChunk = 1 << 22;
    for (qint64 done = 0; done < size; done += kChunk) {
        const QByteArray chunk = patternBytes(done, std::min(kChunk, size - done));
        if (file.write(chunk) != chunk.size())
            return false;
    }
    return file.flush();
}

quint32 WavFile::u32(int offset) const
{
    quint32 v = 0;
    for (int i = 3; i >= 0; --i)
        v = (v << 8) | static_cast<quint8>(header[offset + i]);
    return v;
}

quint16 WavFile::u16(int offset) const
{
    return static_cast<quint16>(static_cast<quint8>(header[offset]) |
                                (static_cast<quint8>(header[offset + 1]) << 8));
}

WavFile readWav(const QString& path)
{
    WavFile wav;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return wav;
    const QByteArray all = file.readAll();
    if (all.size() < 44)
        return wav;
    wav.header = all.left(44);
    wav.data = all.mid(44);
    wav.ok = true;
    return wav;
}

bool isWavOf(const WavFile& file, const QByteArray& expected, QString* why)
{
    auto no = [why](const QString& reason) {
        *why = reason;
        return false;
    };
    if (!file.ok)
        return no(QStringLiteral("no WAV file"));
    const quint32 length = static_cast<quint32>(expected.size());
    if (file.header.left(4) != "RIFF" || file.header.mid(8, 8) != "WAVEfmt " ||
        file.header.mid(36, 4) != "data")
        return no(QStringLiteral("chunk tags"));
    if (file.u32(4) != length + 36 || file.u32(40) != length)
        return no(
            QStringLiteral("lengths %1/%2 for %3").arg(file.u32(4)).arg(file.u32(40)).arg(length));
    if (file.u32(16) != 16 || file.u16(20) != 1 || file.u16(22) != 2 || file.u32(24) != 44100 ||
        file.u32(28) != 176400 || file.u16(32) != 4 || file.u16(34) != 16)
        return no(QStringLiteral("format fields"));
    if (file.data.size() != expected.size())
        return no(
            QStringLiteral("data size %1, expected %2").arg(file.data.size()).arg(expected.size()));
    for (int i = 0; i < expected.size(); ++i) {
        if (file.data[i] != expected[i])
            return no(QStringLiteral("data differs at byte %1").arg(i));
    }
    return true;
}

} // namespace exporttest
