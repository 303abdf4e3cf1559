#pragma once

#include "widgets/FilterHeaderView.h"

#include <QLabel>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>

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
    void setViewPalette(const QPalette& palette);

    QTableView* tableView() const { return m_tableView; }
    QSortFilterProxyModel* proxyModel() const { return m_proxyModel; }
    FilterHeaderView* header() const { return m_header; }
    // The overlay until the first load, then null.
    QLabel* overlayLabel() const { return m_overlay; }
    // The buttons of a row, or null.
    QToolButton* infoButton(int row) const;
    QToolButton* exportButton(int row) const;

signals:
    void infoButtonClicked(std::int32_t id, QToolButton* button);
    void exportAsWavButtonClicked(std::int32_t id);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setupUi();
    void buildOverlay();
    void placeOverlay();
    QToolButton* makeRowButton(QWidget* cell, int x);

    QVBoxLayout* m_verticalLayout = nullptr;
    QTableView* m_tableView = nullptr;
    QSortFilterProxyModel* m_proxyModel = nullptr;
    QPointer<QLabel> m_overlay;
    QPointer<FilterHeaderView> m_header;
    std::shared_ptr<const IDrawInfoProvider> m_drawInfo;
    int m_buttonCellWidth = 0;
};
