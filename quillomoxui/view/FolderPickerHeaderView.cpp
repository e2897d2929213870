#include "quillomoxui/view/FolderPickerHeaderView.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/PickerIcons.h"
#include "quillomoxui/view/RowHighlight.h"

namespace quillomoxui::view {

FolderPickerHeaderView::FolderPickerHeaderView(
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID)
    : projectName(new moxui::controls::UI_StaticText),
      workspaceName(new moxui::controls::UI_StaticText),
      chevron(new moxui::controls::UI_StaticImage),
      projectIcon(new moxui::controls::UI_StaticImage),
      currentViewID(currentViewID) {
    UI_SetFocusable(true, moxui::ui::AccessibleRole::Button);
    projectName->SetFontStyleName("Bold");
    chevron->SetImageSupplyFunction(BackChevron());
    projectIcon->SetImageSupplyFunction(ProjectIcon());
    AddShown(*this, projectIcon);
    ChildPushBack(projectName);
    ChildPushBack(workspaceName);
    AddShown(*this, chevron);
}

FolderPickerHeaderView::~FolderPickerHeaderView() = default;

void FolderPickerHeaderView::SetHeaderName(UTF16String const& project,
                                           UTF16String const& workspace) {
    projectName->SetText(project);
    workspaceName->SetText(workspace);
    projectName->UI_Show(true);
    workspaceName->UI_Show(true);
    UI_SetAccessibleName(project + moxcore::string::AsciiToUTF16(", ") + workspace);
    UI_SetLocalRectF(UI_GetLocalRectF(true));
}

UTF16String FolderPickerHeaderView::GetProjectName() const {
    return projectName->GetText();
}

moxcore::geom::PointT<float> FolderPickerHeaderView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {310, 20};
}

void FolderPickerHeaderView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    UI_ControlView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    bool const isNewSkin = moxui::skins::IsRunningV7OrBeyond();
    float const chevronLeft = rect.x + (isNewSkin ? 14.0F : 7.0F);
    chevron->UI_SetLocalRectF(
        {chevronLeft, (rect.height - (isNewSkin ? 19.0F : 9.0F)) * 0.5F, 7, 3});
    constexpr float kIconHeight = 13.12F;
    float const iconLeft = chevronLeft + 13.13F;
    projectIcon->UI_SetLocalRectF(
        {iconLeft, (rect.height - kIconHeight) * 0.5F, 13.29F, kIconHeight});

    float const textLeft = iconLeft + 19.88F;
    float const projectHeight = layout.SizeOf(*projectName).y;
    float const workspaceHeight = layout.SizeOf(*workspaceName).y;
    float free = rect.height - projectHeight - 2;
    if (workspaceName->UI_IsViewVisible()) free -= workspaceHeight;
    projectName->UI_SetLocalRectF({textLeft, free * 0.5F, rect.width - textLeft, projectHeight});
    workspaceName->UI_SetLocalRectF(
        {textLeft, free * 0.5F + projectHeight, rect.width - textLeft, workspaceHeight});
}

bool FolderPickerHeaderView::UI_DoPointerEvent(moxui::ui::UI_Node*,
                                               moxui::ui::PointerEvent const& event) {
    FollowHover(event, *this, hovered);
    if (IsPrimaryPress(event)) currentViewID->SetCurrentViewID(ShareForReviewViewID::SelectProject);
    return false;
}

void FolderPickerHeaderView::UI_Draw(moxui::drawbot::Drawbot* drawbot) const {
    if (hovered) DrawRowHighlight(*drawbot, *this);
    UI_ControlView::UI_Draw(drawbot);
}

}  // namespace quillomoxui::view
