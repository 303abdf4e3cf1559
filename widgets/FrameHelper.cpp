#include "widgets/FrameHelper.h"

#include <QApplication>
#include <QCursor>
#include <QMouseEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <cmath>

#ifdef Q_OS_WIN
#include <windows.h>
#include <windowsx.h>
#endif

namespace {

Qt::Edges edgesFor(FrameHit hit)
{
    switch (hit) {
    case FrameHit::Left:
        return Qt::LeftEdge;
    case FrameHit::Right:
        return Qt::RightEdge;
    case FrameHit::Top:
        return Qt::TopEdge;
    case FrameHit::Bottom:
        return Qt::BottomEdge;
    case FrameHit::TopLeft:
        return Qt::TopEdge | Qt::LeftEdge;
    case FrameHit::TopRight:
        return Qt::TopEdge | Qt::RightEdge;
    case FrameHit::BottomLeft:
        return Qt::BottomEdge | Qt::LeftEdge;
    case FrameHit::BottomRight:
        return Qt::BottomEdge | Qt::RightEdge;
    case FrameHit::None:
    case FrameHit::Caption:
        break;
    }
    return {};
}

Qt::CursorShape cursorFor(FrameHit hit)
{
    switch (hit) {
    case FrameHit::Left:
    case FrameHit::Right:
        return Qt::SizeHorCursor;
    case FrameHit::Top:
    case FrameHit::Bottom:
        return Qt::SizeVerCursor;
    case FrameHit::TopLeft:
    case FrameHit::BottomRight:
        return Qt::SizeFDiagCursor;
    case FrameHit::TopRight:
    case FrameHit::BottomLeft:
        return Qt::SizeBDiagCursor;
    case FrameHit::None:
    case FrameHit::Caption:
        break;
    }
    return Qt::ArrowCursor;
}

} // namespace

FrameHelper::FrameHelper(QWidget* window) : QObject(window), m_window(window)
{
    // The smallest window is 466 x 400 logical pixels, which Qt scales to
    // device pixels by the ratio.
    m_window->setMinimumSize(kFrameMinimumWidth, kFrameMinimumHeight);
    m_window->setMouseTracking(true);
    qApp->installEventFilter(this);
}

FrameHelper::~FrameHelper()
{
    if (m_cursorOverridden)
        m_window->unsetCursor();
}

void FrameHelper::setDragAreaWidget(QWidget* widget)
{
    m_dragArea = widget;
}

int FrameHelper::ratio() const
{
    return std::max(1, static_cast<int>(std::lround(m_window->devicePixelRatioF())));
}

FrameHit FrameHelper::hitAt(QPoint globalPos) const
{
    const int r = ratio();
    const QPoint local = m_window->mapFromGlobal(globalPos) * r;
    const QSize size = m_window->size() * r;
    DragAreaUnderCursor under = DragAreaUnderCursor::NotRegistered;
    if (m_dragArea) {
        const QWidget* widget = QApplication::widgetAt(globalPos);
        under = widget == m_dragArea ? DragAreaUnderCursor::DragArea : DragAreaUnderCursor::Other;
    }
    // A maximised window cannot be resized by its margins.
    const FrameHit hit = frameHitTest(local, size, r, under);
    if (m_window->isMaximized() && hit != FrameHit::Caption)
        return FrameHit::None;
    return hit;
}

bool FrameHelper::belongsToWindow(QObject* object) const
{
    auto* widget = qobject_cast<QWidget*>(object);
    return widget && widget->window() == m_window;
}

bool FrameHelper::eventFilter(QObject* watched, QEvent* event)
{
#ifndef Q_OS_WIN
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (belongsToWindow(watched))
            return handleMousePress(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonDblClick:
        if (belongsToWindow(watched)) {
            auto* mouse = static_cast<QMouseEvent*>(event);
            if (mouse->button() == Qt::LeftButton &&
                hitAt(mouse->globalPos()) == FrameHit::Caption) {
                m_window->isMaximized() ? m_window->showNormal() : m_window->showMaximized();
                return true;
            }
        }
        break;
    case QEvent::MouseMove:
        if (belongsToWindow(watched))
            updateCursor(static_cast<QMouseEvent*>(event)->globalPos());
        break;
    case QEvent::Leave:
        if (watched == m_window && m_cursorOverridden) {
            m_window->unsetCursor();
            m_cursorOverridden = false;
        }
        break;
    default:
        break;
    }
#else
    Q_UNUSED(watched)
    Q_UNUSED(event)
#endif
    return false;
}

bool FrameHelper::handleMousePress(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return false;
    QWindow* handle = m_window->windowHandle();
    if (!handle)
        return false;
    const FrameHit hit = hitAt(event->globalPos());
    if (hit == FrameHit::Caption)
        return handle->startSystemMove();
    const Qt::Edges edges = edgesFor(hit);
    if (edges)
        return handle->startSystemResize(edges);
    return false;
}

void FrameHelper::updateCursor(QPoint globalPos)
{
    const Qt::CursorShape shape = cursorFor(hitAt(globalPos));
    if (shape != Qt::ArrowCursor) {
        m_window->setCursor(shape);
        m_cursorOverridden = true;
    } else if (m_cursorOverridden) {
        m_window->unsetCursor();
        m_cursorOverridden = false;
    }
}

bool FrameHelper::handleNativeEvent(const QByteArray& eventType, void* message, long* result)
{
#ifdef Q_OS_WIN
    if (eventType != "windows_generic_MSG")
        return false;
    MSG* msg = static_cast<MSG*>(message);
    HWND hwnd = reinterpret_cast<HWND>(m_window->winId());
    const int r = ratio();
    switch (msg->message) {
    case WM_SHOWWINDOW:
        // Make the system ask for the frame size again.
        SetWindowPos(hwnd, nullptr, 0, 0, 0, 0, 0x237);
        [[fallthrough]];
    case WM_NCCALCSIZE:
        if (msg->wParam == 1 && IsZoomed(hwnd)) {
            // A maximised window overhangs the monitor by the frame: inset it.
            auto* params = reinterpret_cast<NCCALCSIZE_PARAMS*>(msg->lParam);
            const int frame =
                GetSystemMetrics(SM_CXSIZEFRAME) + GetSystemMetrics(SM_CXPADDEDBORDER);
            InflateRect(&params->rgrc[0], -frame, -frame);
        }
        *result = 0;
        return true;
    case WM_GETMINMAXINFO: {
        HMONITOR monitor = MonitorFromWindow(hwnd, MONITOR_DEFAULTTONULL);
        MONITORINFO info{};
        info.cbSize = sizeof(info);
        if (!monitor || !GetMonitorInfoW(monitor, &info))
            return false;
        RECT work = info.rcWork;
        AdjustWindowRectEx(&work, GetWindowLong(hwnd, GWL_STYLE), FALSE,
                           GetWindowLong(hwnd, GWL_EXSTYLE));
        auto* mmi = reinterpret_cast<MINMAXINFO*>(msg->lParam);
        mmi->ptMaxPosition.x = work.left - info.rcMonitor.left;
        mmi->ptMaxPosition.y = work.top - info.rcMonitor.top;
        mmi->ptMaxSize.x = work.right - work.left;
        mmi->ptMaxSize.y = work.bottom - work.top;
        mmi->ptMinTrackSize.x = kFrameMinimumWidth * r;
        mmi->ptMinTrackSize.y = kFrameMinimumHeight * r;
        if (IsZoomed(hwnd))
            mmi->ptMaxTrackSize = mmi->ptMaxSize;
        *result = 0;
        return true;
    }
    case WM_NCHITTEST: {
        RECT rect;
        GetWindowRect(hwnd, &rect);
        const int x = GET_X_LPARAM(msg->lParam);
        const int y = GET_Y_LPARAM(msg->lParam);
        DragAreaUnderCursor under = DragAreaUnderCursor::NotRegistered;
        if (m_dragArea) {
            const QWidget* widget = QApplication::widgetAt(QCursor::pos());
            under =
                widget == m_dragArea ? DragAreaUnderCursor::DragArea : DragAreaUnderCursor::Other;
        }
        const FrameHit hit =
            frameHitTest(QPoint(x - rect.left, y - rect.top),
                         QSize(rect.right - rect.left, rect.bottom - rect.top), r, under);
        static const long codes[] = {HTNOWHERE, HTCAPTION, HTLEFT,     HTRIGHT,      HTTOP,
                                     HTBOTTOM,  HTTOPLEFT, HTTOPRIGHT, HTBOTTOMLEFT, HTBOTTOMRIGHT};
        if (hit == FrameHit::None)
            return false;
        *result = codes[static_cast<int>(hit)];
        return true;
    }
    case WM_NCPAINT:
        *result = 0;
        return false;
    default:
        return false;
    }
#else
    Q_UNUSED(eventType)
    Q_UNUSED(message)
    Q_UNUSED(result)
    return false;
#endif
}
