#include "widgets/TableViewWidget.h"

#include "ddp/IDrawInfoProvider.h"
#include "ddp/Settings.h"
#include "ddp/TrackTable.h"
#include "widgets/FilterHeaderView.h"
#include "widgets/FontTable.h"
#include "widgets/LoudnessColumns.h"
#include "widgets/PixmapRoutines.h"
#include "widgets/Theme.h"

#include <QEasingCurve>
#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QHeaderView>
#include <QLabel>
#include <QPropertyAnimation>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const char* const kInfoButtonName = "infoButton";
const char* const kExportButtonName = "exportButton";
// Room between the export button and the next column's text, and after
// each header text, so that neither runs into its neighbour.
constexpr int kButtonGap = 6;
constexpr int kColumnPadding = 12;

void makeTransparent(QWidget* widget)
{
    QPalette pal = widget->palette();
    for (QPalette::ColorRole role :
         {QPalette::Window, QPalette::Button, QPalette::Mid, QPalette::Highlight})
        pal.setColor(role, Qt::transparent);
    widget->setPalette(pal);
}

} // namespace

TableViewWidget::TableViewWidget(QWidget* parent) : QWidget(parent)
{
    // The signals' argument types, spelled as declared, for queued
    // connections and signal spies.
    qRegisterMetaType<std::int32_t>("std::int32_t");
    qRegisterMetaType<QToolButton*>("QToolButton*");
    setupUi();
    buildOverlay();
}

void TableViewWidget::setupUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("TableViewWidget"));
    m_verticalLayout = new QVBoxLayout(this);
    m_verticalLayout->setObjectName(QStringLiteral("verticalLayout"));
    m_verticalLayout->setContentsMargins(0, 0, 0, 0);
    m_tableView = new QTableView(this);
    m_tableView->setObjectName(QStringLiteral("tableView"));
    m_verticalLayout->addWidget(m_tableView);
    QMetaObject::connectSlotsByName(this);

    m_proxyModel = new QSortFilterProxyModel(this);
    m_tableView->viewport()->setMouseTracking(true);
    m_tableView->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tableView->setModel(m_proxyModel);
    m_tableView->setShowGrid(false);
    m_tableView->verticalHeader()->setVisible(false);
    m_tableView->horizontalHeader()->setVisible(false);
    m_tableView->setFocusPolicy(Qt::NoFocus);
    m_tableView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tableView->setFrameShape(QFrame::NoFrame);
    m_tableView->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);

    // Row buttons follow the rows onto the screen.
    m_tableView->viewport()->installEventFilter(this);
    connect(m_tableView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &TableViewWidget::buildVisibleRowWidgets);
    auto forget = [this] { m_rowBuilt.clear(); };
    connect(m_proxyModel, &QAbstractItemModel::modelAboutToBeReset, this, forget);
    connect(m_proxyModel, &QAbstractItemModel::rowsAboutToBeRemoved, this, forget);
    connect(m_proxyModel, &QAbstractItemModel::rowsInserted, this, forget);
}

void TableViewWidget::buildOverlay()
{
    m_overlay = new QLabel(this);
    m_overlay->setObjectName(QStringLiteral("overlayLabel"));
    m_overlay->setAutoFillBackground(true);
    m_overlay->setFont(FontTable::font(3, true));
    m_overlay->setText(tr("Drop a DDP image or folder here"));
    QPalette pal = m_overlay->palette();
    pal.setColor(QPalette::WindowText, QColor(90, 91, 92));
    pal.setColor(QPalette::Window, Theme::tableBase());
    m_overlay->setPalette(pal);
    m_overlay->adjustSize();

    auto* effect = new QGraphicsOpacityEffect(m_overlay);
    m_overlay->setGraphicsEffect(effect);
    auto* fade = new QPropertyAnimation(effect, "opacity", this);
    fade->setDuration(1000);
    fade->setStartValue(0.0);
    fade->setEndValue(1.0);
    // InBack dips just below zero before rising: a short hesitation, then in.
    fade->setEasingCurve(QEasingCurve::InBack);
    fade->start(QAbstractAnimation::DeleteWhenStopped);
    placeOverlay();
}

void TableViewWidget::placeOverlay()
{
    if (!m_overlay)
        return;
    const int x = width() / 2 - m_overlay->width() / 2;
    const int y = int((height() / 2) * 0.5);
    m_overlay->move(x, y);
}

void TableViewWidget::resizeEvent(QResizeEvent* event)
{
    placeOverlay();
    QWidget::resizeEvent(event);
}

void TableViewWidget::setModel(QAbstractItemModel* table,
                               std::shared_ptr<const IDrawInfoProvider> drawInfo)
{
    m_drawInfo = std::move(drawInfo);
    m_proxyModel->setSourceModel(table);
}

void TableViewWidget::installHeader()
{
    delete m_overlay; // gone for good after the first load

    // QTableView deletes the header it replaces.
    m_header = new FilterHeaderView(Qt::Horizontal, this);
    connect(m_header, &QHeaderView::sectionMoved, m_header, &FilterHeaderView::onSectionMoved);
    QFont f = m_header->font();
    f.setBold(true);
    f.setFamily(QStringLiteral("Arial"));
    m_header->setFont(f);
    m_header->setFixedHeight(24);
    QPalette pal = m_header->palette();
    pal.setColor(QPalette::ButtonText, QColor(139, 139, 140));
    pal.setColor(QPalette::Window, QColor(58, 61, 64));
    pal.setColor(QPalette::Highlight, QColor(58, 61, 64).lighter(150));
    m_header->setPalette(pal);

    m_tableView->setHorizontalHeader(m_header);
    m_header->setVisible(true);
    m_tableView->resizeColumnsToContents();
    for (int c = 2; c < m_header->count(); ++c)
        m_tableView->setColumnWidth(c, m_tableView->columnWidth(c) + kColumnPadding);
}

void TableViewWidget::restoreHeaderState()
{
    if (!m_header)
        return;
    const QByteArray state = readSetting(kHeaderKey).toByteArray();
    if (!state.isEmpty()) {
        m_header->restoreState(state);
        return;
    }
    // Without a saved layout the loudness columns stand after "Duration",
    // in view at the window's first size; a saved layout keeps them where
    // it has them (at its end, if it was saved before they existed).
    const int duration = m_header->visualIndex(TrackTableRows::Duration);
    for (int c = LoudnessColumns::kLoudnessColumn;
         c <= LoudnessColumns::kTruePeakColumn && c < m_header->count(); ++c)
        m_header->moveSection(m_header->visualIndex(c),
                              duration + 1 + c - LoudnessColumns::kLoudnessColumn);
}

void TableViewWidget::saveHeaderState() const
{
    if (m_header)
        writeSetting(kHeaderKey, m_header->saveState());
}

void TableViewWidget::configureHeader()
{
    if (!m_header)
        return;
    m_header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_header->setSectionsMovable(true);
    m_header->setDragEnabled(true);
    m_header->setDragDropMode(QAbstractItemView::InternalMove);
    m_header->setDropIndicatorShown(true);
    m_header->setStretchLastSection(true);
    m_header->setSectionResizeMode(0, QHeaderView::Fixed);
    m_header->setSectionResizeMode(1, QHeaderView::Fixed);
    m_tableView->setColumnWidth(0, 70);
    m_tableView->setColumnWidth(1, 50);
}

QToolButton* TableViewWidget::makeRowButton(QWidget* cell, int x)
{
    auto* button = new QToolButton(cell);
    button->setAutoRaise(true);
    button->setFixedSize(20, cell->height());
    makeTransparent(button);
    button->move(x, 0);
    return button;
}

void TableViewWidget::buildRowWidgets()
{
    m_rowBuilt.clear();
    if (m_proxyModel->columnCount() < 2)
        return;
    const int w1 = m_tableView->columnWidth(1) + 20 + kButtonGap;
    m_tableView->setColumnWidth(1, w1);
    m_buttonCellWidth = w1;

    if (m_infoIcon.isNull())
        m_infoIcon = QIcon(QStringLiteral(":info_icon"));
    const qreal ratio = devicePixelRatioF();
    m_exportIcon = QIcon(tintPixmap(
        renderIcon(QStringLiteral(":save_icon"), QSize(int(19 * ratio), int(19 * ratio))),
        QColor(109, 109, 109)));

    m_rowBuilt.assign(std::size_t(std::max(m_proxyModel->rowCount() - 1, 0)), false);
    buildVisibleRowWidgets();

    if (m_header) {
        connect(m_header, &QHeaderView::sectionResized, this,
                [this](int logical, int, int newSize) {
                    if (logical == 1 && newSize < m_buttonCellWidth)
                        m_tableView->setColumnWidth(1, m_buttonCellWidth);
                });
    }
}

void TableViewWidget::buildVisibleRowWidgets()
{
    const int rows = int(m_rowBuilt.size());
    if (rows == 0)
        return;
    // From the top row on screen down one screenful and a few rows more, so
    // that a short scroll finds its buttons already there.
    const int first = std::max(m_tableView->rowAt(0), 0);
    const int rowHeight = std::max(m_tableView->verticalHeader()->defaultSectionSize(), 1);
    const int screenful = m_tableView->viewport()->height() / rowHeight + 1;
    const int last = std::min(first + screenful + 8, rows - 1);
    for (int r = first; r <= last; ++r)
        buildRowWidgets(r);
}

void TableViewWidget::buildRowWidgets(int r)
{
    if (r < 0 || std::size_t(r) >= m_rowBuilt.size() || m_rowBuilt[std::size_t(r)])
        return;
    m_rowBuilt[std::size_t(r)] = true;

    const int h = m_tableView->rowHeight(r);
    auto* cell = new QWidget(m_tableView);
    cell->setFixedSize(m_buttonCellWidth, h);

    QToolButton* info = makeRowButton(cell, cell->width() - 39 - kButtonGap);
    info->setObjectName(QLatin1String(kInfoButtonName));
    info->setCheckable(true);
    info->setIcon(m_infoIcon);
    info->setToolTip(tr("Show everything about this row"));
    connect(info, &QToolButton::clicked, this,
            [this, r, info] { emit infoButtonClicked(r, info); });

    const bool isTrack = m_drawInfo && std::size_t(r) < m_drawInfo->indexList().size() &&
                         m_drawInfo->indexList()[std::size_t(r)] == 1;
    if (isTrack) {
        QToolButton* save = makeRowButton(cell, cell->width() - 19 - kButtonGap);
        save->setObjectName(QLatin1String(kExportButtonName));
        save->setIcon(m_exportIcon);
        save->setToolTip(tr("Export as WAV"));
        save->setEnabled(m_exportEnabled);
        connect(save, &QToolButton::clicked, this, [this, r] { emit exportAsWavButtonClicked(r); });
    }
    m_tableView->setIndexWidget(m_proxyModel->index(r, 1), cell);

    auto* spacer = new QWidget(m_tableView);
    spacer->setFixedSize(m_buttonCellWidth, h);
    m_tableView->setIndexWidget(m_proxyModel->index(r, 0), spacer);
}

bool TableViewWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_tableView->viewport() && event->type() == QEvent::Resize)
        buildVisibleRowWidgets();
    return QWidget::eventFilter(watched, event);
}

int TableViewWidget::rowsWithWidgets() const
{
    return int(std::count(m_rowBuilt.begin(), m_rowBuilt.end(), true));
}

void TableViewWidget::installModel(QAbstractItemModel* table,
                                   std::shared_ptr<const IDrawInfoProvider> drawInfo)
{
    setModel(table, std::move(drawInfo));
    installHeader();
    restoreHeaderState();
    configureHeader();
    buildRowWidgets();
}

void TableViewWidget::hideColumn(int column)
{
    m_tableView->hideColumn(column);
}

void TableViewWidget::showColumn(int column)
{
    m_tableView->showColumn(column);
}

void TableViewWidget::setExportButtonsEnabled(bool enabled)
{
    m_exportEnabled = enabled;
    for (std::size_t r = 0; r < m_rowBuilt.size(); ++r) {
        if (!m_rowBuilt[r])
            continue;
        QWidget* cell = m_tableView->indexWidget(m_proxyModel->index(int(r), 1));
        if (auto* button =
                cell ? cell->findChild<QToolButton*>(QLatin1String(kExportButtonName)) : nullptr)
            button->setEnabled(enabled);
    }
}

void TableViewWidget::setViewPalette(const QPalette& palette)
{
    m_tableView->setPalette(palette);
}

QToolButton* TableViewWidget::infoButton(int row)
{
    buildRowWidgets(row);
    QWidget* cell = m_tableView->indexWidget(m_proxyModel->index(row, 1));
    return cell ? cell->findChild<QToolButton*>(QLatin1String(kInfoButtonName)) : nullptr;
}

QToolButton* TableViewWidget::exportButton(int row)
{
    buildRowWidgets(row);
    QWidget* cell = m_tableView->indexWidget(m_proxyModel->index(row, 1));
    return cell ? cell->findChild<QToolButton*>(QLatin1String(kExportButtonName)) : nullptr;
}
