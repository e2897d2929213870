#include "quillomoxui/sharedui/StackLayout.h"

#include <algorithm>

namespace quillomoxui {

using moxcore::geom::PointT;
using moxcore::geom::RectT;
using moxui::ui::PaddingT;

void PlaceInStack(StackDirection direction, PaddingT<float> const& padding, float spacing,
                  std::vector<RectT<float>>& rects) {
    bool const down = direction == StackDirection::Down;
    auto const along = down ? &RectT<float>::y : &RectT<float>::x;
    auto const across = down ? &RectT<float>::x : &RectT<float>::y;
    auto const length = down ? &RectT<float>::height : &RectT<float>::width;
    auto const breadth = down ? &RectT<float>::width : &RectT<float>::height;

    float largest = 0;
    for (auto const& rect : rects)
        largest = std::max(largest, rect.*breadth);

    float position = down ? padding.top : padding.left;
    for (auto& rect : rects) {
        rect.*breadth = largest;
        rect.*across = down ? padding.left : padding.top;
        rect.*along = position;
        position += rect.*length;
        if (!rect.IsEmpty()) position += spacing;
    }
}

PointT<float> StackSize(std::vector<RectT<float>> const& rects, PaddingT<float> const& padding) {
    RectT<float> all;
    for (auto const& rect : rects) {
        if (all.IsEmpty())
            all = rect;
        else if (!rect.IsEmpty())
            all = BoundingBox(all, rect);
    }
    return {all.width + padding.left + padding.right, all.height + padding.top + padding.bottom};
}

RectT<float> FilledAcross(StackDirection direction, PaddingT<float> const& padding,
                          PointT<float> const& stackSize, RectT<float> const& rect) {
    RectT<float> filled = rect;
    if (direction == StackDirection::Down)
        filled.width = stackSize.x - padding.left - padding.right;
    else
        filled.height = stackSize.y - padding.top - padding.bottom;
    return filled;
}

}  // namespace quillomoxui
