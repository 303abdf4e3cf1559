// The track table: buttons per row kind, the header that keeps "Type" and
// "Track" in front, the column menu, header state across loads, and the
// colours the delegate paints per row kind.

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/Settings.h"
#include "widgets/AttributesMenu.h"
#include "widgets/CellDelegate.h"
#include "widgets/FilterHeaderView.h"
#include "widgets/Resources.h"
#include "widgets/TableViewWidget.h"

#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <QWidgetAction>

namespace {

const QColor kTrack(43, 45, 47);
const QColor kOtherKind(33, 35, 37);
const QColor kOutside(25, 27, 28);
const QColor kCurrent(43, 77, 47);
const QColor kMarker(17, 109, 24);
const QColor kBase(31, 33, 35);

// A table as the loader fills it: one row per kind, then the summary row.
struct Disc
{
    QStandardItemModel table;
    std::shared_ptr<DDPModel> model = std::make_shared<DDPModel>();

    explicit Disc(const std::vector<std::uint32_t>& kinds)
    {
        table.setHorizontalHeaderLabels(trackTableHeaderNames());
        int track = 1;
        for (std::uint32_t kind : kinds) {
            const QString two = QStringLiteral("%1").arg(track, 2, 10, QLatin1Char('0'));
            const QString index = QStringLiteral("%1").arg(kind, 2, 10, QLatin1Char('0'));
            const QString title = kind == 1 ? QStringLiteral("A fairly long title") : QString();
            QList<QStandardItem*> row{new QStandardItem(),
                                      new QStandardItem(two),
                                      new QStandardItem(index),
                                      new QStandardItem(QStringLiteral("00:02")),
                                      new QStandardItem(QStringLiteral("03:14")),
                                      new QStandardItem(title)};
            table.appendRow(row);
            model->appendIndex(kind);
            if (kind == 1)
                ++track;
        }
        QList<QStandardItem*> summary;
        summary << new QStandardItem() << new QStandardItem() << new QStandardItem()
                << new QStandardItem(QStringLiteral("Total: 12:00"));
        table.appendRow(summary);
        table.setColumnCount(13);
    }
};

std::unique_ptr<TableViewWidget> loaded(Disc& disc)
{
    auto widget = std::make_unique<TableViewWidget>();
    widget->resize(900, 400);
    widget->installModel(&disc.table, disc.model);
    QPalette pal = widget->tableView()->palette();
    pal.setColor(QPalette::Base, kBase);
    widget->setViewPalette(pal);
    widget->tableView()->setItemDelegate(new CellDelegate(disc.model, widget.get()));
    return widget;
}

} // namespace

class TestTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QFile::remove(settingsFilePath());
        initResources();
    }

    void cleanup() { QFile::remove(settingsFilePath()); }

    void overlayUntilTheFirstLoad()
    {
        TableViewWidget widget;
        widget.resize(600, 400);
        QVERIFY(widget.overlayLabel());
        QCOMPARE(widget.overlayLabel()->text(), QStringLiteral("Drop a DDP image or folder here"));
        QVERIFY(widget.tableView()->horizontalHeader()->isHidden());
        QResizeEvent resize(QSize(600, 400), QSize());
        QCoreApplication::sendEvent(&widget, &resize);
        QLabel* overlay = widget.overlayLabel();
        QCOMPARE(overlay->x(), 300 - overlay->width() / 2);
        QCOMPARE(overlay->y(), 100);

        Disc disc({1});
        widget.installModel(&disc.table, disc.model);
        QVERIFY(!widget.overlayLabel());
        QVERIFY(widget.header()->isVisibleTo(&widget));
    }

    void everyLoadGetsAFreshHeader()
    {
        Disc first({1, 1});
        auto widget = loaded(first);
        const QPointer<FilterHeaderView> old = widget->header();
        old->moveSection(old->visualIndex(8), 2);

        Disc second({0, 1});
        widget->installModel(&second.table, second.model);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!old);
        QVERIFY(widget->header());
        QCOMPARE(widget->tableView()->horizontalHeader(), widget->header());
        // The new header still keeps "Type" and "Track" in front.
        widget->header()->moveSection(widget->header()->visualIndex(6), 0);
        QCOMPARE(widget->header()->logicalIndex(0), 0);
        QVERIFY(widget->exportButton(1) && !widget->exportButton(0));
        // And the Track column is never narrower than its buttons, but may be wider.
        widget->tableView()->setColumnWidth(1, 10);
        QCOMPARE(widget->tableView()->columnWidth(1), 76);
        widget->tableView()->setColumnWidth(1, 120);
        QCOMPARE(widget->tableView()->columnWidth(1), 120);
    }

    void buttonsPerRowKind()
    {
        Disc disc({0, 1, 2, 1});
        auto widget = loaded(disc);
        // Rest and further index rows: info only; tracks: info and export.
        QVERIFY(widget->infoButton(0) && !widget->exportButton(0));
        QVERIFY(widget->infoButton(1) && widget->exportButton(1));
        QVERIFY(widget->infoButton(2) && !widget->exportButton(2));
        QVERIFY(widget->infoButton(3) && widget->exportButton(3));
        // The summary row: nothing.
        QVERIFY(!widget->infoButton(4) && !widget->exportButton(4));
        QVERIFY(!widget->tableView()->indexWidget(widget->proxyModel()->index(4, 0)));

        // Both buttons sit at the right end of the Track cell, 20 pixels
        // wide, 6 pixels short of the next column's text.
        const int cellWidth = widget->tableView()->columnWidth(1);
        QCOMPARE(cellWidth, 76);
        QCOMPARE(widget->infoButton(1)->geometry(),
                 QRect(cellWidth - 45, 0, 20, widget->tableView()->rowHeight(1)));
        QCOMPARE(widget->exportButton(1)->x(), cellWidth - 25);
        QVERIFY(widget->infoButton(1)->isCheckable());
        QVERIFY(!widget->exportButton(1)->isCheckable());

        QSignalSpy info(widget.get(), &TableViewWidget::infoButtonClicked);
        QSignalSpy save(widget.get(), &TableViewWidget::exportAsWavButtonClicked);
        widget->infoButton(2)->click();
        widget->exportButton(3)->click();
        QCOMPARE(info.size(), 1);
        QCOMPARE(info.at(0).at(0).toInt(), 2);
        QCOMPARE(info.at(0).at(1).value<QToolButton*>(), widget->infoButton(2));
        QCOMPARE(save.size(), 1);
        QCOMPARE(save.at(0).at(0).toInt(), 3);

        // A table of the summary row alone: no buttons at all.
        Disc empty({});
        auto none = loaded(empty);
        QCOMPARE(none->proxyModel()->rowCount(), 1);
        QVERIFY(!none->infoButton(0));
        QVERIFY(!none->tableView()->indexWidget(none->proxyModel()->index(0, 1)));
    }

    void typeAndTrackStayInFront()
    {
        Disc disc({1, 1});
        auto widget = loaded(disc);
        FilterHeaderView* header = widget->header();
        const int performer = trackTableHeaderNames().indexOf(QStringLiteral("Performer"));
        QCOMPARE(performer, 6);

        header->moveSection(header->visualIndex(performer), 0);
        QCOMPARE(header->visualIndex(performer), 6);
        QCOMPARE(header->logicalIndex(0), 0);
        header->moveSection(header->visualIndex(performer), 1);
        QCOMPARE(header->logicalIndex(1), 1);
        QCOMPARE(header->visualIndex(performer), 6);
        // Behind them anything goes.
        header->moveSection(header->visualIndex(performer), 2);
        QCOMPARE(header->visualIndex(performer), 2);

        // A press on "Type" or "Track" is ignored; on any other section the
        // header reacts as usual.
        header->setSectionsClickable(true);
        QSignalSpy pressed(header, &QHeaderView::sectionPressed);
        for (int logical : {0, 1}) {
            const QPoint at(header->sectionViewportPosition(logical) + 5, 10);
            QTest::mousePress(header->viewport(), Qt::LeftButton, {}, at);
            QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, at);
        }
        QCOMPARE(pressed.size(), 0);
        const QPoint index(header->sectionViewportPosition(2) + 5, 10);
        QTest::mousePress(header->viewport(), Qt::LeftButton, {}, index);
        QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, index);
        QCOMPARE(pressed.size(), 1);
    }

    void columnMenu()
    {
        Disc disc({1, 0, 1});
        auto widget = loaded(disc);
        QTableView* view = widget->tableView();
        AttributesMenu menu(trackTableHeaderNames(), view);
        // "Type" and "Track" are never offered.
        QCOMPARE(menu.actions().size(), 11);
        QVERIFY(!menu.checkBox(0) && !menu.checkBox(1));
        QCOMPARE(menu.checkBox(2)->text(), QStringLiteral("Index"));
        QCOMPARE(menu.checkBox(12)->text(), QStringLiteral("Usertext"));
        QVERIFY(menu.checkBox(5)->isChecked());

        view->setColumnWidth(5, 333);
        menu.checkBox(5)->setChecked(false);
        QVERIFY(view->isColumnHidden(5));
        view->setColumnWidth(4, 3);
        // Showing column 5 fits column 4, the one before it, and leaves
        // column 5 at the width it had.
        menu.checkBox(5)->setChecked(true);
        QVERIFY(!view->isColumnHidden(5));
        QCOMPARE(view->columnWidth(5), 333);
        const int fitted = view->columnWidth(4);
        QVERIFY(fitted > 3);
        view->resizeColumnToContents(4);
        QCOMPARE(view->columnWidth(4), fitted);

        // Fewer than three names: an empty menu.
        AttributesMenu empty(QStringList{QStringLiteral("Type"), QStringLiteral("Track")}, view);
        QVERIFY(empty.actions().isEmpty());
    }

    // A cell's own colour (the true peak's warning) survives the selection.
    void aCellsOwnColourShowsOnTheSelectedRow()
    {
        Disc disc({1, 1, 1});
        auto widget = loaded(disc);
        const QColor warning(240, 170, 40);
        disc.table.item(1, 3)->setForeground(warning);
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
        QTableView* view = widget->tableView();
        view->selectRow(1);
        const QImage shot = view->viewport()->grab().toImage();
        const QRect cell = view->visualRect(view->model()->index(1, 3));
        bool seen = false;
        for (int x = cell.left(); x <= cell.right() && !seen; ++x)
            for (int y = cell.top(); y <= cell.bottom() && !seen; ++y) {
                // Anti-aliased text: amber enough, against white text on grey.
                const QColor c = shot.pixelColor(x, y);
                seen = c.red() > 180 && c.green() > 110 && c.green() < 200 && c.blue() < 90;
            }
        QVERIFY(seen);
    }

    void releaseOnABoxKeepsTheMenuOpen()
    {
        Disc disc({1});
        auto widget = loaded(disc);
        AttributesMenu menu(trackTableHeaderNames(), widget->tableView());
        menu.popup(QPoint(0, 0));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        QAction* isrc = menu.actions().at(11 - 2);
        menu.setActiveAction(isrc);
        const QPoint at = menu.actionGeometry(isrc).center();
        QMouseEvent release(QEvent::MouseButtonRelease, at, menu.mapToGlobal(at), Qt::LeftButton,
                            Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&menu, &release);
        QVERIFY(widget->tableView()->isColumnHidden(11));
        QVERIFY(!menu.checkBox(11)->isChecked());
        QVERIFY(menu.isVisible());
        QVERIFY(isrc->isEnabled());
        menu.close();
    }

    void headerStateSurvivesTheNextLoad()
    {
        {
            Disc disc({1, 1});
            auto widget = loaded(disc);
            widget->hideColumn(7);
            widget->header()->moveSection(widget->header()->visualIndex(11), 2);
            widget->saveHeaderState();
        }
        Disc disc({1, 0, 1});
        auto widget = loaded(disc);
        QVERIFY(widget->tableView()->isColumnHidden(7));
        QCOMPARE(widget->header()->visualIndex(11), 2);
        // The fixed columns are set after the restore, so they always win.
        QCOMPARE(widget->tableView()->columnWidth(0), 70);
        QCOMPARE(widget->tableView()->columnWidth(1), 76);
        AttributesMenu menu(trackTableHeaderNames(), widget->tableView());
        QVERIFY(!menu.checkBox(7)->isChecked());
    }

    void rowColoursAndCurrentRowMarker()
    {
        Disc disc({0, 1, 2, 1});
        disc.model->setCurrentRow(3);
        auto widget = loaded(disc);
        QTableView* view = widget->tableView();
        const QImage image = view->viewport()->grab().toImage();
        // A pixel in the Duration column, away from any text.
        auto background = [&](int row) {
            const QRect cell = view->visualRect(widget->proxyModel()->index(row, 4));
            return QColor(image.pixel(cell.right() - 2, cell.top() + 1));
        };
        QCOMPARE(background(0), kBase); // rest: the view's own base shows
        QCOMPARE(background(1), kTrack);
        QCOMPARE(background(2), kOtherKind);
        QCOMPARE(background(3), kCurrent);
        QCOMPARE(background(4), kOutside);

        // The marker: an arrow over the left part of the Type cell of the
        // current row only.
        const QRect current = view->visualRect(widget->proxyModel()->index(3, 0));
        QCOMPARE(QColor(image.pixel(current.left() + 2, current.center().y())), kMarker);
        QCOMPARE(
            QColor(image.pixel(current.left() + int(0.6 * current.width()), current.top() + 1)),
            kCurrent);
        const QRect other = view->visualRect(widget->proxyModel()->index(1, 0));
        QCOMPARE(QColor(image.pixel(other.left() + 2, other.center().y())), kTrack);
        // The icon is drawn in the middle of the cell's left part.
        bool iconSeen = false;
        for (int x = other.left() + int(0.22 * other.width());
             x < other.left() + int(0.22 * other.width()) + other.height() / 2; ++x)
            iconSeen |= QColor(image.pixel(x, other.center().y())) != kTrack;
        QVERIFY(iconSeen);
    }

    void kindColourLookUp()
    {
        // Only kinds 0 and 1 have their own colours (drawn in the test
        // above); everything else, negative kinds included, takes the default.
        QCOMPARE(CellDelegate::backgroundFor(-1, true), kOtherKind);
        QCOMPARE(CellDelegate::textFor(0, true), QColor(Qt::darkGray));
        QCOMPARE(CellDelegate::textFor(1, true), QColor(Qt::lightGray));
        QCOMPARE(CellDelegate::textFor(5, true), QColor(Qt::lightGray));
    }
};

QTEST_MAIN(TestTable)
#include "test_widgets_table.moc"
