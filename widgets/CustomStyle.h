#pragma once

#include <QProxyStyle>

class QStyleOptionSlider;

// The program's look over "fusion": a dark palette, flat headers, thin
// scroll bars and sliders, quiet hover fills on tool buttons, and the fonts
// and colours of the program's own labels. Installed once on the
// application at start.
class CustomStyle : public QProxyStyle
{
    Q_OBJECT
public:
    CustomStyle();

    QPalette standardPalette() const override;
    void polish(QPalette& palette) override;
    void polish(QWidget* widget) override;
    using QProxyStyle::polish;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget = nullptr) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                         SubControl subControl, const QWidget* widget = nullptr) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr,
                  const QWidget* widget = nullptr,
                  QStyleHintReturn* returnData = nullptr) const override;
    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption* option = nullptr,
                       const QWidget* widget = nullptr) const override;
    QPixmap generatedIconPixmap(QIcon::Mode iconMode, const QPixmap& pixmap,
                                const QStyleOption* option) const override;

    // The palette of the whole program, also used by tests and dialogs that
    // run without the style installed.
    static QPalette darkPalette();

private:
    void drawSlider(const QStyleOptionSlider* option, QPainter* painter,
                    const QWidget* widget) const;
    void drawScrollBar(const QStyleOptionSlider* option, QPainter* painter) const;
};
