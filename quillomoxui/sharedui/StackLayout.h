#pragma once

#include <vector>

#include "moxcore/geom/Point.h"
#include "moxcore/geom/Rect.h"
#include "moxui/ui/Padding.h"

namespace quillomoxui {

// Where the children of a stack stand: arithmetic over rectangles, without the toolkit. Each child
// comes as a rectangle with its measured size (nothing for one that is hidden) and leaves with its
// place in the stack's own coordinates.

enum class StackDirection { Down, Right };

/// Lines `rects` up one after another, with `padding` before the first and `spacing` after each
/// that is not empty. Across, each becomes as large as the largest.
void PlaceInStack(StackDirection direction, moxui::ui::PaddingT<float> const& padding,
                  float spacing, std::vector<moxcore::geom::RectT<float>>& rects);

/// The size of a stack whose children PlaceInStack has placed.
[[nodiscard]] moxcore::geom::PointT<float> StackSize(
    std::vector<moxcore::geom::RectT<float>> const& rects,
    moxui::ui::PaddingT<float> const& padding);

/// `rect` made to fill, across, a stack of the size `stackSize`. What comes out negative stays so.
[[nodiscard]] moxcore::geom::RectT<float> FilledAcross(
    StackDirection direction, moxui::ui::PaddingT<float> const& padding,
    moxcore::geom::PointT<float> const& stackSize, moxcore::geom::RectT<float> const& rect);

}  // namespace quillomoxui
