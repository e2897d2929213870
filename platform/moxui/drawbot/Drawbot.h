#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <string>

#include "moxcore/geom/Point.h"
#include "moxcore/geom/Rect.h"
#include "moxcore/string/UTF16String.h"
#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"
#include "moxui/drawbot/ColorRGBA.h"
#include "moxui/drawbot/ImageInterface.h"
#include "moxui/drawbot/TruncationMode.h"

namespace moxui::drawbot {

/// An outline of rectangles, to be filled or stroked. Made by a supplier.
class PathInterface : public moxcore::utility::RefCountedObjectWithWeakPtr {
public:
    virtual void AddRect(moxcore::geom::RectT<float> const& rect) = 0;
    virtual void AddRoundedRect(moxcore::geom::RectT<float> const& rect, float cornerRadius) = 0;
};

/// A pen that strokes paths. Made by a supplier.
class PenInterface : public moxcore::utility::RefCountedObjectWithWeakPtr {};

/// A face, a size and a style to write in. Made by a supplier.
class FontInterface : public moxcore::utility::RefCountedObjectWithWeakPtr {
public:
    /// The height of a line, from the top of the tallest letter to the foot of the deepest.
    [[nodiscard]] virtual float GetHeight() const = 0;
    [[nodiscard]] virtual float GetAscent() const = 0;
    /// The width of `text` on one line.
    [[nodiscard]] virtual float MeasureWidth(moxcore::string::UTF16String const& text) const = 0;
    /// The height of `text` wrapped at `width`.
    [[nodiscard]] virtual float MeasureWrappedHeight(moxcore::string::UTF16String const& text,
                                                     float width) const = 0;
    /// `text` cut down to `width`, with an ellipsis in place of what was left out where `mode`
    /// says.
    [[nodiscard]] virtual moxcore::string::UTF16String Truncate(
        moxcore::string::UTF16String const& text, float width, TruncationMode mode) const = 0;
};

/// Makes what is drawn with. Main thread.
class SupplierInterface {
public:
    [[nodiscard]] virtual boost::intrusive_ptr<PathInterface> NewPath() const = 0;
    [[nodiscard]] virtual boost::intrusive_ptr<PenInterface> NewPen(ColorRGBA const& color,
                                                                    float width) const = 0;
    /// `style`: "" or "Regular", or "Bold". A face that is not there is replaced by a like one.
    [[nodiscard]] virtual boost::intrusive_ptr<FontInterface> NewFont(
        std::string const& name, float size, std::string const& style) const = 0;

protected:
    ~SupplierInterface() = default;
};

/// A surface to draw on. Main thread.
class SurfaceInterface {
public:
    virtual void PaintRect(ColorRGBA const& color, moxcore::geom::RectT<float> const& rect) = 0;
    virtual void FillPath(ColorRGBA const& color, PathInterface const& path) = 0;
    virtual void StrokePath(PenInterface const& pen, PathInterface const& path) = 0;
    /// `image` at its own size times `scale`, its corner at `origin`.
    virtual void DrawImage(ImageInterface const& image, moxcore::geom::PointT<float> const& origin,
                           float scale) = 0;
    /// `text` on one line, its baseline beginning at `origin`.
    virtual void DrawString(ColorRGBA const& color, FontInterface const& font,
                            moxcore::string::UTF16String const& text,
                            moxcore::geom::PointT<float> const& origin) = 0;
    /// Confines what is drawn to `rect` (within what was the limit before) until PopClip.
    virtual void PushClip(moxcore::geom::RectT<float> const& rect) = 0;
    virtual void PopClip() = 0;

protected:
    ~SurfaceInterface() = default;
};

/// A place to draw and the maker of what it is drawn with. Main thread; valid during the call that
/// hands it out.
class Drawbot {
public:
    virtual ~Drawbot() = default;

    [[nodiscard]] virtual SupplierInterface const* GetSupplier() const = 0;
    /// The surface of a measuring drawbot discards what is drawn.
    [[nodiscard]] virtual SurfaceInterface* GetSurface() = 0;
};

}  // namespace moxui::drawbot
