// The background job the unpacking, verification, analysis and PQ sheet
// share: what reaches the owner's thread, what a cancelled or replaced run
// must never send, and an owner that restarts, cancels or deletes the job
// from its own slots. Also run under ThreadSanitizer.
#include "jobs/BackgroundJob.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <chrono>
#include <memory>
#include <thread>

namespace {

using namespace std::chrono_literals;

// Publishes a new percent every few milliseconds until it is cancelled.
void untilCancelled(JobContext& context)
{
    for (std::uint64_t done = 1; !context.isCancelled(); ++done) {
        context.setProgress(done % 100, 100);
        std::this_thread::sleep_for(2ms);
    }
}

} // namespace

class JobsBackgroundTest : public QObject
{
    Q_OBJECT

private slots:
    void progressArrivesOnOurThreadAndFinishedOnce()
    {
        BackgroundJob job;
        QSignalSpy progressed(&job, &BackgroundJob::progressed);
        QSignalSpy finished(&job, &BackgroundJob::finished);
        int result = 0;
        int nice = -100;
        Qt::HANDLE thread = nullptr;
        connect(&job, &BackgroundJob::finished, this, [&] {
            thread = QThread::currentThreadId();
            QVERIFY(!job.isRunning());
            QCOMPARE(result, 42); // written by the run, read after the join
        });
        job.start([&](JobContext& context) {
#ifdef Q_OS_LINUX
            nice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
#endif
            for (std::uint64_t done = 1; done <= 8; ++done) {
                context.setProgress(done, 8);
                std::this_thread::sleep_for(30ms);
            }
            result = 42;
        });
        QVERIFY(job.isRunning());
        QVERIFY(finished.wait(10000));
        QTest::qWait(150);
        QCOMPARE(finished.size(), 1);
        QCOMPARE(thread, QThread::currentThreadId());
        // Only changes, in order, ending where the work ended.
        QVERIFY2(progressed.size() >= 2, qPrintable(QString::number(progressed.size())));
        for (int i = 1; i < progressed.size(); ++i)
            QVERIFY(progressed.at(i).at(0).toInt() > progressed.at(i - 1).at(0).toInt());
        QCOMPARE(progressed.last().at(0).toInt(), 100);
#ifdef Q_OS_LINUX
        QVERIFY2(nice >= 10, qPrintable(QString::number(nice))); // out of the window's way
#else
        Q_UNUSED(nice)
#endif

        // The same job runs again, with its progress counted afresh.
        progressed.clear();
        job.start([](JobContext& context) { context.setProgress(8, 8); });
        QVERIFY(finished.wait(10000));
        QCOMPARE(finished.size(), 2);
        QCOMPARE(progressed.size(), 1);

        // Many polls' worth of progress inside one percent: said once.
        progressed.clear();
        job.start([](JobContext& context) {
            for (std::uint64_t done = 1; done <= 300; ++done) {
                context.setProgress(done, 100000);
                std::this_thread::sleep_for(1ms);
            }
        });
        QVERIFY(finished.wait(10000));
        QCOMPARE(progressed.size(), 1);
        QCOMPARE(progressed.at(0).at(0).toInt(), 0);
    }

    void aCancelledRunStopsAtOnceAndSaysNothingMore()
    {
        BackgroundJob job;
        QSignalSpy progressed(&job, &BackgroundJob::progressed);
        QSignalSpy finished(&job, &BackgroundJob::finished);
        job.start(untilCancelled);
        QVERIFY(progressed.wait(5000)); // mid-run
        QElapsedTimer timer;
        timer.start();
        job.cancel();
        QVERIFY2(timer.elapsed() < 100, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(!job.isRunning());
        const int seen = progressed.size();
        QTest::qWait(200);
        QCOMPARE(progressed.size(), seen);
        QCOMPARE(finished.size(), 0);

        // Work that has already returned, but whose end the timer has not
        // seen yet, is cancelled just the same.
        bool returned = false;
        job.start([&](JobContext& context) {
            context.setProgress(1, 1);
            returned = true;
        });
        std::this_thread::sleep_for(20ms); // no event loop: the timer cannot fire
        job.cancel();
        QVERIFY(returned);
        QTest::qWait(200);
        QCOMPARE(progressed.size(), seen);
        QCOMPARE(finished.size(), 0);
    }

    void aNewStartDropsTheRunningOne()
    {
        BackgroundJob job;
        QSignalSpy finished(&job, &BackgroundJob::finished);
        QString result;
        // The first run writes its result even when cancelled: were its end
        // reported, the owner would read "first".
        job.start([&](JobContext& context) {
            untilCancelled(context);
            result = QStringLiteral("first");
        });
        QTest::qWait(30);
        job.start([&](JobContext&) { result = QStringLiteral("second"); });
        QVERIFY(finished.wait(5000));
        QTest::qWait(150);
        QCOMPARE(finished.size(), 1);
        QCOMPARE(result, QStringLiteral("second"));

        // An owner that starts the next run from its finished() slot gets
        // both, and one that cancels from a progressed() slot gets no end.
        int runs = 0;
        auto chain = connect(&job, &BackgroundJob::finished, this, [&] {
            if (++runs == 1)
                job.start([](JobContext& context) { context.setProgress(1, 1); });
        });
        job.start([](JobContext& context) { context.setProgress(1, 1); });
        QTRY_COMPARE_WITH_TIMEOUT(runs, 2, 5000);
        QTest::qWait(150);
        QCOMPARE(runs, 2);
        disconnect(chain);

        finished.clear();
        connect(&job, &BackgroundJob::progressed, &job, &BackgroundJob::cancel);
        job.start([](JobContext& context) { context.setProgress(1, 1); });
        QTRY_VERIFY_WITH_TIMEOUT(!job.isRunning(), 5000);
        QTest::qWait(150);
        QCOMPARE(finished.size(), 0);
    }

    void destroyingTheJobNeitherHangsNorCrashes()
    {
        // While its work runs.
        auto job = std::make_unique<BackgroundJob>();
        QSignalSpy progressed(job.get(), &BackgroundJob::progressed);
        job->start(untilCancelled);
        QVERIFY(progressed.wait(5000));
        QElapsedTimer timer;
        timer.start();
        job.reset();
        QVERIFY2(timer.elapsed() < 100, qPrintable(QString::number(timer.elapsed())));

        // From a slot of its own, as an owner that goes away with the
        // news may do.
        auto* owned = new BackgroundJob;
        QPointer<BackgroundJob> watch(owned);
        connect(owned, &BackgroundJob::progressed, this, [owned] { delete owned; });
        owned->start([](JobContext& context) { context.setProgress(1, 1); });
        QTRY_VERIFY_WITH_TIMEOUT(!watch, 5000);
    }
};

QTEST_GUILESS_MAIN(JobsBackgroundTest)
#include "test_jobs_background.moc"
