// CD-Text: language blocks of 18-byte packs, each block ending in its three
// size-information packs (type 0x8F).
#include "tools/mkddp/DiscFiles.h"

#include <iconv.h>

#include <array>
#include <vector>

namespace mkddp {

namespace {

constexpr int kTextBytes = 12;
constexpr int kPackSize = 18;

QByteArray toCp932(const QString& text)
{
    if (text.isEmpty())
        return {};
    QByteArray in = text.toUtf8();
    iconv_t cd = iconv_open("CP932", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1))
        return text.toLatin1(); // no converter: keep at least the ASCII part
    QByteArray out(in.size() * 2 + 4, '\0');
    char* inPtr = in.data();
    size_t inLeft = size_t(in.size());
    char* outPtr = out.data();
    size_t outLeft = size_t(out.size());
    iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    out.truncate(out.size() - int(outLeft));
    return out;
}

// One pack type's strings of a block: album first, then track 1..N.
struct TypeStrings
{
    quint8 type;
    QVector<QByteArray> strings; // encoded, without terminator
};

struct BlockSpec
{
    int number = 0;
    bool doubleByte = false;
    int language = 0x09;
    QVector<TypeStrings> types; // ascending pack type, 0x86 and 0x87 handled apart
    QByteArray discId;          // encoded; empty = no 0x86 pack
    int genre = 0;
    QByteArray genreText;
};

QByteArray encoded(const QString& text, bool doubleByte)
{
    return doubleByte ? toCp932(text) : text.toLatin1();
}

const QString& slotText(const CdTextStrings& s, int slot)
{
    const QString* texts[] = {&s.title,    &s.performer, &s.songwriter, &s.composer,
                              &s.arranger, &s.message,   &s.code};
    return *texts[slot];
}

constexpr quint8 kSlotTypes[] = {0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x8E};

// Builds the strings of one block from [album, track 1, ..., track N].
BlockSpec blockFrom(const QVector<CdTextStrings>& records, bool doubleByte)
{
    BlockSpec block;
    block.doubleByte = doubleByte;
    for (int slot = 0; slot < 7; ++slot) {
        TypeStrings t{kSlotTypes[slot], {}};
        bool any = false;
        for (const CdTextStrings& r : records) {
            t.strings.append(encoded(slotText(r, slot), doubleByte));
            any = any || !slotText(r, slot).isEmpty();
        }
        if (any)
            block.types.append(t);
    }
    return block;
}

void putPack(QByteArray& out, quint8 type, quint8 track, quint8 sequence, quint8 flags,
             const char* text)
{
    char pack[kPackSize];
    pack[0] = char(type);
    pack[1] = char(track);
    pack[2] = char(sequence);
    pack[3] = char(flags);
    std::copy(text, text + kTextBytes, pack + 4);
    const quint16 crc = cdTextCrc(pack);
    pack[16] = char(crc >> 8);
    pack[17] = char(crc & 0xFF);
    out.append(pack, kPackSize);
}

// The text packs of one pack type: the strings run on across packs. Each
// pack names the track of its first byte and how many characters of that
// string came before it (0..15).
struct PackText
{
    quint8 type;
    quint8 track;
    quint8 charPosition;
    std::array<char, kTextBytes> text;
};

std::vector<PackText> typePacks(const TypeStrings& t, bool doubleByte, int firstTrack)
{
    QByteArray stream;
    QVector<int> starts;
    for (const QByteArray& s : t.strings) {
        starts.append(stream.size());
        stream += s;
        stream += doubleByte ? QByteArray(2, '\0') : QByteArray(1, '\0');
    }
    std::vector<PackText> packs;
    for (int offset = 0; offset < stream.size(); offset += kTextBytes) {
        int s = 0;
        while (s + 1 < starts.size() && starts.at(s + 1) <= offset)
            ++s;
        PackText p{t.type, quint8(s == 0 ? 0 : firstTrack + s - 1), 0, {}};
        const int before = (offset - starts.at(s)) / (doubleByte ? 2 : 1);
        p.charPosition = quint8(qMin(before, 15));
        p.text.fill('\0');
        for (int i = 0; i < kTextBytes && offset + i < stream.size(); ++i)
            p.text[i] = stream.at(offset + i);
        packs.push_back(p);
    }
    return packs;
}

std::vector<PackText> blockTextPacks(const BlockSpec& block, int firstTrack)
{
    std::vector<PackText> packs;
    auto append = [&](const TypeStrings& t) {
        const std::vector<PackText> more = typePacks(t, block.doubleByte, firstTrack);
        packs.insert(packs.end(), more.begin(), more.end());
    };
    for (const TypeStrings& t : block.types) {
        if (t.type > 0x85)
            continue;
        append(t);
    }
    if (!block.discId.isEmpty())
        append({0x86, {block.discId}});
    if (block.genre != 0) {
        PackText g{0x87, 0, 0, {}};
        g.text.fill('\0');
        g.text[0] = char(block.genre >> 8);
        g.text[1] = char(block.genre & 0xFF);
        for (int i = 0; i < qMin(block.genreText.size(), 9); ++i)
            g.text[2 + i] = block.genreText.at(i);
        packs.push_back(g);
    }
    for (const TypeStrings& t : block.types) {
        if (t.type == 0x8E)
            append(t);
    }
    return packs;
}

} // namespace

quint16 cdTextCrc(const char* pack16)
{
    quint16 crc = 0;
    for (int i = 0; i < 16; ++i) {
        crc ^= quint16(quint8(pack16[i]) << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) ? quint16((crc << 1) ^ 0x1021) : quint16(crc << 1);
    }
    return quint16(~crc);
}

QByteArray cdTextBytes(const DiscSpec& spec)
{
    if (!spec.cdText)
        return {};

    QVector<CdTextStrings> records{spec.album};
    for (const TrackSpec& t : spec.tracks)
        records.append(t.text);
    if (spec.has(Fault::CdTextExtraTrack)) {
        CdTextStrings extra;
        extra.title = QStringLiteral("Beyond the last track");
        extra.performer = QStringLiteral("Nobody");
        records.append(extra);
    }

    QVector<BlockSpec> blocks;
    BlockSpec first = blockFrom(records, spec.doubleByte);
    first.language = spec.languageCode;
    first.discId = encoded(spec.discId, spec.doubleByte);
    first.genre = spec.has(Fault::CdTextBadGenre) ? 28 : spec.genre;
    first.genreText = spec.genreText;
    if (spec.has(Fault::CdTextBadDoubleByte) && spec.doubleByte) {
        for (TypeStrings& t : first.types) {
            if (t.type == 0x80 && t.strings.size() > 1)
                t.strings[1] = QByteArray("\x81\x7f\xff\xfe", 4);
        }
    }
    blocks.append(first);
    if (!spec.secondBlock.isEmpty()) {
        BlockSpec second = blockFrom(spec.secondBlock, false);
        second.number = 1;
        second.language = 0x08; // German
        blocks.append(second);
    }

    // Text packs first, so that every block's size information can name
    // every block's last sequence number.
    std::vector<std::vector<PackText>> texts;
    for (const BlockSpec& b : blocks)
        texts.push_back(blockTextPacks(b, spec.firstTrackNumber));

    std::array<quint8, 8> lastSequence{};
    std::array<quint8, 8> languages{};
    for (int b = 0; b < blocks.size(); ++b) {
        lastSequence[size_t(b)] = quint8(texts[size_t(b)].size() + 2);
        languages[size_t(b)] = quint8(blocks.at(b).language);
    }

    QByteArray out;
    for (int b = 0; b < blocks.size(); ++b) {
        const BlockSpec& block = blocks.at(b);
        const std::vector<PackText>& packs = texts[size_t(b)];
        const quint8 flagsBase = quint8((block.doubleByte ? 0x80 : 0) | (block.number << 4));

        quint8 size[36] = {};
        size[0] = block.doubleByte ? 0x80 : 0x00; // MS-JIS or ISO 8859-1
        size[1] = quint8(spec.firstTrackNumber);
        size[2] = quint8(spec.lastTrackNumber() - (spec.has(Fault::CdTextLastTrackTooLow) ? 1 : 0));
        size[3] = 0; // no copy protection flags
        for (const PackText& p : packs)
            ++size[4 + (p.type - 0x80)];
        size[4 + 15] = 3;
        for (int i = 0; i < 8; ++i) {
            size[20 + i] = lastSequence[size_t(i)];
            size[28 + i] = languages[size_t(i)];
        }

        // Sequence numbers restart in every block.
        int sequence = 0;
        for (const PackText& p : packs)
            putPack(out, p.type, p.track, quint8(sequence++), quint8(flagsBase | p.charPosition),
                    p.text.data());
        for (int i = 0; i < 3; ++i)
            putPack(out, 0x8F, quint8(i), quint8(sequence++), quint8(block.number << 4),
                    reinterpret_cast<const char*>(size + 12 * i));
    }
    if (spec.has(Fault::CdTextBadCrc))
        for (int p = 0; p < 3 && (p + 1) * kPackSize <= out.size(); ++p)
            out[p * kPackSize + 17] = char(out[p * kPackSize + 17] ^ 0x5A);
    return out;
}

} // namespace mkddp
