#pragma once

#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quilloauth/SignInProgress.h"
#include "quillomoxui/sharedui/CallToActionButton.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/WorkflowLabel.h"

namespace quillomoxui::view {

/// Asks to sign in, and moves the popup on once somebody has. While a sign-in is under way, it says
/// what that waits for, and offers to give up and to open the page in the browser again; when it
/// comes to nothing, it says why and what to do. Main thread.
class SigninPromptView : public PopupBaseView {
public:
    explicit SigninPromptView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);
    ~SigninPromptView() override;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

private:
    void OnLoginClicked(moxui::ui::Message* message);
    void OnIsLoggedInChanged(bool loggedIn);
    void OnCancelClicked(moxui::ui::Message* message);
    void OnReopenClicked(moxui::ui::Message* message);
    void OnProgressChanged(quilloauth::SignInProgress const& progress);

    boost::intrusive_ptr<WorkflowLabel> workflowLabel;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> description;
    boost::intrusive_ptr<sharedui::CallToActionButton> signinButton;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> cancelButton;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> reopenButton;
};

}  // namespace quillomoxui::view
