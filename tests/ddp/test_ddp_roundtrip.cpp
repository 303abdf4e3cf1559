// What the test-disc generator writes is what `tivora-ddp info --json`
// reports: rows, index list and CD-Text for sound discs of many shapes, and
// the error kind for each fault the generator can put in.
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(mkddp::DiscSpec)

namespace {

QJsonObject info(const QString& folder, int* exitCode)
{
    QProcess process;
    process.start(QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR")) +
                      QStringLiteral("/tools/tivora-ddp/tivora-ddp"),
                  {QStringLiteral("info"), QStringLiteral("--json"), folder});
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    *exitCode = process.exitCode();
    return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
}

QByteArray compact(const QJsonValue& v)
{
    if (v.isArray())
        return QJsonDocument(v.toArray()).toJson(QJsonDocument::Indented);
    if (v.isObject())
        return QJsonDocument(v.toObject()).toJson(QJsonDocument::Indented);
    return v.isNull() ? QByteArray("null") : QByteArray("<other>");
}

mkddp::DiscSpec japaneseDisc()
{
    mkddp::DiscSpec spec = mkddp::realisticDisc();
    spec.doubleByte = true;
    spec.languageCode = 0x69;
    spec.album.title = QStringLiteral("日本のアルバム ①");
    spec.album.performer = QStringLiteral("ｶﾀｶﾅ と 漢字");
    if (!spec.tracks.isEmpty())
        spec.tracks[0].text.title = QStringLiteral("最初の曲 ⅰ");
    return spec;
}

} // namespace

class TestDdpRoundTrip : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_discs = 0;

    // Writes the disc (into a folder with a Unicode name), asks the program,
    // and removes the disc again: the images are tens of megabytes each.
    QJsonObject infoOf(const mkddp::DiscSpec& spec, int* exitCode)
    {
        const QString folder = m_dir.filePath(QStringLiteral("disc %1 ♪").arg(++m_discs));
        QString error;
        if (!mkddp::writeDisc(spec, folder, &error))
            qWarning("writeDisc: %s", qPrintable(error));
        const QJsonObject report = info(folder, exitCode);
        QDir(folder).removeRecursively();
        return report;
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void soundDiscsRoundTrip_data()
    {
        using namespace mkddp;
        QTest::addColumn<DiscSpec>("spec");
        QTest::newRow("realistic") << realisticDisc();
        QTest::newRow("demo") << demoDisc();
        QTest::newRow("simple, no CD-Text") << simpleDisc(3, 5);
        QTest::newRow("double-byte") << japaneseDisc();

        DiscSpec shownPause = simpleDisc(2, 5);
        shownPause.tracks[0].pauseFrames = cdFrames(4);
        shownPause.silentPauses = true; // a pause that holds audio reads otherwise
        shownPause.tracks[1].indexOffsets = {cdFrames(1), cdFrames(3)};
        QTest::newRow("first pause shown, indexes") << shownPause;

        DiscSpec oneSecond = simpleDisc(2, 5);
        oneSecond.tracks[0].pauseFrames = cdFrames(1);
        QTest::newRow("first pause 1 s") << oneSecond;

        DiscSpec frames = simpleDisc(3, 5);
        frames.tracks[0].frames = cdFrames(0, 5, 40);
        frames.tracks[1].pauseFrames = 37;
        frames.pqHours = 1;
        QTest::newRow("frames and hours") << frames;

        DiscSpec names = realisticDisc();
        names.lowerCaseOnDisk = true;
        names.cdTextName = "CD TEXT.BIN";
        QTest::newRow("lower case on disk, inner blank") << names;

        DiscSpec padded = realisticDisc();
        padded.zeroPadNames = true;
        QTest::newRow("zero-padded names") << padded;

        DiscSpec bilingual = realisticDisc();
        bilingual.secondBlock = {CdTextStrings{QStringLiteral("Das Album")},
                                 CdTextStrings{QStringLiteral("Erstes Lied")}};
        QTest::newRow("second language block") << bilingual;

        DiscSpec genre = realisticDisc();
        genre.genre = 27;
        QTest::newRow("genre 27") << genre;
    }

    void soundDiscsRoundTrip()
    {
        QFETCH(mkddp::DiscSpec, spec);
        int exitCode = -1;
        const QJsonObject report = infoOf(spec, &exitCode);
        QCOMPARE(report.value(QStringLiteral("kind")).toInt(-1), 12);
        QCOMPARE(exitCode, 0);
        QCOMPARE(compact(report.value(QStringLiteral("rows"))), compact(mkddp::expectedRows(spec)));
        QCOMPARE(compact(report.value(QStringLiteral("indexList"))),
                 compact(mkddp::expectedIndexList(spec)));
        QCOMPARE(compact(report.value(QStringLiteral("cdText"))),
                 compact(mkddp::expectedCdText(spec)));
    }

    void eachFaultEndsInItsKind_data()
    {
        QTest::addColumn<mkddp::DiscSpec>("spec");
        QTest::addColumn<int>("kind");
        for (mkddp::Fault fault : mkddp::allFaults()) {
            mkddp::DiscSpec spec = fault == mkddp::Fault::CdTextBadDoubleByte
                                       ? japaneseDisc()
                                       : mkddp::realisticDisc();
            spec.faults = {fault};
            QTest::newRow(qPrintable(mkddp::faultName(fault)))
                << spec << mkddp::expectedKind(fault);
        }
    }

    void eachFaultEndsInItsKind()
    {
        QFETCH(mkddp::DiscSpec, spec);
        QFETCH(int, kind);
        int exitCode = -1;
        const QJsonObject report = infoOf(spec, &exitCode);
        QCOMPARE(report.value(QStringLiteral("kind")).toInt(-1), kind);
        QCOMPARE(exitCode, kind == 12 ? 0 : 1);
        if (kind == 7) {
            // The disc is shown behind a missing image: rows, indexes, CD-Text.
            QCOMPARE(compact(report.value(QStringLiteral("rows"))),
                     compact(mkddp::expectedRows(spec)));
            QCOMPARE(compact(report.value(QStringLiteral("cdText"))),
                     compact(mkddp::expectedCdText(spec)));
        } else if (kind != 12) {
            QVERIFY(report.value(QStringLiteral("rows")).toArray().isEmpty());
            QVERIFY(report.value(QStringLiteral("indexList")).toArray().isEmpty());
            QVERIFY(report.value(QStringLiteral("cdText")).isNull());
        }
    }
};

QTEST_GUILESS_MAIN(TestDdpRoundTrip)
#include "test_ddp_roundtrip.moc"
