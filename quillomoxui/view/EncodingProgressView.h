#pragma once

#include <optional>

#include "moxcore/threads/Clock.h"
#include "moxui/controls/UI_ProgressBar.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/properties/UTF16String.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/TextWithBackground.h"

namespace quillomoxui::view {

/// Shows how far the export and the upload are. Its status line is that of the moment at which it
/// was built: each status has a view of its own. While an upload waits for the service, the line
/// says since when, and a note that it goes on by itself. Cancel does nothing as yet. Main thread.
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
    void OnWaitingChanged(std::optional<moxcore::threads::TimePoint> const& since);

    UTF16String const statusText;

    boost::intrusive_ptr<moxui::controls::UI_StaticText> title;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> linkCaption;
    boost::intrusive_ptr<TextWithBackground> linkBox;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> status;
    boost::intrusive_ptr<moxui::controls::UI_ProgressBar> progressBar;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> cancelButton;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> waitNote;
};

}  // namespace quillomoxui::view
