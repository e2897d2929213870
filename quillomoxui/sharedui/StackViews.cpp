#include "quillomoxui/sharedui/StackViews.h"

#include "quillomoxui/sharedui/RecommendedSize.h"

namespace quillomoxui {

using moxcore::geom::RectT;
using moxui::ui::UI_SubView;

StackViewBase::StackViewBase() = default;
StackViewBase::~StackViewBase() = default;

moxcore::geom::PointT<float> StackViewBase::UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const {
    auto const viewRects = GetViewRects();
    std::vector<RectT<float>> rects;
    rects.reserve(viewRects.size());
    for (auto const& [view, rect] : viewRects)
        rects.push_back(rect);
    return StackSize(rects, padding);
}

StackViewBase::ViewRects StackViewBase::PlaceChildren(StackDirection direction) const {
    ViewRects viewRects;
    std::vector<RectT<float>> rects;
    viewRects.reserve(ChildCount());
    rects.reserve(ChildCount());
    for (auto child = ChildBegin(); child != ChildEnd(); ++child) {
        boost::intrusive_ptr<UI_SubView> const view(static_cast<UI_SubView*>(child->get()));
        auto const size =
            view->UI_IsViewVisible() ? GetRecommendedSize(*child) : moxcore::geom::PointT<float>();
        viewRects.push_back({view, {}});
        rects.push_back({0, 0, size.x, size.y});
    }
    PlaceInStack(direction, padding, spacing, rects);
    for (std::size_t i = 0; i < rects.size(); ++i)
        viewRects[i].rect = rects[i];
    return viewRects;
}

void StackViewBase::LayOut(StackDirection direction, RectT<float> const& rect) {
    UI_SubView::UI_SetLocalRectF(rect);
    for (auto const& [view, place] : GetViewRects())
        view->UI_SetLocalRectF(FilledAcross(direction, padding, {rect.width, rect.height}, place));
}

VStackView::VStackView() = default;
VStackView::~VStackView() = default;

void VStackView::UI_SetLocalRectF(RectT<float> const& rect) {
    LayOut(StackDirection::Down, rect);
}

StackViewBase::ViewRects VStackView::GetViewRects() const {
    return PlaceChildren(StackDirection::Down);
}

HStackView::HStackView() = default;
HStackView::~HStackView() = default;

void HStackView::UI_SetLocalRectF(RectT<float> const& rect) {
    LayOut(StackDirection::Right, rect);
}

StackViewBase::ViewRects HStackView::GetViewRects() const {
    return PlaceChildren(StackDirection::Right);
}

}  // namespace quillomoxui
