// The export flows as the window runs them, offscreen: the dialogs are
// answered through ExportDialogs and the worker runs on the exporter's thread.
#include "ExportTestSupport.h"

#include "ddp/Settings.h"
#include "export/WavExport.h"

#include <QDir>
#include <QProgressBar>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QWidget>
#include <QtTest>

using namespace exporttest;

namespace {

constexpr qint64 kFiveMinutes = 52920000;

// Records what the flows ask and answers with what the test set.
struct Answers
{
    QString savePath;
    QString filter; // the one chosen in the save dialog, when set
    QString folder;
    QStringList asked; // caption, then the proposed path or start folder, then the filter
    QStringList errors;

    ExportDialogs dialogs()
    {
        ExportDialogs d;
        d.saveFileName = [this](QWidget*, const QString& caption, const QString& proposed,
                                const QString& filters, QString* selected) {
            asked << caption << proposed << filters;
            if (selected && !filter.isEmpty())
                *selected = filter;
            return savePath;
        };
        d.existingDirectory = [this](QWidget*, const QString& caption, const QString& start) {
            asked << caption << start;
            return folder;
        };
        d.showError = [this](QWidget*, const QString& message) { errors << message; };
        return d;
    }
};

// Rows: exactly five minutes, a CD frame less, three seconds.
std::vector<testbytes::Entry> thresholdDisc()
{
    return {{"00", 0, 0, 0, 0},   {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0}, {"02", 1, 5, 2, 0},
            {"03", 1, 10, 1, 74}, {"AA", 1, 10, 5, 0}, {"AA", 0, 10, 5, 0}};
}

bool waitFor(QSignalSpy& spy)
{
    return spy.count() > 0 || spy.wait(30000);
}

} // namespace

class TestExportFlow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_ddp;
    QWidget* m_window = nullptr;
    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("xdg"))));
        QCoreApplication::setOrganizationName(QStringLiteral("Korvane"));
        QCoreApplication::setApplicationName(QStringLiteral("Tivora 1.5"));
        QSettings::setDefaultFormat(QSettings::IniFormat);
        // Lower case on disk, "IMAGE.DAT" in the model: found all the same.
        m_ddp = path(QStringLiteral("ddp"));
        QVERIFY(QDir().mkpath(m_ddp));
        QVERIFY(writePatternImage(m_ddp + QStringLiteral("/image.dat"), at(10, 5, 0)));
        m_window = new QWidget;
        m_window->resize(466, 702);
        m_window->show();
    }
    void cleanupTestCase() { delete m_window; }
    void init() { QFile::remove(settingsFilePath()); }

    // The extension chosen decides the format; every format takes the
    // exporter's worker thread and progress bar. The cue sheet's flow
    // writes the sheet and the image up to the lead-out beside it.
    void otherFormatsAndTheCueSheet()
    {
        Answers answers;
        answers.savePath = path(QStringLiteral("formats/three.flac"));
        QVERIFY(QDir().mkpath(path(QStringLiteral("formats"))));
        WavExport exporter(m_window, answers.dialogs());
        QSignalSpy finished(&exporter, &WavExport::exportFinished);
        const std::shared_ptr<DDPModel> model = makeModel(testbytes::simpleEntries(2, {4, 5, 6}));
        exporter.exportTrack(2, model, m_ddp);
        QVERIFY(m_window->findChild<QProgressBar*>()); // encoding always shows one
        QVERIFY(waitFor(finished));
        QCOMPARE(fileBytes(answers.savePath).left(4), QByteArray("fLaC"));

        answers.folder = path(QStringLiteral("formats/all"));
        exporter.exportAllTracks(m_ddp, ExportFormat::Mp3);
        QVERIFY(finished.wait(60000));
        QCOMPARE(answers.asked.mid(3, 1),
                 QStringList{QStringLiteral("Save DDP as separated MP3 files")});
        QCOMPARE(QDir(answers.folder).entryList(QDir::Files, QDir::Name),
                 (QStringList{QStringLiteral("Track 1.mp3"), QStringLiteral("Track 2.mp3"),
                              QStringLiteral("Track 3.mp3")}));

        answers.savePath = path(QStringLiteral("formats/reference"));
        exporter.exportCueSheet(m_ddp);
        QVERIFY(finished.wait(30000));
        QVERIFY(QFileInfo(answers.savePath + QStringLiteral(".cue")).isFile());
        QCOMPARE(fileBytes(answers.savePath + QStringLiteral(".bin")),
                 patternBytes(0, at(0, 17, 0)));
        // The dialog's second filter writes the image as WAV instead.
        answers.savePath = path(QStringLiteral("formats/wave"));
        answers.filter = answers.asked.last().section(QStringLiteral(";;"), 1);
        QVERIFY(answers.filter.contains(QLatin1String("WAV")));
        exporter.exportCueSheet(m_ddp);
        QVERIFY(finished.wait(30000));
        const QByteArray wav = fileBytes(answers.savePath + QStringLiteral(".wav"));
        QCOMPARE(wav.left(4), QByteArray("RIFF"));
        QCOMPARE(wav.mid(44), patternBytes(0, at(0, 17, 0)));
        QVERIFY(fileBytes(answers.savePath + QStringLiteral(".cue"))
                    .contains("FILE \"wave.wav\" WAVE"));
        QVERIFY(!QFileInfo::exists(answers.savePath + QStringLiteral(".bin")));
        QVERIFY(answers.errors.isEmpty());
    }

    void oneTrack()
    {
        const QString start = path(QStringLiteral("start"));
        writeSetting(kDefaultExportDirKey, start);
        const CdTextRecord record = titles({"One", "Two"});
        Answers answers;
        answers.savePath = path(QStringLiteral("chosen/mine.wav"));
        QVERIFY(QDir().mkpath(path(QStringLiteral("chosen"))));
        WavExport exporter(m_window, answers.dialogs());
        QSignalSpy finished(&exporter, &WavExport::exportFinished);
        exporter.exportTrack(1, makeModel(testbytes::simpleEntries(2, {4, 5, 6}), &record), m_ddp);

        QCOMPARE(
            answers.asked,
            (QStringList{QStringLiteral("Save Track"), start + QStringLiteral("/2 - Two.wav"),
                         QStringLiteral("WAV (*.wav);;FLAC (*.flac);;MP3, 320 kb/s (*.mp3)")}));
        QVERIFY(!m_window->findChild<QProgressBar*>()); // short tracks need no bar
        QVERIFY(waitFor(finished));
        QString why;
        QVERIFY2(isWavOf(answers.savePath, patternBytes(at(0, 6, 0), at(0, 5, 0)), &why),
                 qPrintable(why));
        QCOMPARE(readSetting(kDefaultExportDirKey).toString(), path(QStringLiteral("chosen")));

        // Cancelled dialogs write nothing, start nothing and report nothing.
        QFile::remove(settingsFilePath());
        answers = Answers();
        exporter.exportTrack(0, m_ddp);
        exporter.exportAllTracks(m_ddp);
        QCOMPARE(answers.asked.size(), 5);
        QVERIFY(!exporter.isRunning());
        QVERIFY(answers.errors.isEmpty());
        QVERIFY(!QFileInfo::exists(settingsFilePath()));
    }

    void progressBarAndThreadReuse()
    {
        // A bar from exactly five minutes on, none a CD frame below. A second
        // export while one runs is refused; afterwards the same thread runs it.
        const auto model = makeModel(thresholdDisc());
        Answers answers;
        answers.savePath = path(QStringLiteral("five.wav"));
        WavExport exporter(m_window, answers.dialogs());
        QSignalSpy finished(&exporter, &WavExport::exportFinished);
        exporter.exportTrack(0, model, m_ddp);

        QProgressBar* progress = m_window->findChild<QProgressBar*>();
        QVERIFY(progress && !progress->isHidden());
        QCOMPARE(progress->maximum(), 20000);
        QVERIFY((progress->geometry().center() - m_window->rect().center()).manhattanLength() <= 1);
        QList<int> values;
        connect(progress, &QProgressBar::valueChanged, [&](int v) { values << v; });
        exporter.exportTrack(1, model, m_ddp);
        QCOMPARE(answers.errors.size(), 1);
        QVERIFY(waitFor(finished));
        QCOMPARE(QFileInfo(answers.savePath).size(), kFiveMinutes + 44);
        QVERIFY(values.size() > 2 && values.first() < 10000);
        QVERIFY(values.last() > 19000 && values.last() <= 20000);
        QTRY_VERIFY(!m_window->findChild<QProgressBar*>()); // gone with the thread

        answers.savePath = path(QStringLiteral("shorter.wav"));
        exporter.exportTrack(1, model, m_ddp);
        QVERIFY(exporter.isRunning());
        QVERIFY(!m_window->findChild<QProgressBar*>());
        QVERIFY(finished.wait(30000));
        QCOMPARE(QFileInfo(answers.savePath).size(), kFiveMinutes - 2352 + 44);
        QCOMPARE(answers.errors.size(), 1);
    }

    void errorsAreShownOnce_data()
    {
        QTest::addColumn<QString>("ddp");
        QTest::addColumn<QString>("savePath");
        QTest::addColumn<int>("row");
        const QString regular = path(QStringLiteral("regular"));
        QVERIFY(writeFile(regular, {}));
        QTest::newRow("image missing")
            << path(QStringLiteral("nowhere")) << path(QStringLiteral("e1.wav")) << 0;
        QTest::newRow("folder is a file") << m_ddp << regular + QStringLiteral("/e2.wav") << 0;
        QTest::newRow("row without a track") << m_ddp << path(QStringLiteral("e3.wav")) << 7;
    }
    void errorsAreShownOnce()
    {
        QFETCH(QString, ddp);
        QFETCH(QString, savePath);
        QFETCH(int, row);
        Answers answers;
        answers.savePath = savePath;
        WavExport exporter(m_window, answers.dialogs());
        QSignalSpy failed(&exporter, &WavExport::exportFailed);
        QSignalSpy finished(&exporter, &WavExport::exportFinished);
        exporter.exportTrack(row, makeModel(testbytes::simpleEntries(2, {4, 5})), ddp);
        QVERIFY(waitFor(failed));
        QTest::qWait(20);
        QCOMPARE(answers.errors.size(), 1);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(finished.count(), 0);
        QVERIFY(!QFileInfo::exists(savePath));
        QVERIFY(!exporter.isRunning());
    }

    void allTracksDuringNewLoad()
    {
        // The window replaces its model while the worker still reads the old
        // one: the worker keeps it alive and writes the old disc's tracks.
        const QString start = path(QStringLiteral("exports"));
        writeSetting(kDefaultExportDirKey, start);
        const CdTextRecord record = titles({"A/B", ""});
        auto model = makeModel(thresholdDisc(), &record);
        const std::weak_ptr<DDPModel> watch = model;
        Answers answers;
        answers.folder = path(QStringLiteral("exports/new disc")); // made by the flow
        WavExport exporter(m_window, answers.dialogs());
        QSignalSpy finished(&exporter, &WavExport::exportFinished);
        exporter.exportAllTracks(model, m_ddp);
        model.reset();
        exporter.setModel(makeModel(testbytes::simpleEntries(2, {1})));
        QVERIFY(!watch.expired());

        QCOMPARE(answers.asked,
                 (QStringList{QStringLiteral("Save DDP as separated WAV files"), start}));
        QVERIFY(m_window->findChild<QProgressBar*>()); // always, however short the tracks
        QVERIFY(waitFor(finished));
        QCOMPARE(QDir(answers.folder).entryList(QDir::Files, QDir::Name),
                 (QStringList{QStringLiteral("1 - A_B.wav"), QStringLiteral("Track 2.wav"),
                              QStringLiteral("Track 3.wav")}));
        QString why;
        QVERIFY2(isWavOf(answers.folder + QStringLiteral("/Track 3.wav"),
                         patternBytes(at(10, 1, 74), at(0, 3, 1)), &why),
                 qPrintable(why));
        QCOMPARE(readSetting(kDefaultExportDirKey).toString(), start);
        QTRY_VERIFY(watch.expired()); // let go with the worker
    }

    void closingDuringExport()
    {
        // Closing the window mid-export stops the worker and leaves a whole
        // file or none, never a part.
        Answers answers;
        answers.savePath = path(QStringLiteral("closing.wav"));
        auto* exporter = new WavExport(m_window, answers.dialogs());
        exporter->exportTrack(0, makeModel(thresholdDisc()), m_ddp);
        QTest::qWait(5);
        delete exporter;
        const QFileInfo file(answers.savePath);
        QVERIFY(!file.exists() || file.size() == kFiveMinutes + 44);
        QTRY_VERIFY(!m_window->findChild<QProgressBar*>());
    }
};

QTEST_MAIN(TestExportFlow)
#include "test_export_flow.moc"
