#pragma once

// Small helpers for writing fixed-width record fields.

#include <QByteArray>

namespace mkddp {

// Writes `text` into `record` at `offset`, cut or padded to `width` with `pad`.
inline void putField(QByteArray& record, int offset, int width, const QByteArray& text,
                     char pad = ' ')
{
    for (int i = 0; i < width; ++i)
        record[offset + i] = i < text.size() ? text.at(i) : pad;
}

inline QByteArray digits(qint64 value, int width)
{
    return QByteArray::number(value).rightJustified(width, '0');
}

} // namespace mkddp
