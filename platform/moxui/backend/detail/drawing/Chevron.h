#pragma once

#include <QColor>
#include <QPainter>

namespace moxui::backend {

enum class ChevronDirection { Down, Right, Left };

/// The arrow that says that something opens, in the theme's size, its middle at `centre`.
void PaintChevron(QPainter& painter, QPointF const& centre, ChevronDirection direction,
                  QColor const& color);

}  // namespace moxui::backend
