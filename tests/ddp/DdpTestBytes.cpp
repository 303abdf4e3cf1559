#include "DdpTestBytes.h"

#include <QDir>
#include <QFile>

#include <cstdio>

namespace testbytes {

std::string padded(std::string_view text, std::size_t width, char pad)
{
    std::string out(text.substr(0, width));
    out.resize(width, pad);
    return out;
}

std::string ddpid(std::string_view upcEan)
{
    std::string out = padded("DDP 2.00", 8) + padded(upcEan, 13);
    return padded(out, 128);
}

std::string mapPacket(std::string_view streamType, std::string_view subcode,
                      std::string_view identifier, std::string_view tag)
{
    std::string p = padded(tag, 4) + padded(streamType, 2) + std::string(24, '0') +
                    padded(subcode, 8) + std::string(36, ' ') + padded(identifier, 17);
    return padded(p, 128);
}

std::string ddpms(std::string_view imageName, std::string_view pqName, std::string_view cdTextName)
{
    std::string out = mapPacket("D0", "", imageName) + mapPacket("S0", "PQ DESCR", pqName);
    if (!cdTextName.empty())
        out += mapPacket("S0", "CDTEXT  ", cdTextName);
    return out;
}

namespace {
std::string twoDigits(int v)
{
    char b[16];
    std::snprintf(b, sizeof b, "%02d", v);
    return b;
}
} // namespace

std::string pqEntry(const Entry& e)
{
    std::string out = "VVVS" + padded(e.track, 2) + twoDigits(e.index) + twoDigits(e.hours) +
                      twoDigits(e.minutes) + twoDigits(e.seconds) + twoDigits(e.frames) + "0000" +
                      padded(e.isrc, 12) + std::string(13, ' ') + padded(e.userText, 19);
    return out;
}

std::string pqDescriptor(const std::vector<Entry>& entries)
{
    std::string out;
    for (const Entry& e : entries)
        out += pqEntry(e);
    return out;
}

std::vector<Entry> simpleEntries(int leadInGap, const std::vector<int>& trackSeconds)
{
    std::vector<Entry> entries;
    entries.push_back({"00", 0, 0, 0, 0}); // the lead-in
    entries.push_back({"01", 0, 0, 0, 0}); // the pause before track 1
    int t = leadInGap;
    for (std::size_t i = 0; i < trackSeconds.size(); ++i) {
        entries.push_back({twoDigits(static_cast<int>(i) + 1), 1, t / 60, t % 60, 0});
        t += trackSeconds[i];
    }
    entries.push_back({"AA", 1, t / 60, t % 60, 0});
    entries.push_back({"AA", 0, t / 60, t % 60, 0});
    return entries;
}

std::string cdTextPack(std::uint8_t type, std::uint8_t track, std::uint8_t sequence,
                       std::uint8_t flags, std::string_view text12)
{
    const std::string head{char(type), char(track), char(sequence), char(flags)};
    return head + padded(text12, 12, '\0') + std::string(2, '\0'); // CRC zero
}

std::string sizeInfoPacks(std::uint8_t lastTrack, std::uint8_t lastSequence,
                          std::uint8_t firstSequence, std::uint8_t block)
{
    std::string info(36, '\0');
    info[1] = 1;
    info[2] = static_cast<char>(lastTrack);
    info[20 + block] = static_cast<char>(lastSequence);
    std::string out;
    for (std::uint8_t i = 0; i < 3; ++i)
        out += cdTextPack(0x8F, i, static_cast<std::uint8_t>(firstSequence + i), block << 4,
                          std::string_view(info).substr(i * 12, 12));
    return out;
}

std::string cdTextBlock(const Block& block)
{
    std::vector<std::string> packs;
    std::uint8_t sequence = block.firstSequence;
    const std::uint8_t flags =
        static_cast<std::uint8_t>((block.doubleByte ? 0x80 : 0) | (block.block << 4));
    for (const auto& [type, strings] : block.texts) {
        // The strings of one type run on; remember which track each byte is of.
        std::string text;
        std::vector<std::uint8_t> owner;
        for (std::size_t t = 0; t < strings.size(); ++t) {
            std::string s =
                strings[t] + (block.doubleByte ? std::string(2, '\0') : std::string(1, '\0'));
            text += s;
            owner.insert(owner.end(), s.size(), static_cast<std::uint8_t>(t));
        }
        for (std::size_t at = 0; at < text.size(); at += 12)
            packs.push_back(cdTextPack(type, owner[at], sequence++, flags, text.substr(at, 12)));
    }
    if (block.genre >= 0) {
        std::string g(2, '\0');
        g[0] = static_cast<char>(block.genre >> 8);
        g[1] = static_cast<char>(block.genre & 0xFF);
        packs.push_back(cdTextPack(0x87, 0, sequence++, flags, g + "Genre text"));
    }
    std::string out;
    for (const std::string& p : packs)
        out += p;
    const std::uint8_t lastSequence = static_cast<std::uint8_t>(sequence + 2);
    std::string size = sizeInfoPacks(block.lastTrack, lastSequence, sequence, block.block);
    if (block.doubleByte)
        for (std::size_t i = 0; i < size.size(); i += 18)
            size[i + 3] = static_cast<char>(size[i + 3] | 0x80);
    return out + size;
}

Files discFiles(const std::vector<Entry>& entries, const std::string& cdText)
{
    Files files;
    files["DDPID"] = ddpid();
    files["DDPMS"] = ddpms("IMAGE.DAT", "PQDESCR", cdText.empty() ? "" : "CDTEXT.BIN");
    files["PQDESCR"] = pqDescriptor(entries);
    files["IMAGE.DAT"] = std::string();
    if (!cdText.empty())
        files["CDTEXT.BIN"] = cdText;
    return files;
}

MemoryFileSource memorySource(const Files& files)
{
    MemoryFileSource source;
    for (const auto& [name, content] : files)
        source.setFile(name, content);
    return source;
}

MemoryFileSource memoryDisc(const std::vector<Entry>& entries, const std::string& cdText)
{
    return memorySource(discFiles(entries, cdText));
}

bool writeFolder(const QString& folder, const Files& files)
{
    if (!QDir().mkpath(folder))
        return false;
    for (const auto& [name, content] : files) {
        QFile f(QDir(folder).filePath(QString::fromStdString(name)));
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            f.write(content.data(), qint64(content.size())) != qint64(content.size()))
            return false;
    }
    return true;
}

} // namespace testbytes
