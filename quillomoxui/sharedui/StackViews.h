#pragma once

#include <vector>

#include "moxcore/utility/Allocator.h"
#include "moxui/ui/Padding.h"
#include "moxui/ui/UI_SubView.h"
#include "quillomoxui/sharedui/StackLayout.h"

namespace quillomoxui {

/// A view whose children stand one after another. Its children are sub-views; a hidden one takes no
/// room. Main thread.
class StackViewBase : public moxui::ui::UI_SubView {
public:
    struct ViewRect {
        boost::intrusive_ptr<moxui::ui::UI_SubView> view;
        moxcore::geom::RectT<float> rect;  ///< in the stack's own coordinates
    };
    using ViewRects = std::vector<ViewRect, moxcore::utility::Allocator<ViewRect>>;

    ~StackViewBase() override;

    // The room around the children and between them, nothing at first. They count from the next
    // measuring and the next UI_SetLocalRectF on; setting them moves nothing.
    void SetPadding(moxui::ui::PaddingT<float> const& newPadding) { padding = newPadding; }
    void SetPadding(float allSides) { padding = {allSides, allSides, allSides, allSides}; }
    void SetSpacing(float newSpacing) { spacing = newSpacing; }

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;

    /// The children's places, each with its measured size along the stack; made anew on every call.
    [[nodiscard]] virtual ViewRects GetViewRects() const = 0;

protected:
    StackViewBase();

    [[nodiscard]] ViewRects PlaceChildren(StackDirection direction) const;
    void LayOut(StackDirection direction, moxcore::geom::RectT<float> const& rect);

private:
    moxui::ui::PaddingT<float> padding;
    float spacing = 0;
};

/// From top to bottom, all as wide as the stack.
class VStackView : public StackViewBase {
public:
    VStackView();
    ~VStackView() override;

    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;
    [[nodiscard]] ViewRects GetViewRects() const override;
};

/// From left to right, all as high as the stack.
class HStackView : public StackViewBase {
public:
    HStackView();
    ~HStackView() override;

    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;
    [[nodiscard]] ViewRects GetViewRects() const override;
};

}  // namespace quillomoxui
