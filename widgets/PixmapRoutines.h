#pragma once

#include <QColor>
#include <QPixmap>
#include <QSize>
#include <QString>

// Renders an icon resource (SVG or bitmap) into a pixmap of exactly
// `pixelSize` device pixels, keeping its aspect ratio and centring it.
// A missing or unreadable resource gives a transparent pixmap of that size.
QPixmap renderIcon(const QString& resource, const QSize& pixelSize);

// Every pixel takes `color`, each keeping its own alpha: one flat-coloured
// silhouette of the pixmap (its device pixel ratio is kept too).
QPixmap tintPixmap(const QPixmap& pixmap, const QColor& color);
