#pragma once

#include <algorithm>

namespace moxcore::geom {

/// A rectangle by its top left corner and its size; y grows downward.
template <class T>
struct RectT {
    T x{};
    T y{};
    T width{};
    T height{};

    /// Whether it covers nothing; true also when the size is not a number.
    [[nodiscard]] bool IsEmpty() const { return !(width > 0) || !(height > 0); }

    friend bool operator==(RectT const&, RectT const&) = default;
};

/// The smallest rectangle that holds both, neither of which is empty.
template <class T>
[[nodiscard]] RectT<T> BoundingBox(RectT<T> const& a, RectT<T> const& b) {
    T const left = std::min(a.x, b.x);
    T const top = std::min(a.y, b.y);
    return {left, top, std::max(a.x + a.width, b.x + b.width) - left,
            std::max(a.y + a.height, b.y + b.height) - top};
}

/// `rect` grown by `margin` on every side (shrunk when it is negative).
template <class T>
[[nodiscard]] RectT<T> Grown(RectT<T> const& rect, T margin) {
    return {rect.x - margin, rect.y - margin, rect.width + 2 * margin, rect.height + 2 * margin};
}

}  // namespace moxcore::geom
