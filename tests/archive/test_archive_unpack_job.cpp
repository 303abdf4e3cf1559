// The worker that unpacks an archive's compressed audio, without a window:
// its result arrives on the owner's thread, cancel stops it between blocks,
// and nothing of a cancelled run arrives afterwards. Also run under
// ThreadSanitizer.
#include "archive/ArchiveDdp.h"
#include "archive/ImageUnpackJob.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "tests/archive/RunZip.h"
#include "tools/mkddp/Mkddp.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

class ArchiveUnpackJobTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_zip;

    struct Opened
    {
        std::shared_ptr<ArchiveDdp> archive;
        DDPModel model;
    };

    void open(Opened& opened)
    {
        ArchiveDdp::Options options;
        options.unpackBase = m_dir.filePath(QStringLiteral("unpacked"));
        opened.archive = ArchiveDdp::open(m_zip, options).ddp;
        QVERIFY(opened.archive);
        QStandardItemModel table;
        QCOMPARE(loadDdp(*opened.archive, &table, opened.model).kind, ErrorKind::NoError);
        QVERIFY(opened.archive->bytesToUnpack(opened.model.imageLayout()) > 0);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QString disc = m_dir.filePath(QStringLiteral("disc"));
        QVERIFY(mkddp::writeDisc(mkddp::simpleDisc(2, 240), disc));
        m_zip = m_dir.filePath(QStringLiteral("disc.zip"));
        QVERIFY(zipFolder(disc, m_zip, false, 1));
    }

    void unpacksOnItsThreadAndReportsOnOurs()
    {
        Opened opened;
        open(opened);
        ImageUnpackJob job;
        QSignalSpy progress(&job, &ImageUnpackJob::progress);
        std::shared_ptr<const DiscImage> image;
        Qt::HANDLE thread = nullptr;
        connect(&job, &ImageUnpackJob::unpacked, this,
                [&](std::shared_ptr<const DiscImage> unpacked, const LoadResult& result) {
                    QCOMPARE(result.kind, ErrorKind::NoError);
                    image = std::move(unpacked);
                    thread = QThread::currentThreadId();
                });
        job.start(opened.archive, opened.model.imageLayout());
        QTRY_VERIFY_WITH_TIMEOUT(image, 30000);
        QCOMPARE(thread, QThread::currentThreadId());
        QVERIFY(!job.isRunning());
        QCOMPARE(image->length(), opened.model.imageLayout().length());
        QVERIFY(progress.size() >= 2 && progress.size() <= 101);
        QCOMPARE(progress.last().at(0).toInt(), 100);
        // Unpacked once: the archive now opens its image at once.
        QCOMPARE(opened.archive->bytesToUnpack(opened.model.imageLayout()), 0u);
    }

    void aCancelledRunStopsAtOnceAndSaysNothingMore()
    {
        Opened opened;
        open(opened);
        ImageUnpackJob job;
        QSignalSpy unpacked(&job, &ImageUnpackJob::unpacked);
        QSignalSpy progress(&job, &ImageUnpackJob::progress);
        job.start(opened.archive, opened.model.imageLayout());
        QTest::qWait(20);
        QElapsedTimer timer;
        timer.start();
        job.cancel();
        QVERIFY(timer.elapsed() < 200);
        QVERIFY(!job.isRunning());
        const int progressSeen = progress.size();
        QTest::qWait(200);
        QCOMPARE(unpacked.size(), 0);
        QCOMPARE(progress.size(), progressSeen);

        // A second run after a cancel works, and a start while one runs
        // replaces it: only the last run answers.
        job.start(opened.archive, opened.model.imageLayout());
        job.start(opened.archive, opened.model.imageLayout());
        QTRY_COMPARE_WITH_TIMEOUT(unpacked.size(), 1, 30000);
        QTest::qWait(100);
        QCOMPARE(unpacked.size(), 1);
        QVERIFY(unpacked.first().at(0).value<std::shared_ptr<const DiscImage>>());
    }
};

QTEST_GUILESS_MAIN(ArchiveUnpackJobTest)
#include "test_archive_unpack_job.moc"
