#pragma once

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <optional>

#include "moxui/drawbot/Drawbot.h"

namespace moxui::backend {

/// The one supplier: fonts, paths and pens are the same for every window.
[[nodiscard]] drawbot::SupplierInterface const& QtSupplier();

/// The Qt font behind a font of the supplier's.
[[nodiscard]] QFont const& QtFont(drawbot::FontInterface const& font);

/// A picture that can be painted with Qt: every ImageInterface of this tree is one.
class QtImage : public drawbot::ImageInterface {
public:
    /// Paints it, sharp, into `place` of `painter`'s coordinates, as it looks in a layout of that
    /// direction.
    virtual void Paint(QPainter& painter, QRectF const& place,
                       Qt::LayoutDirection direction) const = 0;
};

/// Draws on a painter, which the caller keeps alive, or on a widget that is being painted, for
/// which it makes one with the first thing that is drawn.
class QtDrawbot : public drawbot::Drawbot, private drawbot::SurfaceInterface {
public:
    explicit QtDrawbot(QPainter& painter);
    /// `origin` is where the drawing's coordinates begin in the widget. They are mirrored in one
    /// whose layout goes from right to left.
    QtDrawbot(QWidget& widget, QPoint const& origin);

    /// What is drawn from now on goes where it would be seen in a mirror in the middle of `width`;
    /// texts stay as they are, and pictures but for those that point in the direction of reading.
    void Mirror(qreal width);

    drawbot::SupplierInterface const* GetSupplier() const override { return &QtSupplier(); }
    drawbot::SurfaceInterface* GetSurface() override;

private:
    void PaintRect(drawbot::ColorRGBA const& color,
                   moxcore::geom::RectT<float> const& rect) override;
    void FillPath(drawbot::ColorRGBA const& color, drawbot::PathInterface const& path) override;
    void StrokePath(drawbot::PenInterface const& pen, drawbot::PathInterface const& path) override;
    void DrawImage(drawbot::ImageInterface const& image, moxcore::geom::PointT<float> const& origin,
                   float scale) override;
    void DrawString(drawbot::ColorRGBA const& color, drawbot::FontInterface const& font,
                    moxcore::string::UTF16String const& text,
                    moxcore::geom::PointT<float> const& origin) override;
    void PushClip(moxcore::geom::RectT<float> const& rect) override;
    void PopClip() override;

    void FillRect(QRectF const& rect, QColor const& color);
    [[nodiscard]] QRectF Placed(QRectF const& rect) const;
    [[nodiscard]] QPainterPath Placed(QPainterPath const& path) const;

    QWidget* widget = nullptr;
    QPoint origin;
    std::optional<QPainter> own;
    QPainter* painter = nullptr;  // null until it is needed
    std::optional<qreal> mirrorWidth;
};

/// A line just within `place`, of the colour of a control's border.
void PaintFrameLine(QPainter& painter, QRect const& place);

/// Shows, around `place`, that it has the keyboard's focus.
void PaintFocusRing(QPainter& painter, QRectF const& place);

}  // namespace moxui::backend
