#pragma once

#include "moxui/controls/UI_ProgressBar.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/TextWithBackground.h"

namespace quillomoxui::view {

/// Shows how far the export and the upload are. Its status line is that of the moment at which it
/// was built: each status has a view of its own. Cancel does nothing as yet. Main thread.
class EncodingProgressView : public PopupBaseView {
public:
    explicit EncodingProgressView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);
    ~EncodingProgressView() override;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

private:
    void OnProgressChanged(double progress);
    void OnReviewLinkChanged(UTF16String const& link);

    boost::intrusive_ptr<moxui::controls::UI_StaticText> title;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> linkCaption;
    boost::intrusive_ptr<TextWithBackground> linkBox;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> status;
    boost::intrusive_ptr<moxui::controls::UI_ProgressBar> progressBar;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> cancelButton;
};

}  // namespace quillomoxui::view
