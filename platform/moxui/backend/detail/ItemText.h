#pragma once

#include <QColor>
#include <QPainter>
#include <QString>

namespace moxui::backend {

/// `text` as it can be shown on one line: what would break the line, or cannot be seen, is a space.
[[nodiscard]] QString OnOneLine(QString text);

/// Writes `text` on one line in the middle of `place`'s height, from the right where the text runs
/// to the left, with an ellipsis for what has no room.
void PaintItemText(QPainter& painter, QRectF const& place, QString const& text,
                   QColor const& color);

}  // namespace moxui::backend
