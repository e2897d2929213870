#pragma once

#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/sharedui/CallToActionButton.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/WorkflowLabel.h"

namespace quillomoxui::view {

/// Asks to sign in, and moves the popup on once somebody has. Main thread.
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

    boost::intrusive_ptr<WorkflowLabel> workflowLabel;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> description;
    boost::intrusive_ptr<sharedui::CallToActionButton> signinButton;
};

}  // namespace quillomoxui::view
