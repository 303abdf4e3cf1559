// The info area's verification line and its details, offscreen: the line's
// words and colour for a sound, a damaged and an unchecked master, the
// details dialog's rows, and a cancel that leaves nothing behind. Writes
// screenshots of each state into <build>/screenshots for a person to judge.
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "tests/support/StyledTestApp.h"
#include "tests/support/TestFolders.h"
#include "tools/mkddp/Mkddp.h"
#include "verify/Verification.h"
#include "widgets/CustomStyle.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/Resources.h"
#include "widgets/VerificationDetailsDialog.h"
#include "widgets/VerificationLine.h"

#include <QApplication>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>

class TestVerifyWindowLine : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_shots;

    struct Disc
    {
        QString folder;
        std::shared_ptr<DDPModel> model = std::make_shared<DDPModel>();
        std::shared_ptr<const DiscImage> image;
    };

    Disc make(const QString& name, mkddp::ChecksumStyle style, QVector<mkddp::Fault> faults = {},
              QByteArray control = "0100", mkddp::DiscSpec spec = mkddp::realisticDisc())
    {
        spec.checksums = style;
        spec.faults = faults;
        spec.pqControl = control;
        Disc disc;
        disc.folder = m_dir.filePath(name);
        QString error;
        if (!mkddp::writeDisc(spec, disc.folder, &error))
            qWarning("%s", qPrintable(error));
        QStandardItemModel table;
        loadDdp(disc.folder, &table, *disc.model);
        disc.image = openDiscImage(disc.folder, disc.model->imageLayout());
        return disc;
    }

    // The info box as wide as the smallest window, on the window's colour.
    struct Box
    {
        QWidget frame;
        InfoBoxWidget* info = new InfoBoxWidget(&frame);
        Box()
        {
            auto* layout = new QVBoxLayout(&frame);
            layout->setContentsMargins(0, 6, 0, 6);
            layout->addWidget(info);
            frame.setAutoFillBackground(true);
            frame.setFixedWidth(466);
            frame.show();
        }
    };

    void verify(Box& box, const Disc& disc)
    {
        box.info->setModel(*disc.model);
        VerificationLine* line = box.info->verificationLine();
        QSignalSpy verified(line, &VerificationLine::verified);
        line->start(std::make_shared<FolderFileSource>(disc.folder), disc.model, disc.image);
        QVERIFY(line->isVisibleTo(&box.frame));
        QVERIFY(line->text().startsWith(QStringLiteral("Verifying checksums… ")));
        QVERIFY(verified.wait(20000));
    }

    void save(QWidget& widget, const QString& name)
    {
        QVERIFY(widget.grab().save(m_shots + QLatin1Char('/') + name + QStringLiteral(".png")));
    }

private slots:
    void initTestCase()
    {
        styleAsTheProgram();
        m_shots = screenshotFolder();
    }

    void soundMasterReadsGreen()
    {
        Box box;
        QVERIFY(!box.info->verificationLine()->isVisibleTo(&box.frame));
        const Disc disc = make(QStringLiteral("ok"), mkddp::ChecksumStyle::Md5);
        verify(box, disc);
        box.frame.adjustSize();
        VerificationLine* line = box.info->verificationLine();
        QCOMPARE(line->text(), QStringLiteral("Checksums OK: 5 of 5 files (CHECKSUM.MD5)"));
        QCOMPARE(line->tone(), VerificationLine::Tone::Good);
        // setModel and clear belong to the next load's flow: the line stays.
        box.info->setModel(*disc.model);
        QCOMPARE(line->text(), QStringLiteral("Checksums OK: 5 of 5 files (CHECKSUM.MD5)"));
        save(box.frame, QStringLiteral("verify-line-ok"));

        VerificationDetailsDialog details(line->report());
        QCOMPARE(details.filesTable()->rowCount(), 5);
        for (int r = 0; r < 5; ++r)
            QCOMPARE(details.filesTable()->item(r, 5)->text(), QStringLiteral("OK"));
        details.show();
        save(details, QStringLiteral("verify-details-ok"));
    }

    void damagedMasterReadsRedAndNamesTheFile()
    {
        Box box;
        const Disc disc = make(QStringLiteral("bad"), mkddp::ChecksumStyle::CrcIni,
                               {mkddp::Fault::ChecksumFlippedByte,
                                mkddp::Fault::ChecksumUnlistedFile, mkddp::Fault::BadIsrc},
                               "11");
        verify(box, disc);
        box.frame.adjustSize();
        VerificationLine* line = box.info->verificationLine();
        QCOMPARE(line->tone(), VerificationLine::Tone::Bad);
        // One error (the ISRC) and a pre-emphasis warning for each of 7 tracks.
        QCOMPARE(line->text(), QStringLiteral("IMAGE.DAT does not match its checksum · 1 error, "
                                              "7 warnings"));
        save(box.frame, QStringLiteral("verify-line-mismatch"));

        VerificationDetailsDialog details(line->report());
        QTableWidget* files = details.filesTable();
        QCOMPARE(files->rowCount(), 5); // four listed, the PQ descriptor unlisted
        int red = 0;
        for (int r = 0; r < files->rowCount(); ++r) {
            if (files->item(r, 0)->text() == QLatin1String("IMAGE.DAT")) {
                QCOMPARE(files->item(r, 5)->text(), QStringLiteral("FAILED"));
                QVERIFY(files->item(r, 3)->text() != files->item(r, 4)->text());
            }
            if (files->item(r, 0)->text() == QLatin1String("PQDESCR"))
                QCOMPARE(files->item(r, 5)->text(),
                         QStringLiteral("not listed in any checksum file"));
            red += files->item(r, 0)->foreground().color() == QColor(240, 90, 80);
        }
        QCOMPARE(red, 1);
        QCOMPARE(details.findingsTable()->rowCount(), 8);
        QCOMPARE(details.findingsTable()->item(0, 2)->text(), QStringLiteral("isrc-invalid"));
        details.show();
        save(details, QStringLiteral("verify-details-mismatch"));
    }

    void withoutChecksumFileReadsGrey()
    {
        Box box;
        verify(box, make(QStringLiteral("none"), mkddp::ChecksumStyle::None));
        box.frame.adjustSize();
        VerificationLine* line = box.info->verificationLine();
        QCOMPARE(line->text(), QStringLiteral("No checksum file"));
        QCOMPARE(line->tone(), VerificationLine::Tone::Neutral);
        save(box.frame, QStringLiteral("verify-line-none"));
    }

    void notesAndVerdictShareTwoLines()
    {
        // Two notes (a data session left out, an image short of its PQ):
        // while the verdict shows, they fold into one line.
        mkddp::DiscSpec spec = mkddp::simpleDisc(3, 10);
        spec.dataStream = true;
        const Disc disc = make(QStringLiteral("notes"), mkddp::ChecksumStyle::None,
                               {mkddp::Fault::ImageCutShort}, "0100", spec);
        Box box;
        box.info->setModel(*disc.model);
        QLabel* notes = box.info->statusLabel();
        const int line = notes->fontMetrics().lineSpacing();
        QCOMPARE(notes->sizeHint().height() / line, 2);
        verify(box, disc);
        QCOMPARE(notes->sizeHint().height() / line, 1);
        box.info->verificationLine()->cancel();
        QCOMPARE(notes->sizeHint().height() / line, 2);
    }

    void cancelLeavesNothingBehind()
    {
        Box box;
        const Disc disc = make(QStringLiteral("cancel"), mkddp::ChecksumStyle::Md5);
        VerificationLine* line = box.info->verificationLine();
        QSignalSpy verified(line, &VerificationLine::verified);
        line->start(std::make_shared<FolderFileSource>(disc.folder), disc.model, disc.image);
        line->cancel();
        QVERIFY(!verified.wait(300));
        QVERIFY(!line->isVisibleTo(&box.frame));
        QVERIFY(line->text().isEmpty());
    }
};

QTEST_MAIN(TestVerifyWindowLine)
#include "test_verify_window_line.moc"
