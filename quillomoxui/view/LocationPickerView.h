#pragma once

#include "moxui/controls/UI_Divider.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/sharedui/CallToActionButton.h"
#include "quillomoxui/view/FolderPickerView.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/ProjectPickerView.h"

namespace quillomoxui::view {

/// Has the user pick the folder that a share goes to: first a project, then a folder. The pickers
/// propose; Choose commits the proposal and Cancel goes back to what was committed. Another user
/// gets pickers of his own. Main thread.
class LocationPickerView : public PopupBaseView {
public:
    // The IDs by which a dialog finds its buttons.
    static constexpr char kCancelButtonID[] = "LocationPickerCancel";
    static constexpr char kCommitButtonID[] = "LocationPickerCommit";

    explicit LocationPickerView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);
    ~LocationPickerView() override;

    /// As the button does.
    void Cancel();

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

private:
    void MakePickers();
    void OnUserChanged(std::shared_ptr<QuilloUser> const& newUser);
    void ShowCurrentSelectionView(ShareForReviewViewID id);
    void OnSelectionChanged(std::shared_ptr<QuilloFolder> const& proposed);
    void OnCancelBtnClicked(moxui::ui::Message* message);
    void OnChooseBtnClicked(moxui::ui::Message* message);
    void ResetProposedSelection();

    std::shared_ptr<QuilloUser> user;  // whose pickers these are
    std::shared_ptr<BindingHandle> proposalBinding;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> header;
    boost::intrusive_ptr<moxui::controls::UI_Divider> topDivider;
    boost::intrusive_ptr<ProjectPickerView> projectPicker;
    boost::intrusive_ptr<FolderPickerView> folderPicker;
    boost::intrusive_ptr<moxui::controls::UI_Divider> bottomDivider;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> cancelButton;
    boost::intrusive_ptr<sharedui::CallToActionButton> chooseButton;
};

}  // namespace quillomoxui::view
