#pragma once

#include <QByteArray>
#include <QPixmap>
#include <string_view>

#include "moxui/backend/detail/drawing/QtDrawbot.h"

namespace moxui::backend {

/// A picture from an SVG document. What the document draws in "currentColor" is drawn in the
/// theme's colour for icons. The last rendering is kept, so that drawing it again copies pixels
/// only. Main thread.
class SvgImage : public QtImage {
public:
    /// Throws std::runtime_error with a sentence when `document` is no SVG.
    explicit SvgImage(std::string_view document);
    ~SvgImage() override;

    moxcore::geom::PointT<int> GetSize() const override { return size; }
    void Paint(QPainter& painter, QRectF const& place) const override;

private:
    QByteArray document;
    moxcore::geom::PointT<int> size;
    mutable QPixmap rendering;
    mutable unsigned renderedForTheme = 0;
};

}  // namespace moxui::backend
