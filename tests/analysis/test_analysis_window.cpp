// The loudness in the window, offscreen: the two columns offered and shown,
// filled when the analysis ends, the warning colour, the disc in the
// summary row and the info area, every figure in the row's popup; a header
// state saved before the columns existed; and a screenshot of the table.
#include "analysis/LoudnessText.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/DiscImage.h"
#include "ddp/Settings.h"
#include "tests/support/StyledTestApp.h"
#include "tests/support/TestFolders.h"
#include "tools/mkddp/Mkddp.h"
#include "widgets/AttributesMenu.h"
#include "widgets/CellDelegate.h"
#include "widgets/CustomStyle.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/LoudnessColumns.h"
#include "widgets/Resources.h"
#include "widgets/TableViewWidget.h"
#include "widgets/Theme.h"
#include "widgets/ToolTipWidget.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableView>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>

namespace {

// The info area over the table, as in the window.
struct Window
{
    QWidget frame;
    InfoBoxWidget* infoBox;
    TableViewWidget* table;
    QStandardItemModel items;
    std::shared_ptr<DDPModel> model = std::make_shared<DDPModel>();

    Window()
    {
        auto* layout = new QVBoxLayout(&frame);
        infoBox = new InfoBoxWidget(&frame);
        table = new TableViewWidget(&frame);
        layout->addWidget(infoBox);
        layout->addWidget(table, 1);
        frame.setPalette(CustomStyle::darkPalette());
        frame.resize(980, 420);
    }
    // The window's load: the loader's columns, then (or not) the loudness ones.
    void load(const QString& disc, LoudnessColumns* loudness)
    {
        model = std::make_shared<DDPModel>();
        QCOMPARE(int(loadDdp(disc, &items, *model).kind), int(ErrorKind::NoError));
        if (loudness)
            loudness->addColumns();
        table->tableView()->setItemDelegate(new CellDelegate(model, table->tableView()));
        table->installModel(&items, model);
        infoBox->setModel(*model);
    }
    QString cell(int row, int column) const
    {
        const QStandardItem* item = items.item(row, column);
        return item ? item->text() : QString();
    }
};

} // namespace

class TestAnalysisWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_signals;

private slots:
    void initTestCase()
    {
        styleAsTheProgram();
        QVERIFY(m_dir.isValid());
        m_signals = m_dir.filePath(QStringLiteral("signals"));
        QVERIFY(mkddp::writeDisc(mkddp::signalsDisc(), m_signals));
    }

    void init() { writeSetting(kHeaderKey, QByteArray()); }

    void columnsFillWhenTheAnalysisEnds()
    {
        Window window;
        LoudnessColumns loudness(&window.items, window.infoBox);
        window.load(m_signals, &loudness);
        QHeaderView* header = window.table->header();
        QCOMPARE(header->count(), 15);
        QCOMPARE(window.items.headerData(13, Qt::Horizontal).toString(),
                 QStringLiteral("Loudness"));
        QCOMPARE(window.items.headerData(14, Qt::Horizontal).toString(),
                 QStringLiteral("True Peak"));
        QVERIFY(!header->isSectionHidden(13) && !header->isSectionHidden(14));
        // With no saved layout they stand after "Duration".
        QCOMPARE(header->logicalIndex(header->visualIndex(4) + 1), 13);
        QCOMPARE(header->logicalIndex(header->visualIndex(4) + 2), 14);
        AttributesMenu menu(LoudnessColumns::tableColumnNames(), window.table->tableView());
        QVERIFY(menu.checkBox(13) && menu.checkBox(13)->isChecked());
        QCOMPARE(menu.checkBox(14)->text(), QStringLiteral("True Peak"));
        // Empty until measured.
        QVERIFY(window.cell(0, 13).isEmpty());

        QSignalSpy shown(&loudness, &LoudnessColumns::shown);
        loudness.start(window.model, DiscImage::openFile(m_signals + QStringLiteral("/IMAGE.DAT")));
        QVERIFY(window.infoBox->loudnessLabel()->text().startsWith(QStringLiteral("measuring")));
        QVERIFY(shown.wait(30000));

        // The 2 s pause before track 1 is hidden: row 0 is track 1.
        QCOMPARE(window.cell(0, 13), QStringLiteral("-23.0 LUFS"));
        QCOMPARE(window.cell(1, 13), QStringLiteral("-33.0 LUFS"));
        QCOMPARE(window.cell(3, 13), QStringLiteral("-inf"));
        QCOMPARE(window.cell(3, 14), QStringLiteral("-inf"));
        QCOMPARE(window.cell(0, 14), QStringLiteral("-23.0 dBTP"));
        const QColor warning = Theme::warning();
        QVERIFY(window.items.item(0, 14)->data(Qt::ForegroundRole).isNull());
        QCOMPARE(window.items.item(2, 14)->foreground().color(), warning);
        // The disc in the summary row and the info area.
        const int total = window.items.rowCount() - 1;
        QVERIFY(window.cell(total, 3).startsWith(QStringLiteral("Total")));
        QVERIFY(window.cell(total, 13).endsWith(QStringLiteral("LUFS")));
        QLabel* label = window.infoBox->loudnessLabel();
        QCOMPARE(label->text(),
                 window.cell(total, 13) + QStringLiteral(" · ") + window.cell(total, 14));
        QCOMPARE(label->palette().color(QPalette::WindowText), warning);
        QVERIFY(label->toolTip().contains(QStringLiteral("Clipped Runs: 17")));

        // Every figure in the popup of the clipped track's row.
        ToolTipWidget popup(window.table->proxyModel(), 4);
        QStringList lines;
        for (const auto& row : popup.rows())
            lines << row.first + QLatin1Char('=') + row.second;
        for (const char* expected :
             {"Loudness=", "Loudness Range=", "Max. Momentary=", "Max. Short-Term=",
              "Sample Peak=0.0 dBFS", "True Peak=", "Clipped Runs=17"})
            QVERIFY2(lines.filter(QLatin1String(expected)).size() == 1,
                     qPrintable(lines.join(QLatin1Char(','))));

        save(window.frame, QStringLiteral("table-loudness"));
        // The window's smallest width.
        window.frame.resize(466, 300);
        save(window.frame, QStringLiteral("table-loudness-466"));

        // The new columns move like the others.
        header->moveSection(header->visualIndex(14), 2);
        QCOMPARE(header->visualIndex(14), 2);
        QCOMPARE(header->logicalIndex(2), 14);
    }

    // A header state saved by a version without the loudness columns keeps
    // its hidden, moved and sized columns; the new ones show at its end.
    void headerStateFromBeforeTheColumns()
    {
        {
            Window old;
            old.load(m_signals, nullptr);
            QCOMPARE(old.table->header()->count(), 13);
            old.table->hideColumn(7);
            old.table->header()->moveSection(old.table->header()->visualIndex(11), 3);
            old.table->tableView()->setColumnWidth(5, 222);
            old.table->saveHeaderState();
        }
        Window window;
        LoudnessColumns loudness(&window.items, window.infoBox);
        window.load(m_signals, &loudness);
        QHeaderView* header = window.table->header();
        QCOMPARE(header->count(), 15);
        QVERIFY(header->isSectionHidden(7));
        QCOMPARE(header->visualIndex(11), 3);
        QCOMPARE(header->sectionSize(5), 222);
        QVERIFY(!header->isSectionHidden(13) && !header->isSectionHidden(14));
        QVERIFY(header->sectionSize(13) > 0 && header->sectionSize(14) > 0);
        QCOMPARE(header->visualIndex(13), 13);
        QCOMPARE(header->visualIndex(14), 14);
        AttributesMenu menu(LoudnessColumns::tableColumnNames(), window.table->tableView());
        QVERIFY(!menu.checkBox(7)->isChecked());
        QVERIFY(menu.checkBox(14)->isChecked());

        // And the state saved now comes back whole.
        window.table->hideColumn(13);
        window.table->saveHeaderState();
        Window next;
        LoudnessColumns again(&next.items, next.infoBox);
        next.load(m_signals, &again);
        QVERIFY(next.table->header()->isSectionHidden(13));
        QVERIFY(!next.table->header()->isSectionHidden(14));
        QVERIFY(next.table->header()->isSectionHidden(7));
    }

    // The rows follow the first-track number the index list gives: with a
    // shown pause before track 1, row 0 is the pause and track 1's figures
    // are on row 1. A descriptor that gives a track no end is not measured,
    // and the info area says why.
    void rowsFollowTheIndexListAndATrackWithoutAnEndIsNotMeasured()
    {
        mkddp::DiscSpec spec = mkddp::signalsDisc(4);
        spec.tracks[0].pauseFrames = mkddp::cdFrames(4);
        spec.silentPauses = true;
        const QString shownPause = m_dir.filePath(QStringLiteral("shown-pause"));
        QVERIFY(mkddp::writeDisc(spec, shownPause));
        Window window;
        LoudnessColumns loudness(&window.items, window.infoBox);
        window.load(shownPause, &loudness);
        QCOMPARE(window.cell(0, 2), QStringLiteral("Pause"));
        QSignalSpy shown(&loudness, &LoudnessColumns::shown);
        loudness.start(window.model,
                       DiscImage::openFile(shownPause + QStringLiteral("/IMAGE.DAT")));
        QVERIFY(shown.wait(30000));
        QVERIFY(window.cell(0, 13).isEmpty());
        QCOMPARE(window.cell(1, 13), QStringLiteral("-23.0 LUFS"));
        QCOMPARE(window.cell(2, 13), QStringLiteral("-33.0 LUFS"));

        spec = mkddp::signalsDisc(4);
        spec.faults = {mkddp::Fault::LeadOutNotANumber};
        const QString noEnd = m_dir.filePath(QStringLiteral("no-end"));
        QVERIFY(mkddp::writeDisc(spec, noEnd));
        Window broken;
        LoudnessColumns refused(&broken.items, broken.infoBox);
        broken.load(noEnd, &refused);
        QSignalSpy none(&refused, &LoudnessColumns::shown);
        refused.start(broken.model, DiscImage::openFile(noEnd + QStringLiteral("/IMAGE.DAT")));
        QVERIFY(!refused.analyzer()->isRunning());
        QLabel* label = broken.infoBox->loudnessLabel();
        QCOMPARE(label->text(), QStringLiteral("-"));
        QCOMPARE(label->toolTip(),
                 QStringLiteral("The end of track 05 is not in the PQ descriptor."));
        QTest::qWait(100);
        QCOMPARE(none.count(), 0);
        QVERIFY(broken.cell(0, 13).isEmpty());
    }

    // A new load cancels: nothing of the old disc lands in the new table.
    void aNewLoadCancels()
    {
        Window window;
        LoudnessColumns loudness(&window.items, window.infoBox);
        window.load(m_signals, &loudness);
        QSignalSpy shown(&loudness, &LoudnessColumns::shown);
        loudness.start(window.model, DiscImage::openFile(m_signals + QStringLiteral("/IMAGE.DAT")));
        loudness.cancel();
        QCOMPARE(window.infoBox->loudnessLabel()->text(), QStringLiteral("-"));
        QVERIFY(!loudness.analyzer()->isRunning());
        QTest::qWait(100);
        QCOMPARE(shown.count(), 0);
        QVERIFY(window.cell(0, 13).isEmpty());
    }

private:
    void save(QWidget& widget, const QString& name)
    {
        widget.show();
        QTest::qWait(50);
        const QString folder = screenshotFolder();
        QVERIFY(widget.grab().save(folder + QLatin1Char('/') + name + QStringLiteral(".png")));
    }
};

QTEST_MAIN(TestAnalysisWindow)
#include "test_analysis_window.moc"
