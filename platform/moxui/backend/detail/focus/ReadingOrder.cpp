#include "moxui/backend/detail/focus/ReadingOrder.h"

#include <algorithm>
#include <numeric>

namespace moxui::backend {

std::vector<std::size_t> ReadingOrder(std::vector<moxcore::geom::RectT<float>> const& rects) {
    std::vector<std::size_t> order(rects.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return rects[a].y < rects[b].y; });
    for (auto row = order.begin(); row != order.end();) {
        auto const& first = rects[*row];
        auto const rowEnd = std::find_if(row + 1, order.end(), [&](std::size_t i) {
            auto const& rect = rects[i];
            float const overlap = std::min(first.y + first.height, rect.y + rect.height) - rect.y;
            return overlap * 2 <= std::min(first.height, rect.height);
        });
        std::stable_sort(row, rowEnd,
                         [&](std::size_t a, std::size_t b) { return rects[a].x < rects[b].x; });
        row = rowEnd;
    }
    return order;
}

}  // namespace moxui::backend
