#include "tools/tivora-ddp/TerminalText.h"

QString terminalText(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const ushort u = c.unicode();
        if (u < 0x20 || (u >= 0x7F && u <= 0x9F))
            out += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
        else if (u >= 0xDC80 && u <= 0xDCFF) // a byte of a file name that is not UTF-8
            out += QStringLiteral("\\x%1").arg(u - 0xDC00, 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}
