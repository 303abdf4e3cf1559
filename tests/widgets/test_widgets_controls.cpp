// The small widgets: seek slider, labels, info box, row popup, resources,
// pixmaps, style and the about dialog.

#include "ddp/DDPModel.h"
#include "widgets/AboutDialog.h"
#include "widgets/ClickableLabel.h"
#include "widgets/ContextMenuEventFilter.h"
#include "widgets/CustomStyle.h"
#include "widgets/FontTable.h"
#include "widgets/InfoBoxWidget.h"
#include "widgets/PixmapRoutines.h"
#include "widgets/Resources.h"
#include "widgets/SeekSlider.h"
#include "widgets/TimeWidget.h"
#include "widgets/ToolTipWidget.h"
#include "widgets/TransportButton.h"
#include "widgets/TransportWidget.h"
#include "widgets/VolumeSliderWidget.h"

#include <QContextMenuEvent>
#include <QFile>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>

#include <cstring>
#include <stdexcept>

namespace {

PqEntry entryWithUpc(const char* upc)
{
    PqEntry e;
    e.bytes.fill(' ');
    const std::string code(upc);
    std::copy(code.begin(), code.end(), e.bytes.begin() + 32);
    return e;
}

CdTextRecord albumText(const char* title, const char* performer, const char* code)
{
    CdTextRecord record;
    record.tracks.resize(2);
    auto put = [](CdTextRecord::Slot& slot, const char* text) {
        slot.fill(0);
        std::copy(text, text + std::strlen(text), slot.begin());
    };
    put(record.tracks[0][CdTextRecord::Title], title);
    put(record.tracks[0][CdTextRecord::Performer], performer);
    put(record.tracks[0][CdTextRecord::Code], code);
    return record;
}

// `tinted` keeps the shape (alpha) of `shape`; its opaque pixels are all
// `colour`. Counts the opaque pixels into `opaque`.
void compareTint(const QImage& shape, const QImage& tinted, const QColor& colour, int* opaque)
{
    *opaque = 0;
    for (int y = 0; y < shape.height(); ++y)
        for (int x = 0; x < shape.width(); ++x) {
            QCOMPARE(tinted.pixelColor(x, y).alpha(), shape.pixelColor(x, y).alpha());
            if (tinted.pixelColor(x, y).alpha() == 255) {
                ++*opaque;
                QCOMPARE(tinted.pixelColor(x, y).rgb(), colour.rgb());
            }
        }
}

} // namespace

class TestControls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }

    void seekSliderJumpsToTheClick_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("expected");
        QTest::newRow("x = 0: minimum") << 0 << 0;
        QTest::newRow("middle") << 200 << 5000;
        QTest::newRow("quarter, truncated") << 101 << 2525;
        QTest::newRow("right edge: maximum") << 400 << 10000;
    }

    void seekSliderJumpsToTheClick()
    {
        QFETCH(int, x);
        QFETCH(int, expected);
        SeekSlider slider(Qt::Horizontal);
        slider.setRange(0, 10000);
        slider.resize(400, 14);
        QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(x, 7));
        QCOMPARE(slider.value(), expected);
        // Down from press to release, so the window leaves it alone meanwhile.
        QVERIFY(slider.isSliderDown());
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(x, 7));
        QVERIFY(!slider.isSliderDown());
        QCOMPARE(slider.value(), expected);
    }

    void seekSliderVerticalAndOtherButtons()
    {
        SeekSlider vertical(Qt::Vertical);
        vertical.setRange(-100, 100);
        vertical.resize(14, 200);
        QCOMPARE(vertical.valueAt(QPoint(7, 200)), -100);
        QCOMPARE(vertical.valueAt(QPoint(7, 0)), 100);
        QCOMPARE(vertical.valueAt(QPoint(7, 50)), 50);

        SeekSlider slider(Qt::Horizontal);
        slider.setRange(0, 10000);
        slider.resize(400, 14);
        slider.setValue(1234);
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(300, 7), Qt::RightButton,
                          Qt::RightButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&slider, &press);
        QVERIFY(slider.isSliderDown());
        QCOMPARE(slider.value(), 1234);
    }

    void clickableLabelAnyButton()
    {
        ClickableLabel label;
        QSignalSpy clicked(&label, &ClickableLabel::clicked);
        QTest::mousePress(&label, Qt::LeftButton);
        QTest::mousePress(&label, Qt::RightButton);
        QTest::mousePress(&label, Qt::MiddleButton);
        QCOMPARE(clicked.size(), 3);
    }

    void timeVolumeAndTransportTexts()
    {
        TimeWidget time;
        time.setTrackTime(3725);
        time.setCdTime(59);
        time.setTrackNumber(7);
        QCOMPARE(time.timeLabel()->text(), QStringLiteral("62:05"));
        QCOMPARE(time.cdTimeLabel()->text(), QStringLiteral("00:59"));
        QCOMPARE(time.trackLabel()->text(), QStringLiteral("07"));

        VolumeSliderWidget volume;
        volume.setDisplayedValue(4567);
        QCOMPARE(volume.volumeValueLabel()->text(), QStringLiteral("45 %"));

        // The transport controller finds the buttons by these names.
        TransportWidget transport;
        const char* names[] = {"backButton", "nextButton", "stopButton", "playButton"};
        const QList<TransportButton*> buttons = transport.findChildren<TransportButton*>();
        QCOMPARE(buttons.size(), 4);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(buttons.at(i)->objectName(), QString::fromLatin1(names[i]));
            QVERIFY(!buttons.at(i)->icon().isNull());
        }
    }

    void infoBoxValues()
    {
        InfoBoxWidget box;

        // Without CD-Text: the first non-blank UPC/EAN of the PQ entries
        // (the lead-in entry on real discs), else the DDPID's.
        DDPModel plain;
        plain.setEntries({entryWithUpc("             "), entryWithUpc("4006381333931")});
        plain.setDdpIdUpcEan("1111111111111");
        box.setModel(plain);
        QCOMPARE(box.upcEanLabel()->text(), QStringLiteral("4006381333931"));
        QCOMPARE(box.artistLabel()->text(), QStringLiteral("-"));
        QCOMPARE(box.albumLabel()->text(), QStringLiteral("-"));

        DDPModel ddpIdOnly;
        ddpIdOnly.setEntries({entryWithUpc("             ")});
        ddpIdOnly.setDdpIdUpcEan("1111111111111");
        box.setModel(ddpIdOnly);
        QCOMPARE(box.upcEanLabel()->text(), QStringLiteral("1111111111111"));

        DDPModel nothing;
        box.setModel(nothing);
        QCOMPARE(box.upcEanLabel()->text(), QStringLiteral("-"));

        // With CD-Text: the album record's performer, title and code.
        DDPModel withText;
        withText.setCdText(albumText("Night Drive", "The Quiet Ones", "0724384960650"));
        withText.setEntries({entryWithUpc("4006381333931")});
        box.setModel(withText);
        QCOMPARE(box.artistLabel()->text(), QStringLiteral("The Quiet Ones"));
        QCOMPARE(box.albumLabel()->text(), QStringLiteral("Night Drive"));
        QCOMPARE(box.upcEanLabel()->text(), QStringLiteral("0724384960650"));

        // A blank album code falls back to the PQ entries; blank strings read "-".
        DDPModel blankCode;
        blankCode.setCdText(albumText("", "Solo", ""));
        blankCode.setEntries({entryWithUpc("4006381333931")});
        box.setModel(blankCode);
        QCOMPARE(box.upcEanLabel()->text(), QStringLiteral("4006381333931"));
        QCOMPARE(box.albumLabel()->text(), QStringLiteral("-"));

        // Single-byte CD-Text is ISO 8859-1, and markup-like text is text.
        DDPModel latin;
        latin.setCdText(albumText("Caf\xe9 <I> Tour", "Bj\xf6rk", ""));
        box.setModel(latin);
        QCOMPARE(box.artistLabel()->text(), QStringLiteral("Bj\u00f6rk"));
        QCOMPARE(box.albumLabel()->text(), QStringLiteral("Caf\u00e9 <I> Tour"));
        QCOMPARE(box.albumLabel()->textFormat(), Qt::PlainText);
        QVERIFY(box.statusLabel()->isHidden());

        // An image shorter than the PQ says is named under the values, and
        // the line goes with the next disc.
        DDPModel cut;
        cut.setEntries({entryWithUpc("             ")});
        cut.setImageExtent(1000, 1000 + 176400);
        box.setModel(cut);
        QVERIFY(!box.statusLabel()->isHidden());
        QVERIFY(
            box.statusLabel()->text().contains(QStringLiteral("176400 bytes (1.00 s) shorter")));
        box.setModel(latin);
        QVERIFY(box.statusLabel()->isHidden());
    }

    // However long and however many, the notes about a disc take a line
    // each and at most two from the table, so that the smallest window keeps
    // its rows; every note stays whole in the text and the tool tip.
    void infoBoxNotesKeepTheirHeight()
    {
        InfoBoxWidget box;
        box.resize(466, 120);
        const int line = box.statusLabel()->fontMetrics().lineSpacing();
        ImageLayout layout;
        layout.skipped = {{"ENHANCED_DATA_SESSION.DAT", "M1"}};
        DDPModel data;
        data.setImageLayout(layout);
        box.setModel(data);
        QVERIFY(!box.statusLabel()->isHidden());
        QVERIFY(box.statusLabel()->text().contains(QStringLiteral("ENHANCED_DATA_SESSION.DAT")));
        QCOMPARE(box.statusLabel()->sizeHint().height(), line); // not wrapped at 466

        DDPModel three;
        three.setImageExtent(1000, 1000 + 176400);
        CdTextRecord longText = albumText("Long", "Text", "");
        longText.largestBlockPacks = 305;
        three.setCdText(longText);
        three.setImageLayout(layout);
        box.setModel(three);
        QCOMPARE(box.statusLabel()->sizeHint().height(), 2 * line);
        // CD-Text too long for the lead-in is a line of its own, under the
        // short image's; 256 packs still fit.
        const QStringList lines = box.statusLabel()->text().split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).contains(QStringLiteral("shorter")));
        QVERIFY(lines.at(1).contains(QStringLiteral("305 packs")));
        const QString tip = box.statusLabel()->toolTip();
        for (const char* note : {"shorter", "305 packs", "ENHANCED_DATA_SESSION.DAT"})
            QVERIFY2(tip.contains(QLatin1String(note)), note);
        longText.largestBlockPacks = 256;
        three.setCdText(longText);
        box.setModel(three);
        QVERIFY(!box.statusLabel()->text().contains(QStringLiteral("packs")));

        box.setModel(DDPModel());
        QVERIFY(box.statusLabel()->isHidden());
        QVERIFY(box.statusLabel()->toolTip().isEmpty());
    }

    void fontTable()
    {
        QVERIFY(FontTable::font(1, true).bold());
        QVERIFY(!FontTable::font(1).bold()); // a copy: the table is not changed
        QVERIFY_EXCEPTION_THROWN(FontTable::font(4), std::out_of_range);
    }

    void everyResourceNameResolves()
    {
        const char* names[] = {
            ":menu_icon",    ":/open_icon",    ":track_icon", ":rest_icon",     ":/play_icon",
            ":about_dialog", ":minimize_icon", ":close_icon", ":/devices_icon", ":/attributes_icon",
            ":save_icon",    ":/about_icon",   ":info_icon",  ":/back_icon",    ":/next_icon",
            ":/stop_icon",   ":critical_icon"};
        for (const char* name : names) {
            const QString path = QString::fromLatin1(name);
            QVERIFY2(QFile::exists(path), name);
            const QPixmap pm = QIcon(path).pixmap(QSize(32, 32));
            QVERIFY2(!pm.isNull(), name);
        }
    }

    void pixmapRoutines()
    {
        const QPixmap save = renderIcon(QStringLiteral(":save_icon"), QSize(38, 38));
        QCOMPARE(save.size(), QSize(38, 38));
        const QPixmap tinted = tintPixmap(save, QColor(109, 109, 109));
        int opaque = 0;
        compareTint(save.toImage(), tinted.toImage(), QColor(109, 109, 109), &opaque);
        QVERIFY(opaque > 20);
        const QImage missing = renderIcon(QStringLiteral(":no_such_icon"), QSize(8, 8)).toImage();
        QCOMPARE(missing.pixelColor(4, 4).alpha(), 0);
    }

    void aboutDialog()
    {
        QWidget window;
        window.setGeometry(300, 200, 800, 600);
        AboutDialog dialog(&window);
        QVERIFY(dialog.versionLabel()->text().startsWith(QLatin1String("Tivora ")));
        // Centred on its window, with both corners' controls inside it.
        const QPoint centre = window.mapToGlobal(window.rect().center());
        QCOMPARE(dialog.pos(), centre - QPoint(dialog.width() / 2, dialog.height() / 2));
        QVERIFY(dialog.rect().contains(dialog.closeButton()->geometry()));
        QVERIFY(dialog.rect().contains(dialog.versionLabel()->geometry()));
        dialog.show();
        QVERIFY(dialog.isVisible());
        dialog.closeButton()->click();
        QVERIFY(!dialog.isVisible());
    }

    void rowPopupListsEveryValue()
    {
        QStandardItemModel model(2, 4);
        model.setHorizontalHeaderLabels({QStringLiteral("Type"), QStringLiteral("Track"),
                                         QStringLiteral("Title"), QStringLiteral("ISRC")});
        model.setItem(1, 1, new QStandardItem(QStringLiteral("02")));
        model.setItem(1, 2, new QStandardItem(QStringLiteral("Second")));
        QToolButton anchor;
        anchor.setCheckable(true);
        anchor.setChecked(true);
        auto* popup = new ToolTipWidget(&model, 1, nullptr, &anchor);
        const QList<QPair<QString, QString>> expected{
            {QStringLiteral("Track"), QStringLiteral("02")},
            {QStringLiteral("Title"), QStringLiteral("Second")},
            {QStringLiteral("ISRC"), QStringLiteral("-")}};
        QCOMPARE(popup->rows(), expected);
        popup->showAt(QPoint(10, 10));
        popup->close();
        QVERIFY(!anchor.isChecked());
        // A row that does not exist shows nothing rather than failing.
        ToolTipWidget none(&model, 9);
        QVERIFY(none.rows().isEmpty());
    }

    // The popup's frame-exact start and duration: frames borrow across the
    // second, and the total row past the last track has neither.
    void rowPopupFrameTimes()
    {
        auto entry = [](const char* track, int index, int m, int s, int f) {
            return PqEntry::fromBytes(
                QString::asprintf("VVVS%s%02d00%02d%02d%02d0100", track, index, m, s, f)
                    .toStdString());
        };
        DDPModel model;
        model.setEntries({entry("00", 0, 0, 0, 0), entry("01", 0, 0, 0, 0), entry("01", 1, 0, 2, 0),
                          entry("01", 2, 3, 10, 37), entry("02", 1, 4, 59, 74),
                          entry("AA", 1, 74, 59, 74), entry("AA", 0, 74, 59, 74)});
        for (std::uint32_t index : {0u, 1u, 2u, 1u})
            model.appendIndex(index); // a first row that is a pause: entry 1
        using Rows = ToolTipWidget::Rows;
        auto times = [](const char* start, const char* duration) {
            return Rows{{QStringLiteral("Start (MM:SS:FF)"), QString::fromLatin1(start)},
                        {QStringLiteral("Duration (MM:SS:FF)"), QString::fromLatin1(duration)}};
        };
        QCOMPARE(ToolTipWidget::frameTimeRows(model, 0), times("00:00:00", "00:02:00"));
        QCOMPARE(ToolTipWidget::frameTimeRows(model, 2), times("03:10:37", "01:49:37"));
        QCOMPARE(ToolTipWidget::frameTimeRows(model, 3), times("04:59:74", "70:00:00"));
        QVERIFY(ToolTipWidget::frameTimeRows(model, 4).isEmpty());
        QVERIFY(ToolTipWidget::frameTimeRows(model, -1).isEmpty());

        QStandardItemModel table(1, 2);
        table.setHorizontalHeaderLabels({QStringLiteral("Type"), QStringLiteral("Track")});
        table.setItem(0, 1, new QStandardItem(QStringLiteral("01")));
        ToolTipWidget popup(&table, 0, nullptr, nullptr, ToolTipWidget::frameTimeRows(model, 0));
        const Rows expected =
            Rows{{QStringLiteral("Track"), QStringLiteral("01")}} + times("00:00:00", "00:02:00");
        QCOMPARE(popup.rows(), expected);
    }

    void styleRules()
    {
        CustomStyle style;
        // Hover tracking where the look depends on it.
        QScrollBar bar;
        QPushButton push;
        QHeaderView header(Qt::Horizontal);
        for (QWidget* w : std::initializer_list<QWidget*>{&bar, &push, &header}) {
            w->setAttribute(Qt::WA_Hover, false);
            style.polish(w);
            QVERIFY(w->testAttribute(Qt::WA_Hover));
        }
        // The current row's icon turns white, keeping its shape.
        const QPixmap icon = renderIcon(QStringLiteral(":track_icon"), QSize(24, 24));
        const QImage selected = style.generatedIconPixmap(QIcon::Selected, icon, nullptr).toImage();
        int opaque = 0;
        compareTint(icon.toImage(), selected, Qt::white, &opaque);
        // The seek slider's exact mapping survives the style: QSlider asks
        // for absolute-set buttons without naming the slider, so a style
        // that granted them would move the handle a second time.
        SeekSlider seek(Qt::Horizontal);
        seek.setStyle(&style);
        seek.setRange(0, 10000);
        seek.resize(400, 14);
        for (int x : {101, 399}) {
            QTest::mousePress(&seek, Qt::LeftButton, {}, QPoint(x, 7));
            QCOMPARE(seek.value(), x * 10000 / 400);
            QTest::mouseRelease(&seek, Qt::LeftButton, {}, QPoint(x, 7));
            QCOMPARE(seek.value(), x * 10000 / 400);
        }
        seek.setStyle(nullptr);
    }

    void contextMenuEventsAreSwallowed()
    {
        QLabel target;
        ContextMenuEventFilter filter;
        target.installEventFilter(&filter);
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(1, 1));
        QVERIFY(filter.eventFilter(&target, &event));
        QMouseEvent other(QEvent::MouseButtonPress, QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QVERIFY(!filter.eventFilter(&target, &other));
    }
};

QTEST_MAIN(TestControls)
#include "test_widgets_controls.moc"
