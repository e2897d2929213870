#pragma once

#include <QByteArray>
#include <QPixmap>
#include <string_view>

#include "moxui/backend/detail/drawing/QtDrawbot.h"

namespace moxui::backend {

/// A picture from an SVG document. What the document draws in "currentColor" is drawn in the
/// theme's colour for icons. One whose root element has the attribute data-follows="reading" points
/// in the direction of reading, and is mirrored where that goes from right to left. The last
/// rendering is kept, so that drawing it again copies pixels only. Main thread.
class SvgImage : public QtImage {
public:
    /// Throws std::runtime_error with a sentence when `document` is no SVG.
    explicit SvgImage(std::string_view document);
    ~SvgImage() override;

    moxcore::geom::PointT<int> GetSize() const override { return size; }
    void Paint(QPainter& painter, QRectF const& place,
               Qt::LayoutDirection direction) const override;

private:
    QByteArray document;
    moxcore::geom::PointT<int> size;
    bool followsReading;
    mutable QPixmap rendering;
    mutable unsigned renderedForTheme = 0;
    mutable bool renderedMirrored = false;
};

}  // namespace moxui::backend
