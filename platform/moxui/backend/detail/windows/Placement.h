#pragma once

#include <vector>

#include "moxcore/geom/Rect.h"

namespace moxui::backend {

// Where windows go on the screens. All rectangles are in one system of coordinates.

/// Of `screens` (one at least), that which shows most of `rect`; the nearest to its middle when
/// none shows any.
[[nodiscard]] moxcore::geom::RectT<float> ScreenOf(
    moxcore::geom::RectT<float> const& rect,
    std::vector<moxcore::geom::RectT<float>> const& screens);

/// `rect` moved into `bounds` the shortest way. What is larger keeps its top and its left edge
/// inside.
[[nodiscard]] moxcore::geom::RectT<float> MovedInto(moxcore::geom::RectT<float> const& rect,
                                                    moxcore::geom::RectT<float> const& bounds);

/// Where a popup goes that hangs from `anchor` and was asked for at `asked`: there when `screen`
/// shows all of it. One that hangs below its anchor and does not fit there goes above it, as far
/// away, if it fits there; any other is moved onto the screen.
[[nodiscard]] moxcore::geom::RectT<float> PlacePopup(moxcore::geom::RectT<float> const& asked,
                                                     moxcore::geom::RectT<float> const& anchor,
                                                     moxcore::geom::RectT<float> const& screen);

/// A rectangle of the size of `rect` over the middle of `parent`.
[[nodiscard]] moxcore::geom::RectT<float> CentredOver(moxcore::geom::RectT<float> const& rect,
                                                      moxcore::geom::RectT<float> const& parent);

}  // namespace moxui::backend
