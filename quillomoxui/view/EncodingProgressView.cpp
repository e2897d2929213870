#include "quillomoxui/view/EncodingProgressView.h"

#include <algorithm>

#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {
namespace {

using moxui::controls::UI_StaticText;
using utility::WeakBindMemberFunction;

constexpr char kLinkDescription[] =
    "$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/LinkDescription="
    "Link will be available once export completes";

UTF16String StatusText(ShareForReviewViewID id) {
    switch (id) {
        case ShareForReviewViewID::WaitingInQueue:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/WaitingInQueue="
                "Waiting in queue...");
        case ShareForReviewViewID::EncodingProgress:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/EncodingInProgress="
                "Encoding in Progress...");
        case ShareForReviewViewID::UploadInProgress:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/UploadInProgress="
                "Upload in Progress...");
        default:
            return {};
    }
}

}  // namespace

EncodingProgressView::EncodingProgressView(
    std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      statusText(StatusText(viewModel->GetCurrentViewID())),
      title(new UI_StaticText),
      linkCaption(new UI_StaticText),
      linkBox(new TextWithBackground(Text(kLinkDescription))),
      status(new UI_StaticText),
      progressBar(new moxui::controls::UI_ProgressBar),
      cancelButton(new moxui::controls::UI_TextButton),
      waitNote(new UI_StaticText) {
    title->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/ShareForReview="
             "Share for Review"));
    title->SetFontStyleName("Bold");
    linkCaption->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/Link=Link:"));
    status->SetText(statusText);
    status->SetStatus();
    progressBar->UI_SetAccessibleName(statusText);
    cancelButton->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/CancelBtn=Cancel"));
    cancelButton->UI_SetEnabled(true);
    waitNote->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/GoesOnByItself="
             "The upload goes on by itself."));

    RetainBinding(static_cast<EncodingProgressNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(
                          WeakBindMemberFunction(this, &EncodingProgressView::OnProgressChanged)));
    RetainBinding(static_cast<ReviewLinkURLNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(
                          this, &EncodingProgressView::OnReviewLinkChanged)));
    if (viewModel->GetCurrentViewID() == ShareForReviewViewID::UploadInProgress)
        RetainBinding(static_cast<UploadWaitingSinceNotifyingPropertyHost&>(*viewModel)
                          .BindValueChanged(WeakBindMemberFunction(
                              this, &EncodingProgressView::OnWaitingChanged)));

    for (auto const& child : std::initializer_list<boost::intrusive_ptr<UI_SubView>>{
             title, linkCaption, linkBox, status, progressBar, cancelButton})
        AddShown(*this, child);
    ChildPushBack(waitNote);
    UI_Show(true);
}

EncodingProgressView::~EncodingProgressView() = default;

moxcore::geom::PointT<float> EncodingProgressView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, 161};
}

void EncodingProgressView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    PopupBaseView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    constexpr float kLeft = 15;
    constexpr float kWidth = 310;
    layout.PlaceAt(*title, kLeft, 12);
    layout.PlaceAt(*linkCaption, kLeft, 35);
    layout.PlaceAt(*linkBox, kLeft, 54);
    auto const statusSize = layout.SizeOf(*status);
    status->UI_SetLocalRectF({kLeft, 84, std::min(statusSize.x, kWidth), statusSize.y});
    progressBar->UI_SetLocalRectF({kLeft, 103, kWidth, 12});
    float const cancelLeft = 324 - layout.SizeOf(*cancelButton).x;
    auto const cancelSize = layout.PlaceAt(*cancelButton, cancelLeft, 125);
    waitNote->UI_SetLocalRectF({kLeft, 125, cancelLeft - kLeft - 8, cancelSize.y});
}

void EncodingProgressView::OnProgressChanged(double progress) {
    constexpr unsigned kMaximum = 1000;
    progressBar->SetProgress(static_cast<unsigned>(progress * kMaximum), kMaximum);
}

void EncodingProgressView::OnWaitingChanged(
    std::optional<moxcore::threads::TimePoint> const& since) {
    auto const text =
        since ? TextWithTime(
                    "$$$/Vistrel/quillomoxui/view/QuilloShare/EncodingProgressView/WaitingSince="
                    "Quillo has not been available since {time}.",
                    *since)
              : statusText;
    status->SetText(text);
    progressBar->UI_SetAccessibleName(text);
    waitNote->UI_Show(since.has_value());
    UI_SetLocalRectF(UI_GetLocalRectF(true));
}

void EncodingProgressView::OnReviewLinkChanged(UTF16String const& link) {
    linkBox->SetValue(link.empty() ? Text(kLinkDescription) : link);
}

}  // namespace quillomoxui::view
