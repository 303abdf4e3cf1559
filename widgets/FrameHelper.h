#pragma once

#include "widgets/FrameHit.h"

#include <QObject>
#include <QPointer>

#include <QWidget>
class QMouseEvent;

// Moves and resizes the frameless main window. The window has no system
// title bar or border, so the program tells the window system where it may be
// dragged (the top strip and the bare drag-area widget) and resized (5-pixel
// margins). On Windows the decision answers WM_NCHITTEST and friends through
// the window's native event hook; elsewhere a press in those places hands the
// move or resize to the window system (QWindow::startSystemMove/Resize) and
// the cursor shows the resize direction over the margins.
class FrameHelper : public QObject
{
    Q_OBJECT
public:
    explicit FrameHelper(QWidget* window);
    ~FrameHelper() override;

    void setDragAreaWidget(QWidget* widget);
    QWidget* dragAreaWidget() const { return m_dragArea; }

    // The main window's nativeEvent passes every message here first; true
    // when the message was consumed and `result` holds the answer.
    bool handleNativeEvent(const QByteArray& eventType, void* message, long* result);

    // The hit test at a global position (logical pixels), with the drag-area
    // check made against the widget that lies there.
    FrameHit hitAt(QPoint globalPos) const;

signals:
    // Asked for by the keyboard-free resize paths; the window resizes itself.
    void resize(int deltaX, int deltaY);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool belongsToWindow(QObject* object) const;
    bool handleMousePress(QMouseEvent* event);
    void updateCursor(QPoint globalPos);
    int ratio() const;

    QWidget* m_window;
    QPointer<QWidget> m_dragArea;
    bool m_cursorOverridden = false;
};
