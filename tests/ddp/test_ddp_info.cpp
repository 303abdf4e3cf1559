// `tivora-ddp info` run as a program: the order of the folder checks, the
// exit statuses, the JSON object, and the round trip of a generated disc.
#include "DdpTestBytes.h"
#include "DdpTestRun.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace testbytes;

namespace {

ddptest::Run runInfo(const QStringList& args)
{
    return ddptest::tivoraDdp(QStringList{QStringLiteral("info")} + args);
}

} // namespace

class TestDdpInfo : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
    }

    void usageErrors()
    {
        QCOMPARE(runInfo({}).exitCode, 2);
        QCOMPARE(runInfo({QStringLiteral("--json")}).exitCode, 2);
        QCOMPARE(runInfo({QStringLiteral("--xml"), path(QString())}).exitCode, 2);
        QCOMPARE(runInfo({QStringLiteral("a"), QStringLiteral("b")}).exitCode, 2);
    }

    void kindsInTheirOrder_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("title");
        QTest::newRow("absent path") << "absent" << QStringList{"<none>"} << 4 << "Invalid Path";
        QTest::newRow("empty folder") << "empty" << QStringList{} << 6 << "No DDP Selected";
        QTest::newRow("DDPMS only") << "ms" << QStringList{"DDPMS"} << 6 << "No DDP Selected";
        QTest::newRow("DDPID only") << "id" << QStringList{"DDPID"} << 5 << "No DDP Selected";
        QTest::newRow("sound") << "sound" << QStringList{"DDPID", "DDPMS", "PQDESCR", "IMAGE.DAT"}
                               << 12 << "";
    }

    void kindsInTheirOrder()
    {
        QFETCH(QString, folder);
        QFETCH(QStringList, files);
        QFETCH(int, kind);
        QFETCH(QString, title);
        const Files all = discFiles(simpleEntries(2, {60, 90}));
        Files chosen;
        for (const QString& name : files) {
            if (all.count(name.toStdString()))
                chosen[name.toStdString()] = all.at(name.toStdString());
        }
        if (!files.contains(QStringLiteral("<none>")))
            QVERIFY(writeFolder(path(folder), chosen));

        const ddptest::Run run = runInfo({QStringLiteral("--json"), path(folder)});
        QCOMPARE(run.exitCode, kind == 12 ? 0 : 1);
        QCOMPARE(run.json.value(QStringLiteral("kind")).toInt(-1), kind);
        QCOMPARE(run.json.value(QStringLiteral("title")).toString(), title);
        QCOMPARE(run.json.value(QStringLiteral("columns")).toArray().size(), 13);
        QCOMPARE(run.json.value(QStringLiteral("rows")).toArray().isEmpty(), kind != 12);
        QVERIFY(run.json.value(QStringLiteral("cdText")).isNull());
        QVERIFY(run.out.endsWith('\n') && run.out.count('\n') == 1);

        // Without --json: the same status and words for a person.
        const ddptest::Run text = runInfo({path(folder)});
        QCOMPARE(text.exitCode, run.exitCode);
        if (kind != 12)
            QVERIFY2(text.out.contains(title.toUtf8()), text.out.constData());
        else
            QVERIFY2(text.out.contains("Total: 02:30"), text.out.constData());
    }

    void aFileStandsForItsFolder()
    {
        const QString folder = path(QStringLiteral("byfile"));
        QVERIFY(writeFolder(folder, discFiles(simpleEntries(3, {10}))));
        const ddptest::Run run =
            runInfo({QStringLiteral("--json"), folder + QStringLiteral("/PQDESCR")});
        QCOMPARE(run.exitCode, 0);
        const QJsonArray rows = run.json.value(QStringLiteral("rows")).toArray();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows.at(0).toArray().at(3).toString(), QStringLiteral("-00:03"));
        QVERIFY(rows.at(0).toArray().at(0).isNull());
        QCOMPARE(run.json.value(QStringLiteral("indexList")).toArray(), (QJsonArray{0, 1}));
        const QJsonObject names = run.json.value(QStringLiteral("files")).toObject();
        QCOMPARE(names.value(QStringLiteral("image")).toString(), QStringLiteral("IMAGE.DAT"));
        QCOMPARE(names.value(QStringLiteral("pq")).toString(), QStringLiteral("PQDESCR"));
        QCOMPARE(names.value(QStringLiteral("cdText")).toString(), QString());
    }
};

QTEST_GUILESS_MAIN(TestDdpInfo)
#include "test_ddp_info.moc"
