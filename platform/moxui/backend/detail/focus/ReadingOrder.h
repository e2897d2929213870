#pragma once

#include <cstddef>
#include <vector>

#include "moxcore/geom/Rect.h"

namespace moxui::backend {

/// The places of `rects` (all in the same coordinates) in the order in which one reads them: row by
/// row from the top, each row from the left. What overlaps a row's first by more than half of the
/// lower one's height belongs to the row.
[[nodiscard]] std::vector<std::size_t> ReadingOrder(
    std::vector<moxcore::geom::RectT<float>> const& rects);

}  // namespace moxui::backend
