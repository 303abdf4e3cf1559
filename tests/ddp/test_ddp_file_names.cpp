// Folder names that are not UTF-8 (a Latin-1 "Caf\xe9" on a UTF-8 system):
// the codec's byte-exact round trip, and such a folder opened by the loader,
// by a drop, and by `tivora-ddp info` and `export`.
#include "DdpTestRun.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFolderCheck.h"
#include "ddp/DdpLoader.h"
#include "ddp/FileNameCodec.h"

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <cstdio>

namespace {

// QProcess hands the arguments over through the locale's codec: with the
// file-name codec installed the bytes arrive as they are.
ddptest::Run tivoraDdp(const QStringList& args)
{
    ddptest::Run run = ddptest::tivoraDdp(args);
    run.out += run.err;
    return run;
}

} // namespace

class TestDdpFileNames : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyByteRoundTrips();
    void utf8DecodesAsUtf8AndTheRestIsEscaped_data();
    void utf8DecodesAsUtf8AndTheRestIsEscaped();
    void namesEndingInALeadByteAreWhole();
    void latin1FolderLoadsAndLists();
    void droppedUrlKeepsTheBytes();
    void commandLineInfoAndExport();

private:
    QTemporaryDir m_dir;
    QByteArray m_folderBytes; // the folder's name as the file system has it
    QString m_folder;
};

void TestDdpFileNames::initTestCase()
{
    FileNameCodec::install();
    QVERIFY(m_dir.isValid());
    // The disc is written under a plain name and renamed with POSIX calls,
    // so that its name is exactly these bytes whatever Qt does.
    const QString plain = m_dir.filePath(QStringLiteral("plain"));
    QString error;
    QVERIFY2(mkddp::writeDisc(mkddp::simpleDisc(2, 1), plain, &error), qPrintable(error));
    m_folderBytes = QFile::encodeName(m_dir.path()) + QByteArrayLiteral("/Caf\xe9");
    QCOMPARE(std::rename(QFile::encodeName(plain).constData(), m_folderBytes.constData()), 0);
    m_folder = QFile::decodeName(m_folderBytes);
}

void TestDdpFileNames::everyByteRoundTrips()
{
    QTextCodec* codec = QTextCodec::codecForLocale();
    QCOMPARE(codec->mibEnum(), FileNameCodec::kMib);
    QByteArray all;
    for (int b = 0; b < 256; ++b) {
        const QByteArray one(1, char(b));
        QCOMPARE(codec->fromUnicode(codec->toUnicode(one)), one);
        all += char(b);
    }
    QCOMPARE(codec->fromUnicode(codec->toUnicode(all)), all);
    // Every pair: a lead byte followed by anything, including the start of
    // another sequence.
    for (int a = 0x80; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            const QByteArray pair = QByteArray(1, char(a)) + char(b) + "x";
            if (codec->fromUnicode(codec->toUnicode(pair)) != pair)
                QFAIL(qPrintable(QStringLiteral("%1 %2").arg(a, 0, 16).arg(b, 0, 16)));
        }
    }
    // The same through QFile, which is what the program uses (a name ends
    // at a zero byte).
    QCOMPARE(QFile::encodeName(QFile::decodeName(all.mid(1))), all.mid(1));
}

void TestDdpFileNames::utf8DecodesAsUtf8AndTheRestIsEscaped_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    auto escaped = [](const char* prefix, std::initializer_list<int> bytes) {
        QString s = QString::fromUtf8(prefix);
        for (int b : bytes)
            s += QChar(ushort(0xDC00 + b));
        return s;
    };
    QTest::addRow("utf-8") << QByteArray("Caf\xc3\xa9 \xe2\x99\xaa \xf0\x9f\x98\x80")
                           << QString::fromUtf8("Café ♪ \xf0\x9f\x98\x80");
    QTest::addRow("latin-1") << QByteArray("Caf\xe9") << escaped("Caf", {0xE9});
    QTest::addRow("overlong slash") << QByteArray("\xc0\xaf") << escaped("", {0xC0, 0xAF});
    QTest::addRow("utf-16 surrogate")
        << QByteArray("\xed\xa0\x80") << escaped("", {0xED, 0xA0, 0x80});
    // The UTF-8 form of an escape is no escape: it stays three bytes.
    QTest::addRow("escape spelt out")
        << QByteArray("\xed\xb3\xa9") << escaped("", {0xED, 0xB3, 0xA9});
    QTest::addRow("past U+10FFFF")
        << QByteArray("\xf4\x90\x80\x80") << escaped("", {0xF4, 0x90, 0x80, 0x80});
    QTest::addRow("cut short") << QByteArray("a\xe6\x97") << escaped("a", {0xE6, 0x97});
    QTest::addRow("emoji then latin-1")
        << QByteArray("\xf0\x9f\x98\x80\xe9") << escaped("\xf0\x9f\x98\x80", {0xE9});
}

void TestDdpFileNames::utf8DecodesAsUtf8AndTheRestIsEscaped()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(QFile::decodeName(bytes), text);
    QCOMPARE(QFile::encodeName(text), bytes);
}

// Qt's directory listing skips a name that leaves bytes over in the
// converter state: a name ending in what could start a sequence is whole.
void TestDdpFileNames::namesEndingInALeadByteAreWhole()
{
    QTextCodec* codec = QTextCodec::codecForLocale();
    for (const QByteArray& name :
         {QByteArray("Caf\xe9"), QByteArray("a\xf0\x9f"), QByteArray("\xc3")}) {
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        const QString text = codec->toUnicode(name.constData(), name.size(), &state);
        QCOMPARE(state.remainingChars, 0);
        QCOMPARE(state.invalidChars, 0);
        QCOMPARE(QFile::encodeName(text), name);
    }
}

void TestDdpFileNames::latin1FolderLoadsAndLists()
{
    QVERIFY(QFileInfo::exists(m_folder));
    QCOMPARE(QFile::encodeName(m_folder), m_folderBytes);
    QVERIFY(DdpFolderCheck(m_folder));
    QCOMPARE(openDialogCheck(m_folder), ErrorKind::NoError);
    QCOMPARE(ddpFolderForDroppedPath(m_folder + QStringLiteral("/DDPID")), m_folder);

    QStandardItemModel table;
    DDPModel model;
    const LoadResult result = loadDdp(m_folder, &table, model);
    QCOMPARE(result.kind, ErrorKind::NoError);
    QCOMPARE(table.rowCount(), 3); // two tracks and the total

    // Listed by its parent, the name leads back to the same folder.
    const QStringList entries = QDir(m_dir.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(entries, QStringList{QFileInfo(m_folder).fileName()});
    QVERIFY(DdpFolderCheck(QDir(m_dir.path()).filePath(entries.first())));
}

void TestDdpFileNames::droppedUrlKeepsTheBytes()
{
    // A file manager writes the raw bytes percent-encoded.
    QMimeData mime;
    mime.setData(QStringLiteral("text/uri-list"),
                 "file://" + m_folderBytes.toPercentEncoding("/") + "/DDPMS\r\n");
    const QString dropped = firstDroppedPath(&mime);
    QCOMPARE(QFile::encodeName(dropped), m_folderBytes + "/DDPMS");
    QVERIFY(DdpDropCheck(dropped));
    QCOMPARE(ddpFolderForDroppedPath(dropped), m_folder);

    // UTF-8 names, spelt out or percent-encoded, stay as they were.
    const QString utf8 = m_dir.filePath(QStringLiteral("Café ♪"));
    mime.setUrls({QUrl::fromLocalFile(utf8)});
    QCOMPARE(firstDroppedPath(&mime), utf8);
    mime.setData(QStringLiteral("text/uri-list"),
                 "file://" + QFile::encodeName(utf8).toPercentEncoding("/") + "\r\n");
    QCOMPARE(firstDroppedPath(&mime), utf8);
}

void TestDdpFileNames::commandLineInfoAndExport()
{
    ddptest::Run run = tivoraDdp({QStringLiteral("info"), m_folder});
    QCOMPARE(run.exitCode, 0);
    // The terminal gets the byte it cannot show as an escape.
    QVERIFY2(run.out.contains("/Caf\\xe9\n"), run.out.constData());
    QVERIFY(!run.out.contains("\xe9"));

    run = tivoraDdp(
        {QStringLiteral("info"), QStringLiteral("--json"), m_folder + QStringLiteral("/DDPID")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.json.value(QStringLiteral("kind")).toInt(), int(ErrorKind::NoError));

    // Into an output folder that is not UTF-8 either.
    const QString out = QFile::decodeName(QFile::encodeName(m_dir.path()) + "/Sortie\xe9");
    run = tivoraDdp(
        {QStringLiteral("export"), m_folder, out, QStringLiteral("--track"), QStringLiteral("1")});
    QVERIFY2(run.exitCode == 0, run.out.constData());
    const QStringList written = QDir(out).entryList({QStringLiteral("*.wav")}, QDir::Files);
    QCOMPARE(written.size(), 1);
    QVERIFY(QFile::encodeName(QDir(out).filePath(written.first()))
                .startsWith(QFile::encodeName(m_dir.path()) + "/Sortie\xe9/"));
}

QTEST_GUILESS_MAIN(TestDdpFileNames)
#include "test_ddp_file_names.moc"
