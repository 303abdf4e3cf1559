#include "ddp/FileNameCodec.h"

namespace {

constexpr ushort kEscapeBase = 0xDC00; // byte b (0x80..0xFF) <-> U+DC00 + b
constexpr ushort kFirstEscape = 0xDC80;
constexpr ushort kLastEscape = 0xDCFF;

bool isEscape(ushort u)
{
    return u >= kFirstEscape && u <= kLastEscape;
}

bool isContinuation(uchar b)
{
    return (b & 0xC0) == 0x80;
}

// The length of the UTF-8 sequence that lead byte b starts, 0 when b cannot
// start one, with the range its second byte must lie in (which rules out
// overlong forms, UTF-16 surrogates and code points above U+10FFFF).
int sequenceLength(uchar b, uchar& low, uchar& high)
{
    low = 0x80;
    high = 0xBF;
    if (b >= 0xC2 && b <= 0xDF)
        return 2;
    if (b >= 0xE0 && b <= 0xEF) {
        if (b == 0xE0)
            low = 0xA0;
        else if (b == 0xED)
            high = 0x9F;
        return 3;
    }
    if (b >= 0xF0 && b <= 0xF4) {
        if (b == 0xF0)
            low = 0x90;
        else if (b == 0xF4)
            high = 0x8F;
        return 4;
    }
    return 0;
}

// How many of the `available` bytes at `in` fit the sequence its lead byte
// starts (the lead byte included); `length` gets the sequence's length.
int validPrefix(const uchar* in, int available, int& length)
{
    uchar low = 0;
    uchar high = 0;
    length = sequenceLength(in[0], low, high);
    if (length == 0)
        return 0;
    int n = 1;
    while (n < length && n < available) {
        const uchar b = in[n];
        const bool ok = n == 1 ? b >= low && b <= high : isContinuation(b);
        if (!ok)
            break;
        ++n;
    }
    return n;
}

QString decode(const uchar* in, int size)
{
    QString out;
    out.reserve(size);
    int i = 0;
    while (i < size) {
        const uchar b = in[i];
        if (b < 0x80) {
            out += QChar(ushort(b));
            ++i;
            continue;
        }
        int length = 0;
        const int valid = validPrefix(in + i, size - i, length);
        if (length > 0 && valid == length) {
            char32_t code = b & (length == 2 ? 0x1F : length == 3 ? 0x0F : 0x07);
            for (int k = 1; k < length; ++k)
                code = (code << 6) | (in[i + k] & 0x3F);
            if (code > 0xFFFF) {
                out += QChar(QChar::highSurrogate(code));
                out += QChar(QChar::lowSurrogate(code));
            } else {
                out += QChar(ushort(code));
            }
            i += length;
            continue;
        }
        // Not UTF-8: this byte alone is escaped, the next ones are looked at
        // afresh.
        out += QChar(ushort(kEscapeBase + b));
        ++i;
    }
    return out;
}

void appendUtf8(QByteArray& out, char32_t code)
{
    if (code < 0x80) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | (code >> 6));
        out += char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += char(0xE0 | (code >> 12));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xF0 | (code >> 18));
        out += char(0x80 | ((code >> 12) & 0x3F));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

} // namespace

void FileNameCodec::install()
{
    // Qt keeps every codec made until it exits.
    static FileNameCodec* const codec = new FileNameCodec;
    QTextCodec::setCodecForLocale(codec);
}

QByteArray FileNameCodec::name() const
{
    return QByteArrayLiteral("UTF-8 with escaped bytes");
}

int FileNameCodec::mibEnum() const
{
    return kMib;
}

// Every call is taken as a whole name: nothing is held back for a next piece.
// Qt's directory listing asks the codec, through a converter state, whether
// a name decodes with nothing left over and skips it otherwise, so a name
// ending in a lone 0xE9 must not leave a byte waiting; and the program
// feeds the locale's codec no streams.
QString FileNameCodec::convertToUnicode(const char* in, int length, ConverterState* state) const
{
    if (state)
        state->remainingChars = 0;
    return decode(reinterpret_cast<const uchar*>(in), length);
}

QByteArray FileNameCodec::convertFromUnicode(const QChar* in, int length,
                                             ConverterState* state) const
{
    const char replacement = state && (state->flags & ConvertInvalidToNull) ? '\0' : '?';
    QByteArray out;
    out.reserve(length);
    int invalid = 0;
    for (int i = 0; i < length; ++i) {
        const ushort u = in[i].unicode();
        if (QChar::isHighSurrogate(u) && i + 1 < length &&
            QChar::isLowSurrogate(in[i + 1].unicode())) {
            appendUtf8(out, QChar::surrogateToUcs4(u, in[i + 1].unicode()));
            ++i;
        } else if (isEscape(u)) {
            out += char(u - kEscapeBase);
        } else if (QChar::isSurrogate(u)) {
            // Not from a name: a lone surrogate no byte stands for.
            out += replacement;
            ++invalid;
        } else {
            appendUtf8(out, u);
        }
    }
    if (state) {
        state->remainingChars = 0;
        state->invalidChars += invalid;
    }
    return out;
}
