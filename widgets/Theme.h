#pragma once

#include <QColor>

// The colours of the dark theme in one place. The table and meter colours
// are fixed; the surfaces around them are chosen to sit between the table's
// row greys (25 to 47) so that nothing shouts louder than the levels.
namespace Theme {

// Surfaces, darkest first.
inline QColor meterSection()
{
    return QColor(22, 23, 25);
}
inline QColor tableBase()
{
    return QColor(31, 33, 35);
}
inline QColor window()
{
    return QColor(37, 39, 42);
}
inline QColor controlSection()
{
    return QColor(44, 47, 50);
}
inline QColor raised()
{
    return QColor(58, 61, 64);
} // the header's colour
inline QColor hairline()
{
    return QColor(16, 17, 18);
}
inline QColor edgeLight()
{
    return QColor(62, 66, 70);
}

// Text.
inline QColor caption()
{
    return QColor(125, 129, 134);
}
inline QColor text()
{
    return QColor(206, 209, 212);
}
inline QColor brightText()
{
    return QColor(236, 238, 240);
}
inline QColor dimText()
{
    return QColor(90, 91, 92);
}

// Accents, taken from the meters and the current-row marker.
inline QColor accentBlue()
{
    return QColor(62, 193, 248);
}
inline QColor accentBlueDark()
{
    return QColor(11, 105, 159);
}
inline QColor accentGreen()
{
    return QColor(17, 109, 24);
}
// Something on the disc wants a look before it is approved: amber, readable
// on every background of the window.
inline QColor warning()
{
    return QColor(255, 183, 64);
}
inline QColor selection()
{
    return QColor(69, 79, 88);
}
inline QColor hover()
{
    return QColor(255, 255, 255, 22);
}
inline QColor pressed()
{
    return QColor(255, 255, 255, 40);
}

} // namespace Theme
