#include "moxui/backend/detail/windows/Placement.h"

#include <algorithm>
#include <tuple>

namespace moxui::backend {
namespace {

using Rect = moxcore::geom::RectT<float>;

float Right(Rect const& rect) {
    return rect.x + rect.width;
}

float Bottom(Rect const& rect) {
    return rect.y + rect.height;
}

float SharedArea(Rect const& a, Rect const& b) {
    float const width = std::min(Right(a), Right(b)) - std::max(a.x, b.x);
    float const height = std::min(Bottom(a), Bottom(b)) - std::max(a.y, b.y);
    return std::max(0.0F, width) * std::max(0.0F, height);
}

/// Squared, from the middle of `rect` to the nearest point of `screen`.
float Distance(Rect const& rect, Rect const& screen) {
    float const x = rect.x + rect.width / 2;
    float const y = rect.y + rect.height / 2;
    float const dx = x - std::clamp(x, screen.x, Right(screen));
    float const dy = y - std::clamp(y, screen.y, Bottom(screen));
    return dx * dx + dy * dy;
}

}  // namespace

Rect ScreenOf(Rect const& rect, std::vector<Rect> const& screens) {
    return *std::min_element(screens.begin(), screens.end(), [&](Rect const& a, Rect const& b) {
        return std::tuple(-SharedArea(rect, a), Distance(rect, a)) <
               std::tuple(-SharedArea(rect, b), Distance(rect, b));
    });
}

Rect MovedInto(Rect const& rect, Rect const& bounds) {
    auto const moved = [](float start, float extent, float low, float high) {
        return std::max(low, std::min(start, high - extent));
    };
    return {moved(rect.x, rect.width, bounds.x, Right(bounds)),
            moved(rect.y, rect.height, bounds.y, Bottom(bounds)), rect.width, rect.height};
}

Rect PlacePopup(Rect const& asked, Rect const& anchor, Rect const& screen) {
    auto place = asked;
    float const gap = asked.y - Bottom(anchor);
    float const above = anchor.y - gap - asked.height;
    if (gap >= 0 && Bottom(asked) > Bottom(screen) && above >= screen.y) place.y = above;
    return MovedInto(place, screen);
}

Rect CentredOver(Rect const& rect, Rect const& parent) {
    return {parent.x + (parent.width - rect.width) / 2,
            parent.y + (parent.height - rect.height) / 2, rect.width, rect.height};
}

}  // namespace moxui::backend
