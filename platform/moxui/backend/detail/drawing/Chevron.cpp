#include "moxui/backend/detail/drawing/Chevron.h"

#include <array>

#include "moxui/backend/detail/drawing/Theme.h"

namespace moxui::backend {

void PaintChevron(QPainter& painter, QPointF const& centre, ChevronDirection direction,
                  QColor const& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.translate(centre);
    if (direction != ChevronDirection::Down)
        painter.rotate(direction == ChevronDirection::Right ? -90 : 90);
    qreal const half = skins::ThemeProvider::Get().GetSize(skins::ThemeSize::Chevron) / 2;
    std::array const points{QPointF(-half, -half / 2), QPointF(0, half / 2),
                            QPointF(half, -half / 2)};
    painter.drawPolyline(points.data(), static_cast<int>(points.size()));
    painter.restore();
}

}  // namespace moxui::backend
