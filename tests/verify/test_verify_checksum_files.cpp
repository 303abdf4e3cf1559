// Checksum files as authoring tools write them, parsed from their bytes.
#include "verify/ChecksumFile.h"

#include <QtTest>

class TestVerifyChecksumFiles : public QObject
{
    Q_OBJECT

private slots:
    void md5sumLinesInEitherModeAndCase()
    {
        // Binary and text mode, upper and lower hex, CRLF and LF mixed, a
        // byte order mark, a comment, a folder in front of a name.
        const std::string bytes = "\xEF\xBB\xBF"
                                  "# written by a mastering tool\r\n"
                                  "D41D8CD98F00B204E9800998ECF8427E *IMAGE.DAT\r\n"
                                  "0123456789abcdef0123456789abcdef  DDP/pqdescr\n"
                                  "\n"
                                  "not a checksum line\n";
        const auto file = parseChecksumFile("CHECKSUM.MD5", bytes);
        QVERIFY(file);
        QCOMPARE(file->format, ChecksumFile::Md5Sum);
        QCOMPARE(file->entries.size(), std::size_t(2));
        QCOMPARE(file->entries[0].name, std::string("IMAGE.DAT"));
        QCOMPARE(file->entries[0].expected, std::string("d41d8cd98f00b204e9800998ecf8427e"));
        QCOMPARE(file->entries[1].name, std::string("pqdescr"));
        QCOMPARE(file->entries[1].algorithm, ChecksumAlgorithm::Md5);
        QCOMPARE(file->unreadLines, 1);
    }

    void md5sumLinesThatAreNot()
    {
        // One space only, 31 digits, a digit that is no hex digit, no name.
        const auto file =
            parseChecksumFile("list.md5", "d41d8cd98f00b204e9800998ecf8427e IMAGE.DAT\n"
                                          "d41d8cd98f00b204e9800998ecf8427  IMAGE.DAT\n"
                                          "g41d8cd98f00b204e9800998ecf8427e  IMAGE.DAT\n"
                                          "d41d8cd98f00b204e9800998ecf8427e  \n");
        QVERIFY(file);
        QCOMPARE(file->format, ChecksumFile::Unrecognised);
        QVERIFY(file->entries.empty());
    }

    void crc32Ini()
    {
        const std::string bytes = "[Info]\r\n"
                                  "Tool=Something=1.0\r\n"
                                  "[crc32 checksum]\r\n"
                                  "IMAGE.DAT=0A7C4692\r\n"
                                  "DDPID = 738af9c8\r\n"
                                  "PQDESCR=e37d389\r\n" // leading zero left out
                                  "BROKEN=xyz\r\n"
                                  "[Other]\r\n"
                                  "DDPMS=12345678\r\n";
        const auto file = parseChecksumFile("CHECKSUM.TXT", bytes);
        QVERIFY(file);
        QCOMPARE(file->format, ChecksumFile::Crc32Ini);
        QCOMPARE(file->entries.size(), std::size_t(3)); // DDPMS is in another section
        QCOMPARE(file->entries[0].expected, std::string("0a7c4692"));
        QCOMPARE(file->entries[1].name, std::string("DDPID"));
        QCOMPARE(file->entries[2].expected, std::string("0e37d389"));
        QCOMPARE(file->entries[2].algorithm, ChecksumAlgorithm::Crc32);
        QCOMPARE(file->unreadLines, 1);
    }

    void judgedByContentThenByName()
    {
        const std::string md5Line = "d41d8cd98f00b204e9800998ecf8427e  IMAGE.DAT\n";
        // Content makes a checksum file whatever its name.
        QVERIFY(parseChecksumFile("notes.txt", md5Line));
        // A file named like one, holding something else, is named as such.
        const std::string sha1 = "SHA1 (IMAGE.DAT) = da39a3ee5e6b4b0d3255bfef95601890afd80709\n";
        for (const char* name : {"CHECKSUM.TXT", "MD5-Checksum.md5", "disc.sfv", "IMAGE.crc"}) {
            const auto file = parseChecksumFile(name, sha1);
            QVERIFY2(file, name);
            QCOMPARE(file->format, ChecksumFile::Unrecognised);
        }
        // Anything else is no checksum file at all.
        QVERIFY(!parseChecksumFile("README.TXT", sha1));
        QVERIFY(!parseChecksumFile("cover.jpg", std::string("\xFF\xD8\xFF\xE0", 4)));
        // An INI without the CRC section says nothing.
        QVERIFY(!parseChecksumFile("setup.ini", "[CRC]\nIMAGE.DAT=0A7C4692\n"));
    }

    void namesMatchIgnoringCase()
    {
        QVERIFY(sameNameIgnoringCase("image.dat", "IMAGE.DAT"));
        QVERIFY(!sameNameIgnoringCase("IMAGE.DAT", "IMAGE.DA"));
        QVERIFY(!sameNameIgnoringCase("IMAGE1.DAT", "IMAGE2.DAT"));
    }
};

QTEST_GUILESS_MAIN(TestVerifyChecksumFiles)
#include "test_verify_checksum_files.moc"
