#include "widgets/CustomStyle.h"

#include "widgets/FontTable.h"
#include "widgets/PixmapRoutines.h"
#include "widgets/SeekSlider.h"
#include "widgets/Theme.h"
#include "widgets/TransportButton.h"

#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTableView>
#include <QToolTip>

namespace {

bool endsWith(const QWidget* w, const char* suffix)
{
    return w->objectName().endsWith(QLatin1String(suffix));
}

void setTextColor(QWidget* w, const QColor& color)
{
    QPalette pal = w->palette();
    pal.setColor(QPalette::WindowText, color);
    w->setPalette(pal);
}

// The big read-outs of the time display.
QFont readoutFont()
{
    QFont f(QStringLiteral("Arial"));
    f.setPixelSize(22);
    f.setBold(true);
    return f;
}

// Fonts and colours of the program's own labels, by their object names.
void polishLabel(QLabel* label)
{
    const QString name = label->objectName();
    if (endsWith(label, "CaptionLabel") || name == QLatin1String("volumeLabel")) {
        QFont f = FontTable::font(0, true);
        f.setLetterSpacing(QFont::AbsoluteSpacing, 0.8);
        label->setFont(f);
        setTextColor(label, Theme::caption());
    } else if (name == QLatin1String("trackLabel") || name == QLatin1String("timeLabel") ||
               name == QLatin1String("cdTimeLabel")) {
        label->setFont(readoutFont());
        setTextColor(label, name == QLatin1String("trackLabel") ? Theme::accentBlue()
                                                                : Theme::brightText());
    } else if (name == QLatin1String("levelValueLabel") || name == QLatin1String("rmsValueLabel")) {
        label->setFont(FontTable::font(3, true));
        setTextColor(label, Theme::brightText());
    } else if (name == QLatin1String("dBValueLabel") || name == QLatin1String("volumeValueLabel")) {
        label->setFont(FontTable::font(1, true));
        setTextColor(label, Theme::text());
    } else if (name == QLatin1String("upcEanLabel") || name == QLatin1String("artistLabel") ||
               name == QLatin1String("albumLabel")) {
        label->setFont(FontTable::font(2, true));
        setTextColor(label, Theme::brightText());
    } else if (name == QLatin1String("loudnessLabel")) {
        // Two figures beside the album: a size smaller, so both fit.
        label->setFont(FontTable::font(1, true));
        setTextColor(label, Theme::brightText());
    } else if (name == QLatin1String("statusLabel")) {
        // The notes about the disc: the values' size, their own colour.
        label->setFont(FontTable::font(2));
    }
}

QColor sliderFill(const QWidget* widget)
{
    return qobject_cast<const SeekSlider*>(widget) ? Theme::accentBlue() : QColor(150, 156, 162);
}

} // namespace

CustomStyle::CustomStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("fusion")))
{
    QPalette tip = darkPalette();
    tip.setColor(QPalette::ToolTipBase, QColor(48, 51, 54));
    tip.setColor(QPalette::ToolTipText, Theme::brightText());
    tip.setColor(QPalette::Window, QColor(48, 51, 54));
    tip.setColor(QPalette::WindowText, Theme::brightText());
    QToolTip::setPalette(tip);
    QToolTip::setFont(FontTable::font(1));
}

QPalette CustomStyle::darkPalette()
{
    QPalette p;
    p.setColor(QPalette::Window, Theme::window());
    p.setColor(QPalette::WindowText, Theme::text());
    p.setColor(QPalette::Base, Theme::tableBase());
    p.setColor(QPalette::AlternateBase, QColor(36, 38, 40));
    p.setColor(QPalette::ToolTipBase, QColor(48, 51, 54));
    p.setColor(QPalette::ToolTipText, Theme::brightText());
    p.setColor(QPalette::PlaceholderText, Theme::dimText());
    p.setColor(QPalette::Text, Theme::text());
    p.setColor(QPalette::Button, QColor(52, 55, 58));
    p.setColor(QPalette::ButtonText, Theme::text());
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, QColor(70, 74, 78));
    p.setColor(QPalette::Midlight, QColor(60, 63, 67));
    p.setColor(QPalette::Mid, QColor(44, 47, 50));
    p.setColor(QPalette::Dark, QColor(24, 25, 27));
    p.setColor(QPalette::Shadow, QColor(10, 10, 11));
    p.setColor(QPalette::Highlight, Theme::selection());
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, Theme::accentBlue());
    p.setColor(QPalette::LinkVisited, Theme::accentBlueDark());
    const QColor disabled(100, 103, 106);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, disabled);
    p.setColor(QPalette::Disabled, QPalette::Highlight, QColor(52, 55, 58));
    return p;
}

QPalette CustomStyle::standardPalette() const
{
    return darkPalette();
}

void CustomStyle::polish(QPalette& palette)
{
    palette = darkPalette();
}

void CustomStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QScrollBar*>(widget) || qobject_cast<QPushButton*>(widget) ||
        qobject_cast<QHeaderView*>(widget))
        widget->setAttribute(Qt::WA_Hover);
    if (auto* label = qobject_cast<QLabel*>(widget))
        polishLabel(label);
    if (widget->objectName() == QLatin1String("tableView")) {
        widget->setFont(FontTable::font(2));
        widget->setAttribute(Qt::WA_Hover);
    }
}

void CustomStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const
{
    switch (element) {
    case PE_FrameFocusRect:
        return; // Focus is never shown: the program is driven by mouse and Space.
    case PE_PanelButtonTool: {
        const bool down = option->state & (State_Sunken | State_On);
        const bool hover = option->state & State_MouseOver && option->state & State_Enabled;
        // A checked transport button (play while playing) glows in the
        // current row's green; other checked buttons just look pressed.
        const bool lit =
            option->state & State_On && qobject_cast<const TransportButton*>(widget) != nullptr;
        if (!down && !hover)
            return;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(lit ? QPen(QColor(43, 120, 50), 1) : Qt::NoPen);
        painter->setBrush(lit    ? QColor(17, 109, 24, hover ? 170 : 130)
                          : down ? Theme::pressed()
                                 : Theme::hover());
        painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
        painter->restore();
        return;
    }
    case PE_IndicatorCheckBox:
    case PE_IndicatorMenuCheckMark: {
        // A box that reads on dark menus: outlined when off, blue when on.
        const bool on = option->state & State_On;
        const QRectF box = QRectF(option->rect).adjusted(1.5, 1.5, -1.5, -1.5);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(on ? Theme::accentBlueDark() : QColor(110, 115, 120), 1));
        painter->setBrush(on ? Theme::accentBlueDark() : QColor(28, 30, 32));
        painter->drawRoundedRect(box, 2, 2);
        if (on) {
            QPainterPath tick;
            tick.moveTo(box.left() + box.width() * 0.22, box.top() + box.height() * 0.52);
            tick.lineTo(box.left() + box.width() * 0.42, box.top() + box.height() * 0.72);
            tick.lineTo(box.left() + box.width() * 0.78, box.top() + box.height() * 0.3);
            painter->setPen(QPen(Qt::white, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter->setBrush(Qt::NoBrush);
            painter->drawPath(tick);
        }
        painter->restore();
        return;
    }
    case PE_PanelTipLabel:
        painter->fillRect(option->rect, option->palette.color(QPalette::ToolTipBase));
        painter->setPen(Theme::hairline());
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        return;
    case PE_FrameMenu:
    case PE_PanelMenu:
        painter->fillRect(option->rect, QColor(44, 47, 50));
        painter->setPen(Theme::hairline());
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        return;
    default:
        break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void CustomStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const
{
    switch (element) {
    case CE_HeaderEmptyArea:
        painter->fillRect(option->rect, option->palette.color(QPalette::Window));
        painter->fillRect(
            QRect(option->rect.left(), option->rect.bottom(), option->rect.width(), 1),
            Theme::hairline());
        return;
    case CE_HeaderSection: {
        const QRect r = option->rect;
        const bool hover = option->state & State_MouseOver;
        painter->fillRect(r, option->palette.color(hover ? QPalette::Highlight : QPalette::Window));
        painter->fillRect(QRect(r.right(), r.top() + 5, 1, r.height() - 10), QColor(40, 42, 45));
        painter->fillRect(QRect(r.left(), r.bottom(), r.width(), 1), Theme::hairline());
        return;
    }
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void CustomStyle::drawSlider(const QStyleOptionSlider* option, QPainter* painter,
                             const QWidget* widget) const
{
    const QRect handle = subControlRect(CC_Slider, option, SC_SliderHandle, widget);
    const bool horizontal = option->orientation == Qt::Horizontal;
    const QRect r = option->rect;
    const int thickness = 4;
    QRect groove =
        horizontal
            ? QRect(r.left() + 1, r.center().y() - thickness / 2 + 1, r.width() - 2, thickness)
            : QRect(r.center().x() - thickness / 2 + 1, r.top() + 1, thickness, r.height() - 2);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(18, 19, 21));
    painter->drawRoundedRect(groove, 2, 2);

    QRect filled = groove;
    if (horizontal)
        filled.setRight(handle.center().x());
    else
        filled.setTop(handle.center().y());
    const bool enabled = option->state & State_Enabled;
    QColor fill = sliderFill(widget);
    if (!enabled)
        fill = QColor(80, 84, 88);
    if (horizontal) {
        QLinearGradient g(filled.topLeft(), filled.topRight());
        g.setColorAt(0, fill.darker(170));
        g.setColorAt(1, fill);
        painter->setBrush(g);
    } else {
        painter->setBrush(fill);
    }
    if (filled.width() > 0 && filled.height() > 0)
        painter->drawRoundedRect(filled, 2, 2);

    const bool hot = option->activeSubControls & SC_SliderHandle &&
                     option->state & (State_MouseOver | State_Sunken);
    const int d = 10;
    const QRectF knob(handle.center().x() - d / 2.0 + 0.5, handle.center().y() - d / 2.0 + 0.5, d,
                      d);
    painter->setPen(QPen(QColor(12, 13, 14), 1));
    painter->setBrush(hot ? QColor(245, 246, 247) : QColor(196, 200, 204));
    painter->drawEllipse(knob);
    painter->restore();
}

void CustomStyle::drawScrollBar(const QStyleOptionSlider* option, QPainter* painter) const
{
    painter->fillRect(option->rect, Theme::tableBase());
    const QRect handle = subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, nullptr);
    if (handle.isEmpty())
        return;
    const bool hot = option->state & State_MouseOver;
    const bool down =
        option->activeSubControls & SC_ScrollBarSlider && option->state & State_Sunken;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(down  ? QColor(120, 126, 132)
                      : hot ? QColor(96, 101, 106)
                            : QColor(70, 74, 78));
    painter->drawRoundedRect(QRectF(handle).adjusted(2.5, 2.5, -2.5, -2.5), 2.5, 2.5);
    painter->restore();
}

void CustomStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const
{
    if (control == CC_Slider) {
        if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            drawSlider(slider, painter, widget);
            return;
        }
    }
    if (control == CC_ScrollBar) {
        if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            drawScrollBar(bar, painter);
            return;
        }
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect CustomStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                  SubControl subControl, const QWidget* widget) const
{
    // Scroll bars without arrow buttons: the groove is the whole bar.
    if (control == CC_ScrollBar) {
        if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            const bool horizontal = bar->orientation == Qt::Horizontal;
            const QRect r = bar->rect;
            const int length = horizontal ? r.width() : r.height();
            switch (subControl) {
            case SC_ScrollBarAddLine:
            case SC_ScrollBarSubLine:
                return QRect();
            case SC_ScrollBarGroove:
                return r;
            case SC_ScrollBarSlider:
            case SC_ScrollBarAddPage:
            case SC_ScrollBarSubPage: {
                const qint64 range = qint64(bar->maximum) - bar->minimum;
                int handleLength = length;
                if (range > 0)
                    handleLength = int(qint64(length) * bar->pageStep / (range + bar->pageStep));
                handleLength = qBound(qMin(24, length), handleLength, length);
                const int start =
                    sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition,
                                            length - handleLength, bar->upsideDown);
                QRect handle = horizontal
                                   ? QRect(r.left() + start, r.top(), handleLength, r.height())
                                   : QRect(r.left(), r.top() + start, r.width(), handleLength);
                if (subControl == SC_ScrollBarSlider)
                    return handle;
                if (subControl == SC_ScrollBarSubPage)
                    return horizontal ? QRect(r.left(), r.top(), start, r.height())
                                      : QRect(r.left(), r.top(), r.width(), start);
                return horizontal ? QRect(handle.right() + 1, r.top(), r.right() - handle.right(),
                                          r.height())
                                  : QRect(r.left(), handle.bottom() + 1, r.width(),
                                          r.bottom() - handle.bottom());
            }
            default:
                break;
            }
        }
    }
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

int CustomStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                             const QWidget* widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return 11;
    case PM_ScrollBarSliderMin:
        return 24;
    case PM_SliderThickness:
    case PM_SliderControlThickness:
        return 14;
    case PM_SliderLength:
        return 12;
    case PM_ToolTipLabelFrameWidth:
        return 5;
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuVMargin:
        return 4;
    case PM_MenuHMargin:
        return 2;
    case PM_ButtonIconSize:
    case PM_SmallIconSize:
        return 16;
    default:
        break;
    }
    return QProxyStyle::pixelMetric(metric, option, widget);
}

int CustomStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* returnData) const
{
    switch (hint) {
    case SH_UnderlineShortcut:
        return 0;
    case SH_ToolTip_WakeUpDelay:
        return 600;
    case SH_ItemView_ShowDecorationSelected:
        return 1;
    case SH_ScrollBar_Transient:
        return 0;
    case SH_ToolTipLabel_Opacity:
        return 255;
    default:
        break;
    }
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

QIcon CustomStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption* option,
                                const QWidget* widget) const
{
    switch (standardIcon) {
    case SP_TitleBarCloseButton:
    case SP_DialogCloseButton:
        return QIcon(QStringLiteral(":close_icon"));
    case SP_TitleBarMinButton:
        return QIcon(QStringLiteral(":minimize_icon"));
    case SP_MessageBoxInformation:
        return QIcon(QStringLiteral(":info_icon"));
    case SP_MessageBoxCritical:
    case SP_MessageBoxWarning:
        return QIcon(QStringLiteral(":critical_icon"));
    default:
        break;
    }
    return QProxyStyle::standardIcon(standardIcon, option, widget);
}

QPixmap CustomStyle::generatedIconPixmap(QIcon::Mode iconMode, const QPixmap& pixmap,
                                         const QStyleOption* option) const
{
    switch (iconMode) {
    case QIcon::Selected:
        // On the green current row and on selections the icon turns white.
        return tintPixmap(pixmap, Qt::white);
    case QIcon::Active:
        return tintPixmap(pixmap, Theme::brightText());
    case QIcon::Disabled: {
        QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QPainter p(&image);
        p.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        p.fillRect(image.rect(), QColor(0, 0, 0, 90));
        p.end();
        QPixmap dimmed = QPixmap::fromImage(image);
        dimmed.setDevicePixelRatio(pixmap.devicePixelRatio());
        return dimmed;
    }
    default:
        break;
    }
    return QProxyStyle::generatedIconPixmap(iconMode, pixmap, option);
}
