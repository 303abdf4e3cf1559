// "Save PQ Sheet…" without a window: the file chosen gets the sheet with
// every file's MD5, a name without a known extension is refused, and a
// cancel while the files are read writes nothing.
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/PqSheetSaver.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>

class ReportPqSheetSaverTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    PqSheetSaver::Disc load(const QString& folder)
    {
        auto model = std::make_shared<DDPModel>();
        QStandardItemModel table;
        loadDdp(folder, &table, *model);
        PqSheetSaver::Disc disc;
        disc.image = openDiscImage(folder, model->imageLayout());
        disc.model = model;
        disc.files = std::make_shared<FolderFileSource>(folder);
        disc.location = folder;
        return disc;
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void writesTheChosenFormat()
    {
        const QString folder = m_dir.filePath(QStringLiteral("disc"));
        QVERIFY(mkddp::writeDisc(mkddp::simpleDisc(3, 5), folder));
        QWidget parent;
        PqSheetSaver saver(&parent);
        QString proposed;
        QString answer = m_dir.filePath(QStringLiteral("sheet.json"));
        saver.setFileChooser([&](QWidget*, const QString&, const QString& path, const QString&) {
            proposed = path;
            return answer;
        });
        QStringList errors;
        saver.setErrorReporter([&](QWidget*, const QString& message) { errors << message; });
        QSignalSpy saved(&saver, &PqSheetSaver::saved);
        saver.save(load(folder));
        QTRY_COMPARE_WITH_TIMEOUT(saved.size(), 1, 20000);
        QCOMPARE(proposed, m_dir.filePath(QStringLiteral("disc PQ Sheet.pdf")));

        QFile image(folder + QStringLiteral("/IMAGE.DAT"));
        QVERIFY(image.open(QIODevice::ReadOnly));
        const QString md5 = QString::fromLatin1(
            QCryptographicHash::hash(image.readAll(), QCryptographicHash::Md5).toHex());
        QFile json(answer);
        QVERIFY(json.open(QIODevice::ReadOnly));
        const QJsonArray files =
            QJsonDocument::fromJson(json.readAll())[QStringLiteral("files")].toArray();
        bool found = false;
        for (const QJsonValue& file : files)
            found =
                found || (file[QStringLiteral("name")].toString() == QLatin1String("IMAGE.DAT") &&
                          file[QStringLiteral("md5")].toString() == md5);
        QVERIFY(found);

        answer = m_dir.filePath(QStringLiteral("sheet.doc"));
        saver.save(load(folder));
        QCOMPARE(errors.size(), 1);
        QVERIFY(!QFile::exists(answer));
    }

    void aCancelWritesNothing()
    {
        const QString folder = m_dir.filePath(QStringLiteral("long"));
        QVERIFY(mkddp::writeDisc(mkddp::longDisc(20), folder));
        QWidget parent;
        PqSheetSaver saver(&parent);
        const QString answer = m_dir.filePath(QStringLiteral("long.pdf"));
        saver.setFileChooser(
            [&](QWidget*, const QString&, const QString&, const QString&) { return answer; });
        QSignalSpy saved(&saver, &PqSheetSaver::saved);
        saver.save(load(folder));
        QVERIFY(saver.isRunning());
        QElapsedTimer timer;
        timer.start();
        saver.cancel();
        QVERIFY(timer.elapsed() < 500);
        QTest::qWait(200);
        QCOMPARE(saved.size(), 0);
        QVERIFY(!QFile::exists(answer));
    }
};

QTEST_MAIN(ReportPqSheetSaverTest)
#include "test_report_pq_sheet_saver.moc"
