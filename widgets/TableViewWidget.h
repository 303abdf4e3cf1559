#pragma once

#include "widgets/FilterHeaderView.h"

#include <QIcon>
#include <QLabel>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <vector>

class IDrawInfoProvider;
class QAbstractItemModel;
class QSortFilterProxyModel;
class QTableView;
class QToolButton;
class QVBoxLayout;

// The track table: the view over a proxy of the window's item model, the
// "Drop a DDP image or folder here" overlay shown until the first load, and
// an info button on every row (plus an export button on track rows).
//
// A disc may have some 9 900 rows (99 tracks of 99 indexes): the row buttons
// are made for the rows on screen and for those scrolled to, not all at once,
// so a load costs the same whatever the disc.
//
// After each successful load the window calls, in this order: setModel,
// installHeader, restoreHeaderState, configureHeader, buildRowWidgets (or
// installModel, which does all five).
class TableViewWidget : public QWidget
{
    Q_OBJECT
public:
    explicit TableViewWidget(QWidget* parent = nullptr);

    // `table` is the window's item model (13 columns, the last row the
    // summary); `drawInfo` tells the row kinds (the current DDPModel).
    void setModel(QAbstractItemModel* table, std::shared_ptr<const IDrawInfoProvider> drawInfo);
    void installHeader();
    void restoreHeaderState();
    void configureHeader();
    void buildRowWidgets();
    void installModel(QAbstractItemModel* table, std::shared_ptr<const IDrawInfoProvider> drawInfo);

    void hideColumn(int column);
    void showColumn(int column);
    void saveHeaderState() const;
    // The rows' export buttons: off while the disc shown cannot be played
    // (its audio image is missing), on again for the next disc that can.
    void setExportButtonsEnabled(bool enabled);
    void setViewPalette(const QPalette& palette);

    QTableView* tableView() const { return m_tableView; }
    QSortFilterProxyModel* proxyModel() const { return m_proxyModel; }
    FilterHeaderView* header() const { return m_header; }
    // The overlay until the first load, then null.
    QLabel* overlayLabel() const { return m_overlay; }
    // The buttons of a row (made now if the row was not on screen yet), or
    // null.
    QToolButton* infoButton(int row);
    QToolButton* exportButton(int row);
    // How many rows have their buttons so far.
    int rowsWithWidgets() const;

signals:
    void infoButtonClicked(std::int32_t id, QToolButton* button);
    void exportAsWavButtonClicked(std::int32_t id);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setupUi();
    void buildOverlay();
    void placeOverlay();
    QToolButton* makeRowButton(QWidget* cell, int x);
    void buildVisibleRowWidgets();
    void buildRowWidgets(int row);

    QVBoxLayout* m_verticalLayout = nullptr;
    QTableView* m_tableView = nullptr;
    QSortFilterProxyModel* m_proxyModel = nullptr;
    QPointer<QLabel> m_overlay;
    QPointer<FilterHeaderView> m_header;
    std::shared_ptr<const IDrawInfoProvider> m_drawInfo;
    int m_buttonCellWidth = 0;
    bool m_exportEnabled = true;
    // One entry per row that can carry buttons (all but the summary row):
    // whether they are made. Emptied whenever the rows change under it.
    std::vector<bool> m_rowBuilt;
    // Made once: a fresh icon a row would render its image a row at a time.
    QIcon m_infoIcon;
    QIcon m_exportIcon;
};
