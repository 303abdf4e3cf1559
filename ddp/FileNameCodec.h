#pragma once

#include <QByteArray>
#include <QString>
#include <QTextCodec>

// File names on Linux are bytes, and a folder may be named in Latin-1
// ("Caf\xe9") on a UTF-8 system. Qt 5 turns names into QStrings and back
// through the locale's codec, which loses such bytes, so that the folder
// then "does not exist". This codec decodes valid UTF-8 as UTF-8 and every
// byte of an invalid sequence as a lone surrogate U+DC80..U+DCFF (as
// Python's "surrogateescape" does), and encodes those back to the very same
// byte: any byte string survives the round trip unchanged.
class FileNameCodec : public QTextCodec
{
public:
    static constexpr int kMib = -2983; // not a registered MIB number

    // Installs one instance as the codec for the locale, so that command
    // line arguments, QFile, QDir and QFileInfo use it. Call it at start-up,
    // before the arguments are read; calling it again does nothing. Qt owns
    // the instance.
    static void install();

    QByteArray name() const override;
    int mibEnum() const override;

protected:
    QString convertToUnicode(const char* in, int length, ConverterState* state) const override;
    QByteArray convertFromUnicode(const QChar* in, int length,
                                  ConverterState* state) const override;
};
