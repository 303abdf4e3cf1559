// Where the frameless window can be dragged and resized.
#include "widgets/FrameHit.h"

#include <QtTest>

class FrameHitTest : public QObject
{
    Q_OBJECT
private slots:
    void edgesAndCorners_data()
    {
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<int>("ratio");
        QTest::addColumn<int>("expected");
        QTest::newRow("left edge mid-height") << QPoint(3, 351) << 1 << int(FrameHit::Left);
        QTest::newRow("right edge") << QPoint(463, 351) << 1 << int(FrameHit::Right);
        QTest::newRow("bottom edge") << QPoint(200, 699) << 1 << int(FrameHit::Bottom);
        QTest::newRow("top edge") << QPoint(200, 2) << 1 << int(FrameHit::Top);
        QTest::newRow("bottom-left corner") << QPoint(3, 699) << 1 << int(FrameHit::BottomLeft);
        QTest::newRow("bottom-right corner") << QPoint(463, 699) << 1 << int(FrameHit::BottomRight);
        QTest::newRow("top-left corner") << QPoint(2, 2) << 1 << int(FrameHit::TopLeft);
        QTest::newRow("top-right corner") << QPoint(464, 2) << 1 << int(FrameHit::TopRight);
        QTest::newRow("inside") << QPoint(200, 300) << 1 << int(FrameHit::None);
        QTest::newRow("margin is 10 at ratio 2") << QPoint(9, 702) << 2 << int(FrameHit::Left);
        QTest::newRow("past the margin at ratio 2") << QPoint(10, 702) << 2 << int(FrameHit::None);
    }
    void edgesAndCorners()
    {
        QFETCH(QPoint, pos);
        QFETCH(int, ratio);
        QFETCH(int, expected);
        const QSize size = QSize(466, 702) * ratio;
        QCOMPARE(int(frameHitTest(pos, size, ratio, DragAreaUnderCursor::Other)), expected);
    }

    void dragStripAndBand()
    {
        const QSize size(466, 702);
        // The top strip drags whatever lies there.
        QCOMPARE(frameHitTest({100, 8}, size, 1, DragAreaUnderCursor::Other), FrameHit::Caption);
        // Below it, only the bare drag area drags; its buttons keep their clicks.
        QCOMPARE(frameHitTest({100, 30}, size, 1, DragAreaUnderCursor::DragArea),
                 FrameHit::Caption);
        QCOMPARE(frameHitTest({100, 30}, size, 1, DragAreaUnderCursor::Other), FrameHit::None);
        QCOMPARE(frameHitTest({100, 30}, size, 1, DragAreaUnderCursor::NotRegistered),
                 FrameHit::Caption);
        QCOMPARE(frameHitTest({100, 41}, size, 1, DragAreaUnderCursor::DragArea), FrameHit::None);
        // At ratio 2 the strip is 22 and the band 80 device pixels.
        const QSize big = size * 2;
        QCOMPARE(frameHitTest({200, 22}, big, 2, DragAreaUnderCursor::Other), FrameHit::Caption);
        QCOMPARE(frameHitTest({200, 23}, big, 2, DragAreaUnderCursor::Other), FrameHit::None);
        QCOMPARE(frameHitTest({200, 80}, big, 2, DragAreaUnderCursor::DragArea), FrameHit::Caption);
        QCOMPARE(frameHitTest({200, 81}, big, 2, DragAreaUnderCursor::DragArea), FrameHit::None);
        // The top margin still resizes above the strip.
        QCOMPARE(frameHitTest({100, 4}, size, 1, DragAreaUnderCursor::Other), FrameHit::Top);
    }
};

QTEST_APPLESS_MAIN(FrameHitTest)
#include "test_frame_hit.moc"
