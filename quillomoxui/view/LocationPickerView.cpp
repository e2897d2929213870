#include "quillomoxui/view/LocationPickerView.h"

#include "quillomoxui/model/NodePath.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {
namespace {

using ID = ShareForReviewViewID;
using utility::WeakBindMemberFunction;

/// Whether `view` or one below it has the keyboard's focus.
bool HoldsFocus(moxui::ui::UI_Container const& view) {
    for (auto child = view.ChildBegin(); child != view.ChildEnd(); ++child) {
        auto const* const below = dynamic_cast<moxui::ui::UI_SubView const*>(child->get());
        if (below && (below->UI_HasFocus() || HoldsFocus(*below))) return true;
    }
    return false;
}

}  // namespace

LocationPickerView::LocationPickerView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      header(new moxui::controls::UI_StaticText(
          Text("$$$/Vistrel/quillomoxui/view/LocationPicker/Header=Select a location on Quillo"))),
      topDivider(new moxui::controls::UI_Divider),
      bottomDivider(new moxui::controls::UI_Divider),
      cancelButton(new moxui::controls::UI_TextButton(
          Text("$$$/Vistrel/quillomoxui/view/LocationPicker/CancelBtn=Cancel"))),
      chooseButton(new sharedui::CallToActionButton) {
    header->SetFontStyleName("Bold");
    cancelButton->SetFontStyleName("Bold");
    cancelButton->UI_SetNodeID(kCancelButtonID);
    cancelButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &LocationPickerView::OnCancelBtnClicked));
    chooseButton->SetText(Text("$$$/Vistrel/quillomoxui/view/LocationPicker/ChooseBtn=Choose"));
    chooseButton->SetFontStyleName("Bold");
    chooseButton->UI_SetNodeID(kCommitButtonID);
    chooseButton->UI_SetEnabled(false);
    chooseButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &LocationPickerView::OnChooseBtnClicked));

    AddShown(*this, header);
    AddShown(*this, topDivider);
    AddShown(*this, bottomDivider);
    AddShown(*this, cancelButton);
    AddShown(*this, chooseButton);
    MakePickers();

    RetainBinding(static_cast<CurrentViewIDNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(
                          this, &LocationPickerView::ShowCurrentSelectionView)));
    RetainBinding(
        static_cast<UserNotifyingPropertyHost&>(*viewModel)
            .BindValueChanged(WeakBindMemberFunction(this, &LocationPickerView::OnUserChanged)));
}

LocationPickerView::~LocationPickerView() = default;

moxcore::geom::PointT<float> LocationPickerView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, 392};
}

void LocationPickerView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    PopupBaseView::UI_SetLocalRectF(rect);
    constexpr float kMargin = 15;
    constexpr float kWidth = 340;
    constexpr float kPickerTop = 27;
    header->UI_SetLocalRectF({kMargin, 6, rect.width - 2 * kMargin, 15});
    topDivider->UI_SetLocalRectF({0, kPickerTop, kWidth, 1});
    Layout const layout(*this);
    if (!layout) return;
    layout.PlaceAt(*projectPicker, 0, kPickerTop);
    layout.PlaceAt(folderPicker->GetView(), 0, kPickerTop);
    bottomDivider->UI_SetLocalRectF({0, rect.height - 50, kWidth, 1});

    constexpr float kButtonHeight = 20;
    float const buttonTop = rect.height - 35;
    float const chooseWidth = layout.SizeOf(*chooseButton).x;
    float const chooseLeft = rect.width - kMargin - chooseWidth;
    chooseButton->UI_SetLocalRectF({chooseLeft, buttonTop, chooseWidth, kButtonHeight});
    float const cancelWidth = layout.SizeOf(*cancelButton).x;
    cancelButton->UI_SetLocalRectF(
        {chooseLeft - 10 - cancelWidth, buttonTop, cancelWidth, kButtonHeight});
}

/// Makes the pickers of the user there is, and shows the one that is due.
void LocationPickerView::MakePickers() {
    user = ViewModel().GetUser();
    // A proposal that has been deleted since is no place to start from.
    auto const proposed = user->GetProposedSelection();
    if (proposed && !FindInTree(user, proposed)) ResetProposedSelection();

    moxcore::utility::RefCountedWeakPtr<LocationPickerView> const weakSelf(this);
    auto const tellingPopup = [weakSelf](void (PopupBaseView::*tell)()) {
        return [weakSelf, tell](moxui::controls::UI_Popup&) {
            if (auto const self = weakSelf.Lock()) ((*self).*tell)();
        };
    };
    auto const& viewModel = SharedViewModel();
    projectPicker =
        new ProjectPickerView(user, viewModel, tellingPopup(&PopupBaseView::SetPreShowPopupMenu),
                              tellingPopup(&PopupBaseView::SetPostShowPopupMenu));
    folderPicker = FolderPickerView::CreateFolderPickerView(user, viewModel);
    folderPicker->SetFolderActivatedFunction([weakSelf] {
        if (auto const self = weakSelf.Lock()) self->chooseButton->Press();
    });
    constexpr std::size_t kBelowTopDivider = 2;
    ChildInsert(kBelowTopDivider, projectPicker);
    ChildInsert(kBelowTopDivider + 1, &folderPicker->GetView());
    ShowCurrentSelectionView(viewModel->GetCurrentViewID());

    proposalBinding.reset();  // what it still delivers comes before what the new one does
    proposalBinding = static_cast<ProposedSelectionNotifyingPropertyHost&>(*user).BindValueChanged(
        WeakBindMemberFunction(this, &LocationPickerView::OnSelectionChanged));
}

void LocationPickerView::OnUserChanged(std::shared_ptr<QuilloUser> const& newUser) {
    if (newUser == user || newUser != ViewModel().GetUser()) return;
    auto const oldProjects = projectPicker;
    auto const oldFolders = folderPicker;
    bool const hadFocus = HoldsFocus(*oldProjects) || HoldsFocus(oldFolders->GetView());
    MakePickers();
    UI_SetLocalRectF(UI_GetLocalRectF(true));
    if (hadFocus && projectPicker->UI_IsViewVisible()) projectPicker->TakeFocus();
    if (hadFocus && folderPicker->GetView().UI_IsViewVisible()) folderPicker->TakeFocus();
    ChildRequestRemove(oldProjects);
    ChildRequestRemove(&oldFolders->GetView());
}

void LocationPickerView::ShowCurrentSelectionView(ShareForReviewViewID id) {
    auto& folderView = folderPicker->GetView();
    bool const showsProjects = id == ID::SelectProject;
    bool const showsFolders = id == ID::SelectFolder;
    // The keyboard's focus goes along from one step to the other.
    bool const isToFolders = showsFolders && HoldsFocus(*projectPicker);
    bool const isToProjects = showsProjects && HoldsFocus(folderView);
    projectPicker->UI_Show(showsProjects);
    folderView.UI_Show(showsFolders);
    if (isToFolders) folderPicker->TakeFocus();
    if (isToProjects) projectPicker->TakeFocus();
}

void LocationPickerView::OnSelectionChanged(std::shared_ptr<QuilloFolder> const& proposed) {
    chooseButton->UI_SetEnabled(proposed != nullptr);
}

void LocationPickerView::OnCancelBtnClicked(moxui::ui::Message*) {
    Cancel();
}

void LocationPickerView::Cancel() {
    // Nobody looks any more at what the proposal goes back to: it is not fetched.
    folderPicker->GetView().UI_Show(false);
    ResetProposedSelection();
    ViewModel().LocationPickerCancelled();
}

void LocationPickerView::OnChooseBtnClicked(moxui::ui::Message*) {
    auto const proposed = user->GetProposedSelection();
    if (proposed && !FindInTree(user, proposed)) {
        // It has gone while the user pressed. The picker proposes what is left of its path, which
        // he has yet to see.
        chooseButton->UI_SetEnabled(false);
        return;
    }
    projectPicker->CommitProposedSelection();
    ResetProposedSelection();
    ViewModel().LocationPickerSelectionCommitted();
}

void LocationPickerView::ResetProposedSelection() {
    user->SetProposedSelection(user->GetSelection());
}

}  // namespace quillomoxui::view
