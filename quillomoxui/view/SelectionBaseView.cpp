#include "quillomoxui/view/SelectionBaseView.h"

#include "quillomoxui/model/NodePath.h"

namespace quillomoxui::view {

SelectionBaseView::SelectionBaseView(std::shared_ptr<QuilloUser> const& user) : user(user) {}

SelectionBaseView::~SelectionBaseView() = default;

void SelectionBaseView::CommitProposedSelection() {
    if (auto const folder = FindInTree(user, user->GetProposedSelection()))
        user->SetSelection(folder);
}

moxcore::geom::PointT<float> SelectionBaseView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, 314};
}

}  // namespace quillomoxui::view
