#include "moxui/backend/detail/drawing/QtDrawbot.h"

#include <QFontMetricsF>
#include <QPainterPath>
#include <QPen>
#include <cmath>
#include <vector>

#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/FittedText.h"
#include "moxui/drawbot/MeasuringDrawbot.h"
#include "moxui/skins/ThemeProvider.h"

namespace moxui::backend {
namespace {

/// `text` as it is drawn: on one line, control characters as spaces.
QString OnOneLine(moxcore::string::UTF16String const& text) {
    FittedText line;
    line.SetText(text);
    return line.GetWhole();
}

class Path : public drawbot::PathInterface {
public:
    void AddRect(moxcore::geom::RectT<float> const& rect) override {
        rects.push_back(ToQRectF(rect));
    }
    void AddRoundedRect(moxcore::geom::RectT<float> const& rect, float cornerRadius) override {
        curves.addRoundedRect(ToQRectF(rect), cornerRadius, cornerRadius);
    }

    [[nodiscard]] QPainterPath Whole() const {
        auto path = curves;
        for (auto const& rect : rects)
            path.addRect(rect);
        return path;
    }

    std::vector<QRectF> rects;
    QPainterPath curves;
};

class Pen : public drawbot::PenInterface {
public:
    Pen(drawbot::ColorRGBA const& color, float width)
        : pen(ToQColor(color), width, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin) {}

    QPen pen;
};

class Font : public drawbot::FontInterface {
public:
    explicit Font(QFont const& font) : font(font), metrics(font) {}

    float GetHeight() const override { return static_cast<float>(metrics.height()); }
    float GetAscent() const override { return static_cast<float>(metrics.ascent()); }
    float MeasureWidth(moxcore::string::UTF16String const& text) const override {
        return static_cast<float>(metrics.horizontalAdvance(OnOneLine(text)));
    }
    float MeasureWrappedHeight(moxcore::string::UTF16String const& text,
                               float width) const override {
        return static_cast<float>(
            metrics.boundingRect(QRectF(0, 0, width, 1e6), Qt::TextWordWrap, ToQString(text))
                .height());
    }
    moxcore::string::UTF16String Truncate(moxcore::string::UTF16String const& text, float width,
                                          drawbot::TruncationMode mode) const override {
        return FromQString(
            metrics.elidedText(OnOneLine(text), ToElideMode(mode), std::floor(width)));
    }

    QFont font;
    QFontMetricsF metrics;
};

class Supplier final : public drawbot::SupplierInterface {
public:
    boost::intrusive_ptr<drawbot::PathInterface> NewPath() const override { return new Path; }
    boost::intrusive_ptr<drawbot::PenInterface> NewPen(drawbot::ColorRGBA const& color,
                                                       float width) const override {
        return new Pen(color, width);
    }
    boost::intrusive_ptr<drawbot::FontInterface> NewFont(std::string const& name, float size,
                                                         std::string const& style) const override {
        for (auto const& known : fonts)
            if (known.name == name && known.size == size && known.style == style) return known.font;
        QFont font(QString::fromStdString(name));
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
        font.setBold(style == "Bold");
        fonts.push_back({name, size, style, new Font(font)});
        return fonts.back().font;
    }

private:
    struct KnownFont {
        std::string name;
        float size;
        std::string style;
        boost::intrusive_ptr<drawbot::FontInterface> font;
    };
    /// The few that a program uses: made once, since every measuring and drawing asks for one.
    mutable std::vector<KnownFont> fonts;
};

class NoSurface final : public drawbot::SurfaceInterface {
    void PaintRect(drawbot::ColorRGBA const&, moxcore::geom::RectT<float> const&) override {}
    void FillPath(drawbot::ColorRGBA const&, drawbot::PathInterface const&) override {}
    void StrokePath(drawbot::PenInterface const&, drawbot::PathInterface const&) override {}
    void DrawImage(drawbot::ImageInterface const&, moxcore::geom::PointT<float> const&,
                   float) override {}
    void DrawString(drawbot::ColorRGBA const&, drawbot::FontInterface const&,
                    moxcore::string::UTF16String const&,
                    moxcore::geom::PointT<float> const&) override {}
    void PushClip(moxcore::geom::RectT<float> const&) override {}
    void PopClip() override {}
};

class QtMeasuringDrawbot : public drawbot::MeasuringDrawbot {
public:
    drawbot::SupplierInterface const* GetSupplier() const override { return &QtSupplier(); }
    drawbot::SurfaceInterface* GetSurface() override { return &surface; }

private:
    NoSurface surface;
};

}  // namespace

drawbot::SupplierInterface const& QtSupplier() {
    // Never destroyed: its fonts would outlive the application that they belong to otherwise.
    static moxcore::utility::NoDestructor<Supplier> const supplier;
    return *supplier;
}

QFont const& QtFont(drawbot::FontInterface const& font) {
    return static_cast<Font const&>(font).font;
}

QtDrawbot::QtDrawbot(QPainter& painter) : painter(&painter) {
    painter.setRenderHint(QPainter::Antialiasing);
}

void QtDrawbot::Mirror(qreal width) {
    mirrorWidth = width;
}

QRectF QtDrawbot::Placed(QRectF const& rect) const {
    return mirrorWidth ? QRectF(*mirrorWidth - rect.right(), rect.y(), rect.width(), rect.height())
                       : rect;
}

QPainterPath QtDrawbot::Placed(QPainterPath const& path) const {
    return mirrorWidth ? QTransform(-1, 0, 0, 1, *mirrorWidth, 0).map(path) : path;
}

QtDrawbot::QtDrawbot(QWidget& widget, QPoint const& origin) : widget(&widget), origin(origin) {
    if (widget.isRightToLeft()) Mirror(widget.width() - 2 * origin.x());
}

drawbot::SurfaceInterface* QtDrawbot::GetSurface() {
    if (!painter) {
        painter = &own.emplace(widget);
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(origin);
    }
    return this;
}

void QtDrawbot::FillRect(QRectF const& rect, QColor const& color) {
    auto const pixels = painter->deviceTransform().mapRect(rect);
    bool const isSharp = pixels == QRectF(pixels.toRect());
    if (isSharp) painter->setRenderHint(QPainter::Antialiasing, false);
    painter->fillRect(rect, color);
    if (isSharp) painter->setRenderHint(QPainter::Antialiasing);
}

void QtDrawbot::PaintRect(drawbot::ColorRGBA const& color,
                          moxcore::geom::RectT<float> const& rect) {
    FillRect(Placed(ToQRectF(rect)), ToQColor(color));
}

void QtDrawbot::FillPath(drawbot::ColorRGBA const& color, drawbot::PathInterface const& path) {
    painter->fillPath(Placed(static_cast<Path const&>(path).Whole()), ToQColor(color));
}

void QtDrawbot::StrokePath(drawbot::PenInterface const& pen, drawbot::PathInterface const& path) {
    auto const& figure = static_cast<Path const&>(path);
    auto const& qtPen = static_cast<Pen const&>(pen).pen;
    if (!figure.curves.isEmpty() || qtPen.color().alpha() != 255) {
        painter->strokePath(Placed(figure.Whole()), qtPen);
        return;
    }
    // The frames around sections: four bars each, which take a tenth of the time of a path.
    qreal const half = qtPen.widthF() / 2;
    for (auto const& rect : figure.rects) {
        auto const middle = Placed(rect);
        auto const outer = middle.adjusted(-half, -half, half, half);
        auto const inner = middle.adjusted(half, half, -half, -half);
        for (auto const& bar : {QRectF(outer.topLeft(), QPointF(outer.right(), inner.top())),
                                QRectF(QPointF(outer.left(), inner.bottom()), outer.bottomRight()),
                                QRectF(QPointF(outer.left(), inner.top()), inner.bottomLeft()),
                                QRectF(inner.topRight(), QPointF(outer.right(), inner.bottom()))})
            FillRect(bar, qtPen.color());
    }
}

void QtDrawbot::DrawImage(drawbot::ImageInterface const& image,
                          moxcore::geom::PointT<float> const& origin, float scale) {
    auto const size = image.GetSize();
    auto const width = static_cast<float>(size.x) * scale;
    auto const height = static_cast<float>(size.y) * scale;
    static_cast<QtImage const&>(image).Paint(*painter,
                                             Placed(QRectF(origin.x, origin.y, width, height)),
                                             mirrorWidth ? Qt::RightToLeft : Qt::LeftToRight);
}

void QtDrawbot::DrawString(drawbot::ColorRGBA const& color, drawbot::FontInterface const& font,
                           moxcore::string::UTF16String const& text,
                           moxcore::geom::PointT<float> const& origin) {
    painter->setFont(QtFont(font));
    painter->setPen(ToQColor(color));
    auto const line = OnOneLine(text);
    qreal x = origin.x;
    if (mirrorWidth)
        x = *mirrorWidth - x - static_cast<Font const&>(font).metrics.horizontalAdvance(line);
    painter->drawText(QPointF(x, origin.y), line);
}

void QtDrawbot::PushClip(moxcore::geom::RectT<float> const& rect) {
    painter->save();
    painter->setClipRect(Placed(ToQRectF(rect)), Qt::IntersectClip);
}

void QtDrawbot::PopClip() {
    painter->restore();
}

void PaintFrameLine(QPainter& painter, QRect const& place) {
    auto const& theme = skins::ThemeProvider::Get();
    auto const line = theme.GetSize(skins::ThemeSize::LineWidth);
    // Its middle: half of a line on the rectangle itself would lie outside.
    auto const middle = QRectF(place).adjusted(line / 2, line / 2, -line / 2, -line / 2);
    painter.save();
    painter.setBrush(Qt::NoBrush);
    QPen pen(ToQColor(theme.GetColor(skins::ThemeColor::kControlBorder)), line);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.drawRect(middle);
    painter.restore();
}

void PaintFocusRing(QPainter& painter, QRectF const& place) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    auto const& theme = skins::ThemeProvider::Get();
    painter.setPen(QPen(ToQColor(theme.GetColor(skins::ThemeColor::kFocus)),
                        theme.GetSize(skins::ThemeSize::FocusLine)));
    auto const radius = theme.GetSize(skins::ThemeSize::CornerRadius);
    painter.drawRoundedRect(place.adjusted(1, 1, -1, -1), radius, radius);
    painter.restore();
}

}  // namespace moxui::backend

namespace moxui::drawbot {

std::shared_ptr<MeasuringDrawbot> MeasuringDrawbot::Get(SupplierInterface const*) {
    static std::shared_ptr<MeasuringDrawbot> const drawbot =
        std::make_shared<backend::QtMeasuringDrawbot>();
    return drawbot;
}

}  // namespace moxui::drawbot
