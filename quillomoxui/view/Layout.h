#pragma once

#include "moxui/drawbot/MeasuringDrawbot.h"
#include "moxui/ui/UI_SubView.h"

namespace quillomoxui::view {

/// Measures and places the children of a view that is in a window. Made for one layout.
class Layout {
public:
    explicit Layout(moxui::ui::UI_Node const& view)
        : drawbot(view.UI_GetDrawSupplier()
                      ? moxui::drawbot::MeasuringDrawbot::Get(view.UI_GetDrawSupplier())
                      : nullptr) {}

    /// Whether the view is in a window; nothing can be measured otherwise.
    explicit operator bool() const { return drawbot != nullptr; }

    [[nodiscard]] moxui::drawbot::Drawbot& Drawbot() const { return *drawbot; }

    [[nodiscard]] moxcore::geom::PointT<float> SizeOf(moxui::ui::UI_Node const& child) const {
        return child.UI_GetRecommendedSize(drawbot.get());
    }

    /// Puts `child` at (x, y), as large as it would like, and answers how large that is.
    moxcore::geom::PointT<float> PlaceAt(moxui::ui::UI_SubView& child, float x, float y) const {
        auto const size = SizeOf(child);
        child.UI_SetLocalRectF({x, y, size.x, size.y});
        return size;
    }

private:
    std::shared_ptr<moxui::drawbot::MeasuringDrawbot> drawbot;
};

/// Shows `child` and makes it the last child of `parent`.
inline void AddShown(moxui::ui::UI_Container& parent,
                     boost::intrusive_ptr<moxui::ui::UI_SubView> const& child) {
    child->UI_Show(true);
    parent.ChildPushBack(child);
}

}  // namespace quillomoxui::view
