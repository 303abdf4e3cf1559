// The PQ sheet: its frame times are the PQ descriptor's, entry by entry, and
// each of its forms carries them, read back by the tools a plant or a
// script would use.
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "report/DdpFileDigests.h"
#include "report/PqSheet.h"
#include "report/PqSheetRender.h"
#include "tests/archive/RunZip.h"
#include "tests/support/TestFolders.h"
#include "tools/mkddp/Mkddp.h"
#include "verify/Verification.h"

#include <QCryptographicHash>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

QString frameText(int frame)
{
    return QStringLiteral("%1:%2:%3")
        .arg(frame / (60 * 75), 2, 10, QLatin1Char('0'))
        .arg(frame / 75 % 60, 2, 10, QLatin1Char('0'))
        .arg(frame % 75, 2, 10, QLatin1Char('0'));
}

// Runs a poppler tool; its standard output, or nothing when it failed.
QByteArray runTool(const QString& tool, const QStringList& args)
{
    QProcess process;
    process.start(tool, args);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput();
}

} // namespace

class ReportPqSheetTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    mkddp::DiscSpec m_spec;
    DDPModel m_model;

    // 99 tracks with odd lengths, pauses of every size, extra indexes, CD-Text
    // with long titles and text that means something in HTML.
    static mkddp::DiscSpec bigDisc()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(99, 4);
        spec.cdText = true;
        spec.album.title = QStringLiteral("Harbour <Sessions> & \"Friends\"");
        spec.album.performer = QStringLiteral("Mara Lindqvist");
        spec.upcEan = "4006381333931";
        for (int i = 0; i < spec.tracks.size(); ++i) {
            mkddp::TrackSpec& track = spec.tracks[i];
            track.frames = mkddp::cdFrames(4) + i * 7 % 75 + i;
            track.pauseFrames = i == 0 ? mkddp::cdFrames(2) : (i % 3 == 0 ? 37 + i : 0);
            if (i % 10 == 5)
                track.indexOffsets = {41, 150};
            track.text.title = i % 17 == 3 ? QStringLiteral("A Very Long Title That Runs On "
                                                            "And On Past Any Column Width %1")
                                                 .arg(i + 1)
                                           : QStringLiteral("Song %1").arg(i + 1);
            track.text.performer = QStringLiteral("Mara Lindqvist");
            track.text.composer = QStringLiteral("J. Öberg");
        }
        return spec;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_spec = bigDisc();
        const QString disc = m_dir.filePath(QStringLiteral("disc"));
        QVERIFY(mkddp::writeDisc(m_spec, disc));
        QStandardItemModel table;
        QCOMPARE(loadDdp(disc, &table, m_model).kind, ErrorKind::NoError);
    }

    // Every row's start and every track's pause are the generator's own.
    void framesAreThePqDescriptors()
    {
        const PqSheet sheet = makePqSheet(m_model, {});
        const QVector<mkddp::LayoutEntry> layout = mkddp::pqLayout(m_spec);
        // Without the lead-in entry and with one row for the two lead-outs.
        QCOMPARE(int(sheet.rows.size()), layout.size() - 2);
        for (int i = 0; i + 1 < int(sheet.rows.size()); ++i) {
            const mkddp::LayoutEntry& entry = layout.at(i + 1);
            const PqSheetRow& row = sheet.rows[std::size_t(i)];
            QCOMPARE(row.track, entry.trackNumber);
            QCOMPARE(row.index, entry.index);
            QCOMPARE(row.startText(), frameText(entry.frame));
            QCOMPARE(row.durationText(), frameText(layout.at(i + 2).frame - entry.frame));
        }
        QVERIFY(sheet.rows.back().leadOut);
        QCOMPARE(sheet.rows.back().startText(), frameText(layout.back().frame));
        QCOMPARE(sheet.totalTime, frameText(layout.back().frame));
        QCOMPARE(sheet.trackCount, 99);

        for (const PqSheetRow& row : sheet.rows) {
            if (row.leadOut || row.index != 1)
                continue;
            const mkddp::TrackSpec& track = m_spec.tracks.at(row.track - 1);
            QCOMPARE(row.pauseText(), frameText(track.pauseFrames));
            QCOMPARE(row.isrc, QString::fromLatin1(track.isrc));
            QCOMPARE(row.cdText.value(0), track.text.title);
        }
        QCOMPARE(sheet.upcEan, QStringLiteral("4006381333931"));
        QCOMPARE(sheet.ddpLevel, QStringLiteral("DDP 2.00"));
    }

    // Every ISRC and start in the PDF's text, fonts embedded, the header on
    // every page; the first and last pages are kept as pictures.
    void pdfCarriesEveryIsrcAndStart()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("poppler-utils is not installed");
        const PqSheet sheet = makePqSheet(m_model, {});
        const QString pdf = m_dir.filePath(QStringLiteral("sheet.pdf"));
        QString error;
        QVERIFY2(writePqSheetPdf(sheet, pdf, QPageSize(QPageSize::A4), &error), qPrintable(error));
        const QString text = QString::fromUtf8(runTool(QStringLiteral("pdftotext"), {pdf, "-"}));
        QVERIFY(!text.isEmpty());
        for (const PqSheetRow& row : sheet.rows) {
            QVERIFY2(text.contains(row.startText()), qPrintable(row.startText()));
            if (!row.isrc.isEmpty())
                QVERIFY2(text.contains(row.isrc), qPrintable(row.isrc));
        }
        QVERIFY(text.contains(QStringLiteral("Harbour <Sessions> & \"Friends\"")));

        const QString info = QString::fromUtf8(runTool(QStringLiteral("pdfinfo"), {pdf}));
        const int pages =
            QRegularExpression(QStringLiteral("Pages:\\s+(\\d+)")).match(info).captured(1).toInt();
        QVERIFY2(pages >= 3, qPrintable(info));
        const QString page = QString::number(pages - 1);
        const QString last = QString::fromUtf8(
            runTool(QStringLiteral("pdftotext"), {"-f", page, "-l", page, pdf, "-"}));
        QVERIFY2(last.contains(QStringLiteral("ISRC")), "the table's header is not repeated");

        // Every word inside the 12 mm margins, on every page.
        const QString boxes =
            QString::fromUtf8(runTool(QStringLiteral("pdftotext"), {"-bbox", pdf, "-"}));
        const double pageWidth = QRegularExpression(QStringLiteral("<page width=\"([0-9.]+)\""))
                                     .match(boxes)
                                     .captured(1)
                                     .toDouble();
        QVERIFY(pageWidth > 800); // A4 landscape, in points
        const double margin = 12 / 25.4 * 72;
        QRegularExpressionMatchIterator words =
            QRegularExpression(QStringLiteral("xMin=\"([0-9.]+)\" yMin=\"[0-9.]+\" "
                                              "xMax=\"([0-9.]+)\""))
                .globalMatch(boxes);
        int checked = 0;
        while (words.hasNext()) {
            const QRegularExpressionMatch word = words.next();
            QVERIFY2(word.captured(1).toDouble() >= margin - 1 &&
                         word.captured(2).toDouble() <= pageWidth - margin + 1,
                     qPrintable(word.captured(0)));
            ++checked;
        }
        QVERIFY(checked > 1000);

        const QString fonts = QString::fromUtf8(runTool(QStringLiteral("pdffonts"), {pdf}));
        const QStringList lines = fonts.split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(2);
        QVERIFY(!lines.isEmpty());
        for (const QString& line : lines)
            QVERIFY2(line.contains(QStringLiteral(" yes ")), qPrintable(line)); // emb column

        const QString shots = screenshotFolder();
        for (int n : {1, pages})
            runTool(QStringLiteral("pdftoppm"),
                    {"-png", "-r", "60", "-f", QString::number(n), "-l", QString::number(n),
                     "-singlefile", pdf,
                     shots + QStringLiteral("/pq-sheet-page-%1").arg(n == 1 ? "first" : "last")});
    }

    // Text for e-mail: every column starts at the same place on every line;
    // HTML: the disc's text escaped, nothing fetched from elsewhere; JSON:
    // every row with its frames, silence as null rather than -inf.
    void textHtmlAndJsonCarryTheSameRows()
    {
        DiscLoudness loudness;
        for (int i = 0; i < 99; ++i) {
            LoudnessResult track;
            track.integrated = i == 4 ? LoudnessResult::kMinusInfinity : -9.0 - i * 0.1;
            track.truePeak = i == 7 ? -0.3 : -1.5;
            loudness.tracks.push_back(track);
        }
        loudness.disc.integrated = -10.2;
        loudness.disc.range = 5.1;
        loudness.disc.truePeak = -0.3;
        PqSheetInputs inputs;
        inputs.loudness = &loudness;
        inputs.files = {{QStringLiteral("IMAGE.DAT"), 123, QStringLiteral("0123456789abcdef")}};
        inputs.date = QDate(2026, 11, 23);
        const PqSheet sheet = makePqSheet(m_model, inputs);

        const QStringList lines = QString::fromUtf8(pqSheetText(sheet)).split(QLatin1Char('\n'));
        const int header =
            lines.indexOf(QRegularExpression(QStringLiteral("^Track +Index +Start.*")));
        QVERIFY(header > 0);
        const int isrcColumn = lines.at(header).indexOf(QStringLiteral("ISRC"));
        const int peakColumn = lines.at(header).indexOf(QStringLiteral("True Peak"));
        QVERIFY(peakColumn > isrcColumn);
        for (int i = header + 1; i < header + 1 + int(sheet.rows.size()) - 1; ++i) {
            const QString& line = lines.at(i);
            if (line.mid(isrcColumn, 12).trimmed().isEmpty())
                continue; // a pause row
            QVERIFY2(line.mid(isrcColumn, 12).startsWith(QStringLiteral("DEA7")), qPrintable(line));
            QVERIFY2(line.mid(peakColumn).contains(QStringLiteral("dBTP")), qPrintable(line));
        }
        QVERIFY(lines.contains(QStringLiteral("Date:       2026-11-23")));

        const QString html = QString::fromUtf8(pqSheetHtml(sheet));
        QVERIFY(
            html.contains(QStringLiteral("Harbour &lt;Sessions&gt; &amp; &quot;Friends&quot;")));
        QVERIFY(!html.contains(QStringLiteral("<Sessions>")));
        QVERIFY(!html.contains(QStringLiteral("src=")) && !html.contains(QStringLiteral("http")));
        QCOMPARE(html.count(QStringLiteral("class=\"over\"")), 1); // track 8's -0.3 dBTP

        QJsonParseError parseError;
        const QJsonDocument json = QJsonDocument::fromJson(pqSheetJson(sheet), &parseError);
        QCOMPARE(parseError.error, QJsonParseError::NoError);
        const QJsonArray rows = json.object().value(QStringLiteral("rows")).toArray();
        QCOMPARE(rows.size(), int(sheet.rows.size()));
        const QVector<mkddp::LayoutEntry> layout = mkddp::pqLayout(m_spec);
        for (int i = 0; i < rows.size(); ++i)
            QCOMPARE(rows.at(i)[QStringLiteral("startFrames")].toInt(), layout.at(i + 1).frame);
        int silent = 0;
        for (const QJsonValue& row : rows)
            if (row[QStringLiteral("loudness")].toString() == QLatin1String("-inf LUFS") ||
                row[QStringLiteral("loudness")].toString() == QLatin1String("-inf"))
                silent += row[QStringLiteral("loudnessLufs")].isNull() ? 1 : 100;
        QCOMPARE(silent, 1);
        QCOMPARE(json[QStringLiteral("files")][0][QStringLiteral("md5")].toString(),
                 QStringLiteral("0123456789abcdef"));
    }

    // The files are the DDP's own as verification knows them: named as the
    // folder names them, the data session of an Enhanced CD included, each
    // with its size and md5sum's digest.
    void filesAreTheDdpsOwnAsTheFolderNamesThem()
    {
        mkddp::DiscSpec spec = mkddp::simpleDisc(2, 4);
        spec.lowerCaseOnDisk = true;
        spec.dataStream = true;
        const QString disc = m_dir.filePath(QStringLiteral("enhanced"));
        QVERIFY(mkddp::writeDisc(spec, disc));
        DDPModel model;
        QStandardItemModel table;
        QCOMPARE(loadDdp(disc, &table, model).kind, ErrorKind::NoError);

        const std::vector<PqSheetFile> files =
            digestDdpFiles(FolderFileSource(disc), model, openDiscImage(disc, model.imageLayout()));
        QStringList names;
        for (const PqSheetFile& file : files) {
            names << file.name;
            QFile read(disc + QLatin1Char('/') + file.name);
            QVERIFY2(read.open(QIODevice::ReadOnly), qPrintable(file.name));
            QCOMPARE(file.size, std::uint64_t(read.size()));
            QCOMPARE(
                file.md5,
                QString::fromLatin1(
                    QCryptographicHash::hash(read.readAll(), QCryptographicHash::Md5).toHex()));
        }
        QCOMPARE(names, (QStringList{"ddpid", "ddpms", "pqdescr", "image.dat", "data.dat"}));
    }

    // The disc check's findings reach every form: the text and HTML list
    // each one (escaped in HTML), the JSON gives its id, severity, track and
    // text as the verifier's own JSON does.
    void findingsInEveryForm()
    {
        VerificationReport report;
        report.findings = {
            {"isrc-invalid", Finding::Error, 3,
             QStringLiteral("Track 3's ISRC <XX> is not valid.")},
            {"upc-missing", Finding::Warning, 0, QStringLiteral("The disc has no UPC/EAN.")},
        };
        PqSheetInputs inputs;
        inputs.verification = &report;
        const PqSheet sheet = makePqSheet(m_model, inputs);
        QCOMPARE(sheet.discCheck, QStringLiteral("1 error, 1 warning"));

        const QString text = QString::fromUtf8(pqSheetText(sheet));
        QVERIFY(text.contains(QStringLiteral("error    track 3   isrc-invalid  Track 3's ISRC")));
        QVERIFY(text.contains(QStringLiteral("warning  disc      upc-missing  The disc has")));
        const QString html = QString::fromUtf8(pqSheetHtml(sheet));
        QVERIFY(
            html.contains(QStringLiteral("<td class=\"error\">error</td><td>3</td>"
                                         "<td>isrc-invalid</td><td>Track 3's ISRC &lt;XX&gt;")));
        QVERIFY(html.contains(QStringLiteral("<td>disc</td><td>upc-missing</td>")));

        const QJsonArray findings = QJsonDocument::fromJson(pqSheetJson(sheet))
                                        .object()
                                        .value(QStringLiteral("findings"))
                                        .toArray();
        QCOMPARE(findings.size(), 2);
        QCOMPARE(findings.at(0).toObject(),
                 (QJsonObject{{QStringLiteral("id"), QStringLiteral("isrc-invalid")},
                              {QStringLiteral("severity"), QStringLiteral("error")},
                              {QStringLiteral("track"), 3},
                              {QStringLiteral("text"), report.findings[0].text}}));
        QCOMPARE(findings.at(1)[QStringLiteral("severity")].toString(), QStringLiteral("warning"));
        QCOMPARE(findings.at(1)[QStringLiteral("track")].toInt(-1), 0);
    }

    // The command line, from a folder and from a stored ZIP: the sheet's
    // digests are md5sum's, its verdict the checksum file's, and a sheet it
    // cannot name a format for is refused before anything is read.
    void commandLineWritesTheSheet()
    {
        const QString tivoraDdp = qEnvironmentVariable("TIVORA_BINARY_DIR") +
                                  QStringLiteral("/tools/tivora-ddp/tivora-ddp");
        if (!QFileInfo(tivoraDdp).isExecutable())
            QSKIP("tivora-ddp is not built");
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 6);
        spec.checksums = mkddp::ChecksumStyle::Md5;
        const QString disc = m_dir.filePath(QStringLiteral("small"));
        QVERIFY(mkddp::writeDisc(spec, disc));
        const QString zip = m_dir.filePath(QStringLiteral("small.zip"));
        QVERIFY(zipFolder(disc, zip, true));

        const QByteArray sums =
            runTool(QStringLiteral("md5sum"), {disc + "/IMAGE.DAT", disc + "/PQDESCR"});
        for (const QString& path : {disc, zip}) {
            const QString out = m_dir.filePath(QStringLiteral("sheet.json"));
            QCOMPARE(QProcess::execute(tivoraDdp, {QStringLiteral("pqsheet"), path, out}), 0);
            QFile file(out);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QJsonObject sheet = QJsonDocument::fromJson(file.readAll()).object();
            QVERIFY(sheet[QStringLiteral("checksums")].toString().startsWith(
                QStringLiteral("Checksums OK")));
            // The generated disc has no barcode: a note, not a warning.
            QCOMPARE(sheet[QStringLiteral("discCheck")].toString(),
                     QStringLiteral("No errors or warnings"));
            int digests = 0;
            for (const QJsonValue& entry : sheet[QStringLiteral("files")].toArray()) {
                const QByteArray md5 = entry[QStringLiteral("md5")].toString().toLatin1();
                QVERIFY(!md5.isEmpty());
                if (sums.contains(md5 + "  "))
                    ++digests;
            }
            QCOMPARE(digests, 2);
            QVERIFY(
                sheet[QStringLiteral("rows")][1][QStringLiteral("loudness")].toString().endsWith(
                    QStringLiteral("LUFS")));
        }
        QCOMPARE(QProcess::execute(tivoraDdp, {QStringLiteral("pqsheet"), disc,
                                               m_dir.filePath(QStringLiteral("x.doc"))}),
                 1);
    }

    void formatsFollowTheExtension()
    {
        const std::pair<const char*, PqSheetFormat> cases[] = {{"a/SHEET.PDF", PqSheetFormat::Pdf},
                                                               {"-", PqSheetFormat::Text},
                                                               {"x.htm", PqSheetFormat::Html}};
        for (const auto& [path, want] : cases) {
            PqSheetFormat format = PqSheetFormat::Json;
            QVERIFY2(pqSheetFormatForPath(QString::fromLatin1(path), &format), path);
            QCOMPARE(format, want);
        }
        PqSheetFormat format = PqSheetFormat::Json;
        QVERIFY(!pqSheetFormatForPath(QStringLiteral("x.doc"), &format));
        // A folder that does not exist fails with the system's reason, and
        // leaves nothing behind.
        QString error;
        QVERIFY(!writePqSheet(makePqSheet(m_model, {}), PqSheetFormat::Text,
                              m_dir.filePath(QStringLiteral("none/sheet.txt")), &error));
        QVERIFY(!error.isEmpty());
    }
};

QTEST_MAIN(ReportPqSheetTest)
#include "test_report_pq_sheet.moc"
