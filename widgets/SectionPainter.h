#pragma once

#include <QColor>
#include <QRect>

class QPainter;

// The backgrounds of the window's sections share one recipe: a quiet
// vertical gradient around a base colour, a light edge on top and a dark
// hairline at the bottom, so the sections read as stacked panels.
void paintSection(QPainter& painter, const QRect& rect, const QColor& base, bool topEdge = true,
                  bool bottomEdge = true);
