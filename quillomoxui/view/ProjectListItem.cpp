#include "quillomoxui/view/ProjectListItem.h"

#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/PickerIcons.h"
#include "quillomoxui/view/RowHighlight.h"

namespace quillomoxui::view {

ProjectListItem::ProjectListItem(
    std::shared_ptr<QuilloProject> const& project,
    std::shared_ptr<ProposedSelectionNotifyingPropertyHost> const& proposedSelection,
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID)
    : project(project), proposedSelection(proposedSelection), currentViewID(currentViewID) {
    UI_SetFocusable(true, moxui::ui::AccessibleRole::ListItem);
    UI_SetAccessibleName(project->GetName());
    if (!proposedSelection) return;
    RetainBinding(proposedSelection->BindValueChanged(
        utility::WeakBindMemberFunction(this, &ProjectListItem::UpdateProjectSelectionState)));
}

ProjectListItem::~ProjectListItem() = default;

void ProjectListItem::ShowContents() {
    if (name) return;
    icon = new moxui::controls::UI_StaticImage;
    icon->SetImageSupplyFunction(ProjectIcon());
    name = new moxui::controls::UI_StaticText(project->GetName());
    chevron = new moxui::controls::UI_StaticImage;
    chevron->SetImageSupplyFunction(ForwardChevron());
    AddShown(*this, icon);
    AddShown(*this, name);
    AddShown(*this, chevron);
    PlaceContents();
}

moxcore::geom::PointT<float> ProjectListItem::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {310, 20};
}

void ProjectListItem::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    UI_ControlView::UI_SetLocalRectF(rect);
    PlaceContents();
}

void ProjectListItem::PlaceContents() {
    Layout const layout(*this);
    if (!layout || !name) return;
    auto const rect = UI_GetLocalRectF(false);
    bool const isNewSkin = moxui::skins::IsRunningV7OrBeyond();
    constexpr float kNameLeft = 26.01F;
    constexpr float kIconHeight = 13.12F;
    icon->UI_SetLocalRectF({6.13F, (rect.height - kIconHeight) * 0.5F, 13.29F, kIconHeight});
    float const chevronLeft = rect.width - (isNewSkin ? 21.0F : 14.0F);
    float const nameHeight = layout.SizeOf(*name).y;
    name->UI_SetLocalRectF({kNameLeft, (rect.height - nameHeight - 2) * 0.5F,
                            chevronLeft - 8 - kNameLeft, nameHeight});
    chevron->UI_SetLocalRectF(
        {chevronLeft, (rect.height - (isNewSkin ? 19.0F : 9.0F)) * 0.5F, 7, 3});
}

void ProjectListItem::UpdateProjectSelectionState(std::shared_ptr<QuilloFolder> const& proposed) {
    bool const isSelected =
        proposed && proposed->FindSelfOrAncestorOfType<QuilloProject>() == project;
    if (isSelected == selected) return;
    selected = isSelected;
    UI_SetAccessibleSelected(selected);
    UI_Invalidate();
}

bool ProjectListItem::UI_DoPointerEvent(moxui::ui::UI_Node* node,
                                        moxui::ui::PointerEvent const& event) {
    FollowHover(event, *this, hovered);
    if (!IsPrimaryPress(event) || !node || !proposedSelection || !currentViewID) return false;
    if (!selected) proposedSelection->SetProposedSelection(project->GetRootFolder());
    currentViewID->SetCurrentViewID(ShareForReviewViewID::SelectFolder);
    return false;
}

void ProjectListItem::UI_Draw(moxui::drawbot::Drawbot* drawbot) const {
    if (hovered || selected) DrawRowHighlight(*drawbot, *this);
    UI_ControlView::UI_Draw(drawbot);
}

}  // namespace quillomoxui::view
