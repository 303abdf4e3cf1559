// `tivora-ddp analyze` on generated discs, and against ffmpeg's EBU R128
// meter on the demo disc's tracks exported as WAV.
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

QString tool(const char* name)
{
    const QString dir = QString::fromLocal8Bit(qgetenv("TIVORA_BINARY_DIR"));
    return dir + QStringLiteral("/tools/tivora-ddp/") + QLatin1String(name);
}

struct Run
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Run run(const QString& program, const QStringList& args, int timeoutMs = 120000)
{
    QProcess process;
    process.start(program, args);
    Run r;
    if (!process.waitForFinished(timeoutMs))
        return r;
    r.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    r.out = process.readAllStandardOutput();
    r.err = process.readAllStandardError();
    return r;
}

QJsonObject analyzeJson(const QString& disc)
{
    const Run r =
        run(tool("tivora-ddp"), {QStringLiteral("analyze"), QStringLiteral("--json"), disc});
    if (r.status != 0)
        qWarning("%s", r.err.constData());
    return QJsonDocument::fromJson(r.out).object();
}

// ffmpeg's summary figures with full precision, through its metadata.
struct Ffmpeg
{
    double integrated = 0;
    double range = 0;
    double truePeak = 0; // dBTP, the higher channel
};

Ffmpeg ffmpegMeter(const QString& wav)
{
    const Run r = run(QStringLiteral("ffmpeg"),
                      {QStringLiteral("-hide_banner"), QStringLiteral("-nostats"),
                       QStringLiteral("-i"), wav, QStringLiteral("-af"),
                       QStringLiteral("ebur128=metadata=1:peak=true+sample,ametadata=print"),
                       QStringLiteral("-f"), QStringLiteral("null"), QStringLiteral("-")});
    Ffmpeg f;
    auto last = [&r](const QString& key) {
        const QRegularExpression re(QStringLiteral("lavfi\\.r128\\.%1=(-?[0-9.]+)").arg(key));
        double value = NAN;
        auto it = re.globalMatch(QString::fromUtf8(r.err));
        while (it.hasNext())
            value = it.next().captured(1).toDouble();
        return value;
    };
    f.integrated = last(QStringLiteral("I"));
    f.range = last(QStringLiteral("LRA"));
    f.truePeak = 20.0 * std::log10(std::max(last(QStringLiteral("true_peaks_ch0")),
                                            last(QStringLiteral("true_peaks_ch1"))));
    return f;
}

} // namespace

class TestAnalysisCli : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("TIVORA_BINARY_DIR"), "run through ctest");
        QVERIFY(m_dir.isValid());
    }

    // A line per track and one for the disc; silence reads "-inf"; a true
    // peak above -1 dBTP is marked; the JSON twin carries the same numbers.
    void tableAndJson()
    {
        const QString disc = m_dir.filePath(QStringLiteral("signals"));
        QVERIFY(mkddp::writeDisc(mkddp::signalsDisc(), disc));
        const Run text = run(tool("tivora-ddp"), {QStringLiteral("analyze"), disc});
        QCOMPARE(text.status, 0);
        const QStringList lines = QString::fromUtf8(text.out).split(QLatin1Char('\n'));
        QVERIFY(lines.at(0).startsWith(QStringLiteral("Track")));
        QVERIFY(lines.at(1).startsWith(QStringLiteral("01")));
        QVERIFY2(lines.at(1).contains(QStringLiteral("-23.0 LUFS")), qPrintable(lines.at(1)));
        QVERIFY(lines.at(2).contains(QStringLiteral("-33.0 LUFS")));
        QVERIFY(lines.at(3).contains(QStringLiteral("dBTP !")));
        QVERIFY(lines.at(4).startsWith(QStringLiteral("04")));
        QVERIFY(lines.at(4).contains(QStringLiteral("-inf")));
        QVERIFY(lines.at(5).trimmed().endsWith(QStringLiteral(" 17")));
        QVERIFY(lines.at(6).startsWith(QStringLiteral("Disc")));

        const QJsonObject json = analyzeJson(disc);
        const QJsonArray tracks = json.value(QStringLiteral("tracks")).toArray();
        QCOMPARE(tracks.size(), 5);
        QCOMPARE(tracks.at(0).toObject().value(QStringLiteral("track")).toString(),
                 QStringLiteral("01"));
        QVERIFY(
            std::abs(tracks.at(1).toObject().value(QStringLiteral("integratedLufs")).toDouble() +
                     33.0) <= 0.1);
        QVERIFY(tracks.at(3).toObject().value(QStringLiteral("integratedLufs")).isNull());
        QCOMPARE(tracks.at(4).toObject().value(QStringLiteral("clippedRuns")).toInt(), 17);
        QCOMPARE(json.value(QStringLiteral("disc"))
                     .toObject()
                     .value(QStringLiteral("clippedRuns"))
                     .toInt(),
                 17);

        QCOMPARE(run(tool("tivora-ddp"), {QStringLiteral("analyze")}).status, 2);
        QCOMPARE(run(tool("tivora-ddp"),
                     {QStringLiteral("analyze"), m_dir.filePath(QStringLiteral("none"))})
                     .status,
                 1);
    }

    // An image a second short of its PQ: the last track is measured as far
    // as it goes and said to be cut, not padded with silence.
    void imageCutShort()
    {
        mkddp::DiscSpec spec = mkddp::signalsDisc();
        spec.faults.append(mkddp::Fault::ImageCutShort);
        const QString disc = m_dir.filePath(QStringLiteral("short"));
        QVERIFY(mkddp::writeDisc(spec, disc));
        const QJsonObject json = analyzeJson(disc);
        const QJsonArray tracks = json.value(QStringLiteral("tracks")).toArray();
        QCOMPARE(tracks.size(), 5);
        QVERIFY(tracks.at(3).toObject().value(QStringLiteral("complete")).toBool());
        const QJsonObject last = tracks.at(4).toObject();
        QVERIFY(!last.value(QStringLiteral("complete")).toBool());
        QCOMPARE(last.value(QStringLiteral("seconds")).toDouble(), 19.0);
        QVERIFY(!json.value(QStringLiteral("disc"))
                     .toObject()
                     .value(QStringLiteral("complete"))
                     .toBool());
        const Run text = run(tool("tivora-ddp"), {QStringLiteral("analyze"), disc});
        QCOMPARE(text.status, 0);
        QVERIFY(text.out.contains("Note: the audio image ends before the last track does."));
    }

    // A descriptor that gives the last track no end is refused with one line
    // naming the track, as the export refuses that track, rather than
    // measured with the track's audio counted as a pause of the disc. The PQ
    // sheet goes without loudness and says why.
    void aTrackWithoutAnEndIsRefused()
    {
        mkddp::DiscSpec spec = mkddp::signalsDisc(4);
        spec.faults.append(mkddp::Fault::LeadOutNotANumber);
        const QString disc = m_dir.filePath(QStringLiteral("no-end"));
        QVERIFY(mkddp::writeDisc(spec, disc));
        const QByteArray refusal = "The end of track 05 is not in the PQ descriptor.";
        const QString analyze = QStringLiteral("analyze");
        for (const QStringList& args :
             {QStringList{analyze, disc}, QStringList{analyze, QStringLiteral("--json"), disc}}) {
            const Run r = run(tool("tivora-ddp"), args);
            QCOMPARE(r.status, 1);
            QCOMPARE(r.out, QByteArray());
            QCOMPARE(r.err, "tivora-ddp analyze: " + refusal + '\n');
        }
        const Run sheet =
            run(tool("tivora-ddp"), {QStringLiteral("pqsheet"), disc, QStringLiteral("-")});
        QCOMPARE(sheet.status, 0);
        QVERIFY2(
            sheet.err.contains("tivora-ddp pqsheet: " + refusal + " The sheet has no loudness.\n"),
            sheet.err.constData());
        QVERIFY(sheet.out.contains("Track"));
        QVERIFY(!sheet.out.contains("LUFS"));
    }

    // The demo disc's tracks exported as WAV and measured by ffmpeg's meter
    // read the same, within what two conforming meters may differ by.
    void agreesWithFfmpeg()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
            QSKIP("ffmpeg is not installed (tools/install-deps.sh installs it)");
        const QString disc = m_dir.filePath(QStringLiteral("demo"));
        QVERIFY(mkddp::writeDisc(mkddp::demoDisc(), disc));
        const QString wavs = m_dir.filePath(QStringLiteral("wav"));
        QCOMPARE(run(tool("tivora-ddp"), {QStringLiteral("export"), disc, wavs}).status, 0);
        const QStringList files =
            QDir(wavs).entryList({QStringLiteral("*.wav")}, QDir::Files, QDir::Name);
        const QJsonArray tracks = analyzeJson(disc).value(QStringLiteral("tracks")).toArray();
        QCOMPARE(files.size(), 4);
        QCOMPARE(tracks.size(), files.size());
        for (int i = 0; i < files.size(); ++i) {
            const QJsonObject ours = tracks.at(i).toObject();
            const Ffmpeg theirs = ffmpegMeter(QDir(wavs).filePath(files.at(i)));
            const double integrated = ours.value(QStringLiteral("integratedLufs")).toDouble();
            const double range = ours.value(QStringLiteral("rangeLu")).toDouble();
            const double truePeak = ours.value(QStringLiteral("truePeakDbtp")).toDouble();
            const QString what = QStringLiteral("%1: I %2/%3, LRA %4/%5, TP %6/%7")
                                     .arg(files.at(i))
                                     .arg(integrated)
                                     .arg(theirs.integrated)
                                     .arg(range)
                                     .arg(theirs.range)
                                     .arg(truePeak)
                                     .arg(theirs.truePeak);
            qInfo("%s", qPrintable(what));
            QVERIFY2(std::abs(integrated - theirs.integrated) <= 0.1, qPrintable(what));
            QVERIFY2(std::abs(range - theirs.range) <= 0.2, qPrintable(what));
            QVERIFY2(std::abs(truePeak - theirs.truePeak) <= 0.3, qPrintable(what));
        }
    }
};

QTEST_GUILESS_MAIN(TestAnalysisCli)
#include "test_analysis_cli.moc"
