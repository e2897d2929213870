#include "quillomoxui/view/WorkspaceSectionView.h"

#include <algorithm>
#include <cmath>

#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/view/Layout.h"

namespace quillomoxui::view {
namespace {

constexpr float kMargin = 15;
constexpr float kRowWidth = 310;
constexpr float kRowHeight = 20;
constexpr float kRowStep = 25;

}  // namespace

WorkspaceSectionView::WorkspaceSectionView(
    std::shared_ptr<QuilloWorkspace> const& workspace,
    std::shared_ptr<ProposedSelectionNotifyingPropertyHost> const& proposedSelection,
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID)
    : header(new moxui::controls::UI_StaticText(workspace->GetName())),
      proposedSelection(proposedSelection),
      currentViewID(currentViewID) {
    header->SetFontStyleName("Orvane Clean");
    UI_SetAccessibleName(workspace->GetName());
    AddShown(*this, header);
}

WorkspaceSectionView::~WorkspaceSectionView() = default;

void WorkspaceSectionView::SetSizeChangedFunction(std::function<void()> function) {
    sizeChanged = std::move(function);
}

void WorkspaceSectionView::OnProjectsChanged(NodeVector<QuilloProject> const& projects) {
    if (auto const focused = GetFocusedProject(); !focused.IsNull()) focusWanted = focused;
    for (auto const& item : items)
        ChildRequestRemove(item);
    items.clear();
    placedCount = 0;
    items.reserve(projects.size());
    for (auto const& project : projects) {
        items.emplace_back(new ProjectListItem(project, proposedSelection, currentViewID));
        AddShown(*this, items.back());
    }
    if (sizeChanged) sizeChanged();
}

void WorkspaceSectionView::ShowRows(float top, float bottom) {
    if (placedCount == 0) return;
    auto const index = [&](float y) {
        auto const row = std::floor((y - firstRowTop) / kRowStep);
        return static_cast<std::size_t>(
            std::clamp(row, 0.0F, static_cast<float>(items.size() - 1)));
    };
    for (auto i = index(top); i <= index(bottom); ++i)
        items[i]->ShowContents();
}

moxcore::utility::Guid WorkspaceSectionView::GetFocusedProject() const {
    auto const focused = std::find_if(items.begin(), items.end(),
                                      [](auto const& item) { return item->UI_HasFocus(); });
    return focused == items.end() ? moxcore::utility::Guid() : (*focused)->GetProject()->GetID();
}

moxcore::geom::PointT<float> WorkspaceSectionView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, kRowStep * static_cast<float>(items.size()) + 28};
}

void WorkspaceSectionView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    UI_ControlView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    auto const size = layout.SizeOf(*header);
    header->UI_SetLocalRectF(
        {kMargin, 0, std::ceil(std::min(rect.width - 2 * kMargin, size.x)), size.y});
    if (float const top = size.y + 9; top != firstRowTop) {
        firstRowTop = top;
        placedCount = 0;
    }
    for (; placedCount < items.size(); ++placedCount)
        items[placedCount]->UI_SetLocalRectF(
            {kMargin, firstRowTop + kRowStep * static_cast<float>(placedCount), kRowWidth,
             kRowHeight});
    // Not before: what gets the focus is scrolled into view.
    if (focusWanted.IsNull()) return;
    for (auto const& item : items) {
        if (item->GetProject()->GetID() != focusWanted) continue;
        item->UI_SetFocus();
        focusWanted = {};
        return;
    }
}

}  // namespace quillomoxui::view
