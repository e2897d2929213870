#pragma once

#include "moxui/controls/UI_HotTextURL.h"
#include "moxui/controls/UI_PictureButton.h"
#include "moxui/controls/UI_PictureTextButton.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/WorkflowLabel.h"

namespace quillomoxui::view {

/// Shows the review link that there was when the view was built, and copies it. Its settings button
/// does nothing as yet. Main thread.
class CopyLinkSectionView : public PopupBaseView {
public:
    explicit CopyLinkSectionView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);
    ~CopyLinkSectionView() override;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

private:
    void OnCopyButtonChange(moxui::ui::Message* message);
    void OnLinkSettingsClicked(moxui::ui::Message* message);

    boost::intrusive_ptr<moxui::controls::UI_HotTextURL> link;
    boost::intrusive_ptr<moxui::controls::UI_PictureTextButton> copyButton;
    boost::intrusive_ptr<WorkflowLabel> workflowLabel;
    boost::intrusive_ptr<moxui::controls::UI_PictureButton> settingsButton;
    /// The end of the share, for assistive tools alone: the rest of the view shows it to eyes.
    boost::intrusive_ptr<moxui::controls::UI_StaticText> ready;
};

}  // namespace quillomoxui::view
