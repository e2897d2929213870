#include "moxui/backend/detail/drawing/SvgImage.h"

#include <QSvgRenderer>
#include <cmath>
#include <stdexcept>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/skins/ThemeProvider.h"

namespace moxui::backend {

SvgImage::SvgImage(std::string_view text)
    : document(text.data(), static_cast<qsizetype>(text.size())),
      followsReading(document.contains("data-follows=\"reading\"")) {
    QSvgRenderer const renderer(document);
    if (!renderer.isValid()) throw std::runtime_error("no valid SVG document");
    size = {renderer.defaultSize().width(), renderer.defaultSize().height()};
}

SvgImage::~SvgImage() = default;

void SvgImage::Paint(QPainter& painter, QRectF const& place, Qt::LayoutDirection direction) const {
    bool const isMirrored = followsReading && direction == Qt::RightToLeft;
    double const scale = painter.deviceTransform().m11();  // of the pixels that it ends up on
    QSize const pixels(static_cast<int>(std::ceil(place.width() * scale)),
                       static_cast<int>(std::ceil(place.height() * scale)));
    if (pixels.isEmpty()) return;
    if (rendering.size() != pixels || renderedForTheme != ThemeGeneration() ||
        renderedMirrored != isMirrored) {
        auto const color =
            ToQColor(skins::ThemeProvider::Get().GetColor(skins::ThemeColor::kIcon)).name();
        QSvgRenderer renderer(QByteArray(document).replace("currentColor", color.toLatin1()));
        rendering = QPixmap(pixels);
        rendering.fill(Qt::transparent);
        QPainter onPixels(&rendering);
        if (isMirrored) onPixels.setTransform({-1, 0, 0, 1, qreal(pixels.width()), 0});
        renderer.render(&onPixels, QRectF(QPointF(), place.size() * scale));
        renderedForTheme = ThemeGeneration();
        renderedMirrored = isMirrored;
    }
    painter.drawPixmap(QRectF(place.topLeft(), QSizeF(pixels) / scale), rendering,
                       QRectF(QPointF(), QSizeF(pixels)));
}

}  // namespace moxui::backend
