#pragma once

#include <QString>

// Text from a disc (CD-Text, file names) as it may go to a terminal: control
// characters (U+0000 to U+001F, U+007F to U+009F) are written as \x1b and
// the like, so an escape sequence in a title can neither recolour nor retitle
// the terminal, and a tab or a line break cannot break a table's lines. The
// bytes of a file name that is not UTF-8 (see FileNameCodec) are written the
// same way: "Caf\xe9".
QString terminalText(const QString& text);
