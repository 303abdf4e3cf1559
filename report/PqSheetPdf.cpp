#include "report/PqSheet.h"
#include "report/PqSheetRender.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>

// The PDF is drawn with QPainter rather than laid out as rich text: a
// 99-track table through QTextDocument's pagination took over a second, and
// here the table's header goes on top of every page by construction.

namespace {

constexpr qreal kMarginMm = 12.0;
constexpr qreal kCellPadPt = 2.5;
constexpr int kTruePeakColumn = 14;
constexpr int kFirstTimeColumn = 2;
constexpr int kLastTimeColumn = 4;
constexpr int kFirstTextColumn = 7; // Title
constexpr int kLastTextColumn = 12; // Message

struct Cell
{
    QString text;
    QColor color = Qt::black;
    bool bold = false;
};

struct Table
{
    QStringList header;
    std::vector<bool> mono;  // per column: times in a fixed-width font
    std::vector<bool> wraps; // per column: text that may wrap
    std::vector<std::vector<Cell>> rows;
    std::vector<bool> shaded; // per row: pause rows drawn grey
};

// One line of the drawing, placed on a page at a height.
struct Item
{
    enum Kind
    {
        Title,
        Field,   // caption and value
        Heading, // a section's name
        TableHeader,
        TableRow,
    };
    Kind kind;
    const Table* table = nullptr;
    int row = 0;
    QString caption;
    QString value;
    qreal height = 0;
};

class PdfSheet
{
public:
    PdfSheet(QPdfWriter& writer, const PqSheet& sheet) : m_writer(writer), m_sheet(sheet)
    {
        const qreal dpi = writer.resolution();
        m_pt = dpi / 72.0;
        // The writer's painter starts at the margins already: only the size
        // of the printable area counts here.
        m_page = QRectF(QPointF(0, 0),
                        QSizeF(writer.pageLayout().paintRectPixels(writer.resolution()).size()));
        m_body = QFont(QStringLiteral("Liberation Sans"));
        m_body.setStyleHint(QFont::SansSerif);
        m_body.setPointSizeF(7.5);
        m_bold = m_body;
        m_bold.setBold(true);
        m_mono = QFont(QStringLiteral("Liberation Mono"));
        m_mono.setStyleHint(QFont::Monospace);
        m_mono.setPointSizeF(7.5);
        m_title = m_bold;
        m_title.setPointSizeF(14);
        m_heading = m_bold;
        m_heading.setPointSizeF(10);
    }

    void render()
    {
        buildTables();
        layOut();
        QPainter painter(&m_writer);
        for (std::size_t page = 0; page < m_pages.size(); ++page) {
            if (page > 0)
                m_writer.newPage();
            drawPage(painter, page);
        }
    }

private:
    QFontMetricsF metrics(const QFont& font) const { return QFontMetricsF(font, &m_writer); }
    qreal pt(qreal points) const { return points * m_pt; }

    const QFont& cellFont(const Table& table, std::size_t column, bool bold) const
    {
        if (bold)
            return m_bold;
        return table.mono[column] ? m_mono : m_body;
    }

    void buildTables()
    {
        const QStringList names = PqSheet::columnNames();
        const std::vector<int> shown = m_sheet.shownColumns();
        for (int column : shown) {
            m_tracks.header << names.at(column);
            m_tracks.mono.push_back(column >= kFirstTimeColumn && column <= kLastTimeColumn);
            m_tracks.wraps.push_back(column >= kFirstTextColumn && column <= kLastTextColumn);
        }
        for (const PqSheetRow& row : m_sheet.rows) {
            const QStringList cells = m_sheet.cells(row);
            std::vector<Cell> out;
            const bool pause = !row.leadOut && row.index == 0;
            for (int column : shown) {
                Cell cell{cells.at(column), pause ? QColor(0x55, 0x55, 0x55) : QColor(Qt::black)};
                if (column == kTruePeakColumn && row.truePeakNeedsLook()) {
                    cell.color = QColor(0xb0, 0, 0);
                    cell.bold = true;
                }
                out.push_back(cell);
            }
            m_tracks.rows.push_back(out);
            m_tracks.shaded.push_back(pause);
        }
        m_findings.header = QStringList{QStringLiteral("Severity"), QStringLiteral("Track"),
                                        QStringLiteral("Id"), QStringLiteral("Finding")};
        m_findings.mono = {false, false, false, false};
        m_findings.wraps = {false, false, false, true};
        for (const Finding& finding : m_sheet.findings) {
            const QColor color = finding.severity == Finding::Error     ? QColor(0xb0, 0, 0)
                                 : finding.severity == Finding::Warning ? QColor(0x9a, 0x5b, 0)
                                                                        : QColor(Qt::black);
            m_findings.rows.push_back(
                {{QString::fromLatin1(severityName(finding.severity)), color,
                  finding.severity == Finding::Error},
                 {finding.track > 0 ? QString::number(finding.track) : QStringLiteral("disc")},
                 {QString::fromStdString(finding.id)},
                 {finding.text}});
            m_findings.shaded.push_back(false);
        }
        m_files.header =
            QStringList{QStringLiteral("File"), QStringLiteral("Bytes"), QStringLiteral("MD5")};
        m_files.mono = {false, true, true};
        m_files.wraps = {false, false, false};
        for (const PqSheetFile& file : m_sheet.files) {
            m_files.rows.push_back({{file.name},
                                    {QString::number(file.size)},
                                    {file.md5.isEmpty() ? QStringLiteral("-") : file.md5}});
            m_files.shaded.push_back(false);
        }
        for (Table* table : {&m_tracks, &m_findings, &m_files})
            m_widths[table] = columnWidths(*table);
    }

    // Each column as wide as its widest cell; the columns that wrap give up
    // (or take) the difference to the page's width, in proportion.
    std::vector<qreal> columnWidths(const Table& table) const
    {
        const std::size_t count = std::size_t(table.header.size());
        std::vector<qreal> widths(count, 0);
        for (std::size_t c = 0; c < count; ++c) {
            widths[c] = metrics(m_bold).horizontalAdvance(table.header.at(int(c)));
            for (const std::vector<Cell>& row : table.rows)
                widths[c] = std::max(
                    widths[c],
                    metrics(cellFont(table, c, row[c].bold)).horizontalAdvance(row[c].text));
            widths[c] += 2 * pt(kCellPadPt) + 1;
        }
        const qreal total = std::accumulate(widths.begin(), widths.end(), 0.0);
        const qreal available = m_page.width();
        // Wrapping columns also take what the page has to spare, so that
        // a table with text fills the width.
        if (total != available) {
            qreal wrapping = 0;
            for (std::size_t c = 0; c < count; ++c)
                if (table.wraps[c])
                    wrapping += widths[c];
            const qreal fixed = total - wrapping;
            const qreal scale = wrapping > 0 ? std::max(0.05, (available - fixed) / wrapping) : 1.0;
            for (std::size_t c = 0; c < count; ++c)
                if (table.wraps[c])
                    widths[c] *= scale;
        }
        return widths;
    }

    qreal rowHeight(const Table& table, int row) const
    {
        const std::vector<qreal>& widths = m_widths.at(&table);
        qreal height = metrics(m_body).height();
        for (std::size_t c = 0; c < widths.size(); ++c) {
            const bool header = row < 0;
            const QString text =
                header ? table.header.at(int(c)) : table.rows[std::size_t(row)][c].text;
            const QFont& font =
                header ? m_bold : cellFont(table, c, table.rows[std::size_t(row)][c].bold);
            if (!table.wraps[c] || text.isEmpty())
                continue;
            const QRectF box(0, 0, widths[c] - 2 * pt(kCellPadPt), 1e9);
            height =
                std::max(height, metrics(font).boundingRect(box, Qt::TextWordWrap, text).height());
        }
        return height + 2 * pt(kCellPadPt);
    }

    void layOut()
    {
        std::vector<Item> items;
        items.push_back({Item::Title,
                         nullptr,
                         0,
                         {},
                         QStringLiteral("PQ Sheet"),
                         metrics(m_title).height() + pt(4)});
        for (const auto& field : m_sheet.headerFields())
            items.push_back({Item::Field, nullptr, 0, field.first, field.second,
                             metrics(m_body).height() + pt(1)});

        auto table = [&](const QString& name, const Table& t) {
            if (t.rows.empty())
                return;
            items.push_back(
                {Item::Heading, nullptr, 0, {}, name, metrics(m_heading).height() + pt(8)});
            items.push_back({Item::TableHeader, &t, -1, {}, {}, rowHeight(t, -1)});
            for (int r = 0; r < int(t.rows.size()); ++r)
                items.push_back({Item::TableRow, &t, r, {}, {}, rowHeight(t, r)});
        };
        table(QStringLiteral("Tracks"), m_tracks);
        table(QStringLiteral("Disc check"), m_findings);
        table(QStringLiteral("Files"), m_files);

        // Pages, keeping room for the footer; a table that runs over starts
        // the next page with its header again, and a heading never ends a page.
        const qreal bottom = m_page.height() - metrics(m_body).height() - pt(6);
        m_pages.emplace_back();
        qreal y = 0;
        for (std::size_t i = 0; i < items.size(); ++i) {
            Item item = items[i];
            qreal need = item.height;
            if (item.kind == Item::Heading && i + 2 < items.size())
                need += items[i + 1].height + items[i + 2].height;
            if (y + need > bottom && y > 0) {
                m_pages.emplace_back();
                y = 0;
                if (item.kind == Item::TableRow) {
                    const Table& t = *item.table;
                    m_pages.back().push_back({Item::TableHeader, &t, -1, {}, {}, rowHeight(t, -1)});
                    y += m_pages.back().back().height;
                }
            }
            m_pages.back().push_back(item);
            y += item.height;
        }
    }

    void drawPage(QPainter& painter, std::size_t page)
    {
        qreal y = 0;
        painter.save();
        for (const Item& item : m_pages[page]) {
            switch (item.kind) {
            case Item::Title:
                painter.setFont(m_title);
                painter.setPen(Qt::black);
                painter.drawText(QRectF(0, y, m_page.width(), item.height),
                                 Qt::AlignLeft | Qt::AlignTop, item.value);
                break;
            case Item::Field:
                painter.setFont(m_bold);
                painter.setPen(Qt::black);
                painter.drawText(QRectF(0, y, pt(60), item.height), Qt::AlignLeft | Qt::AlignTop,
                                 item.caption);
                painter.setFont(m_body);
                painter.drawText(QRectF(pt(60), y, m_page.width() - pt(60), item.height),
                                 Qt::AlignLeft | Qt::AlignTop, item.value);
                break;
            case Item::Heading:
                painter.setFont(m_heading);
                painter.setPen(Qt::black);
                painter.drawText(QRectF(0, y + pt(6), m_page.width(), item.height - pt(6)),
                                 Qt::AlignLeft | Qt::AlignTop, item.value);
                break;
            case Item::TableHeader:
            case Item::TableRow:
                drawRow(painter, *item.table, item.row, y, item.height);
                break;
            }
            y += item.height;
        }
        painter.restore();
        // Footer: which sheet and which page, for a stack of printed pages.
        painter.setFont(m_body);
        painter.setPen(QColor(0x55, 0x55, 0x55));
        const QString album = m_sheet.albumTitle.isEmpty()
                                  ? m_sheet.imageFiles.join(QStringLiteral(", "))
                                  : m_sheet.albumTitle;
        const QRectF footer(m_page.left(), m_page.bottom() - metrics(m_body).height(),
                            m_page.width(), metrics(m_body).height());
        painter.drawText(footer, Qt::AlignLeft | Qt::AlignBottom,
                         QStringLiteral("PQ Sheet \u00b7 %1 \u00b7 %2")
                             .arg(album, m_sheet.date.toString(Qt::ISODate)));
        painter.drawText(footer, Qt::AlignRight | Qt::AlignBottom,
                         QStringLiteral("Page %1 of %2").arg(page + 1).arg(m_pages.size()));
    }

    void drawRow(QPainter& painter, const Table& table, int row, qreal y, qreal height)
    {
        const std::vector<qreal>& widths = m_widths.at(&table);
        const bool header = row < 0;
        qreal x = 0;
        const qreal total = std::accumulate(widths.begin(), widths.end(), 0.0);
        if (header)
            painter.fillRect(QRectF(0, y, total, height), QColor(0xe4, 0xe4, 0xe4));
        else if (table.shaded[std::size_t(row)])
            painter.fillRect(QRectF(0, y, total, height), QColor(0xf4, 0xf4, 0xf4));
        QPen grid(QColor(0x99, 0x99, 0x99));
        grid.setWidthF(pt(0.4));
        for (std::size_t c = 0; c < widths.size(); ++c) {
            const QRectF cell(x, y, widths[c], height);
            const QRectF inner =
                cell.adjusted(pt(kCellPadPt), pt(kCellPadPt), -pt(kCellPadPt), -pt(kCellPadPt));
            if (header) {
                painter.setFont(m_bold);
                painter.setPen(Qt::black);
                painter.drawText(inner, Qt::AlignLeft | Qt::AlignTop, table.header.at(int(c)));
            } else {
                const Cell& content = table.rows[std::size_t(row)][c];
                painter.setFont(cellFont(table, c, content.bold));
                painter.setPen(content.color);
                painter.drawText(
                    inner, Qt::AlignLeft | Qt::AlignTop | (table.wraps[c] ? Qt::TextWordWrap : 0),
                    content.text);
            }
            painter.setPen(grid);
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(cell);
            x += widths[c];
        }
    }

    QPdfWriter& m_writer;
    const PqSheet& m_sheet;
    qreal m_pt = 1;
    QRectF m_page;
    QFont m_body, m_bold, m_mono, m_title, m_heading;
    Table m_tracks, m_findings, m_files;
    std::map<const Table*, std::vector<qreal>> m_widths;
    std::vector<std::vector<Item>> m_pages;
};

} // namespace

QPageSize defaultPqSheetPageSize()
{
    const QLocale::MeasurementSystem system = QLocale().measurementSystem();
    return QPageSize(system == QLocale::ImperialUSSystem ? QPageSize::Letter : QPageSize::A4);
}

bool writePqSheetPdfTo(const PqSheet& sheet, QIODevice* device, const QPageSize& pageSize)
{
    QPdfWriter writer(device);
    writer.setCreator(QStringLiteral("Tivora"));
    writer.setTitle(QStringLiteral("PQ Sheet %1").arg(sheet.albumTitle));
    writer.setResolution(600);
    // Landscape: the table has up to fifteen columns.
    writer.setPageLayout(QPageLayout(pageSize, QPageLayout::Landscape,
                                     QMarginsF(kMarginMm, kMarginMm, kMarginMm, kMarginMm),
                                     QPageLayout::Millimeter));
    PdfSheet(writer, sheet).render();
    return true;
}
