#pragma once

#include "moxcore/geom/Point.h"
#include "moxcore/geom/Rect.h"

namespace quillomoxui {

/// Where a popup of the size `size` is asked to hang: under `anchor`, with a small gap, their right
/// edges in line. All on the screen.
[[nodiscard]] constexpr moxcore::geom::RectT<float> PopupPlace(
    moxcore::geom::RectT<float> const& anchor, moxcore::geom::PointT<float> const& size) {
    constexpr float kGap = 4;
    return {anchor.x + anchor.width - size.x, anchor.y + anchor.height + kGap, size.x, size.y};
}

}  // namespace quillomoxui
