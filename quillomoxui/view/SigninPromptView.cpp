#include "quillomoxui/view/SigninPromptView.h"

#include <algorithm>
#include <cmath>

#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {

using moxui::controls::UI_StaticText;
using utility::WeakBindMemberFunction;

SigninPromptView::SigninPromptView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      workflowLabel(new WorkflowLabel(viewModel->GetAssetTypeIcon())),
      description(new UI_StaticText),
      signinButton(new sharedui::CallToActionButton) {
    description->SetMultiLine(true);
    description->SetText(Text(
        "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/SignintoQuilloLongDescription="
        "Sign in to Quillo to create a review link to share with your team members."));
    signinButton->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/SignintoQuillo="
             "Sign in to Quillo"));
    signinButton->SetFontStyleName("Bold");
    signinButton->UI_SetEnabled(true);

    RetainBinding(static_cast<ActiveAssetNameNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(workflowLabel.get(),
                                                               &WorkflowLabel::SetLabelText)));
    RetainBinding(static_cast<IsLoggedInNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(
                          WeakBindMemberFunction(this, &SigninPromptView::OnIsLoggedInChanged)));
    signinButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &SigninPromptView::OnLoginClicked));

    AddShown(*this, workflowLabel);
    AddShown(*this, description);
    AddShown(*this, signinButton);
}

SigninPromptView::~SigninPromptView() = default;

moxcore::geom::PointT<float> SigninPromptView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, 115};
}

void SigninPromptView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    PopupBaseView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    auto const labelSize = layout.PlaceAt(*workflowLabel, 15, 10);

    auto const font = layout.Drawbot().GetSupplier()->NewFont(
        moxui::skins::ValidateFontName(GetFontName(0)), GetFontSize(0) * 1.5F, "");
    auto const text = description->GetText();
    float const textWidth = std::ceil(std::min(font->MeasureWidth(text), 310.0F));
    float const textHeight = std::trunc(font->MeasureWrappedHeight(text, textWidth));
    description->UI_SetLocalRectF({15, labelSize.y + 24, textWidth, textHeight});

    auto const buttonSize = layout.SizeOf(*signinButton);
    signinButton->UI_SetLocalRectF(
        {rect.width - 15 - buttonSize.x, 100 - buttonSize.y, buttonSize.x, buttonSize.y});
}

void SigninPromptView::OnLoginClicked(moxui::ui::Message*) {
    ViewModel().Login();
}

void SigninPromptView::OnIsLoggedInChanged(bool loggedIn) {
    // The user may have signed out since this was said.
    if (loggedIn && ViewModel().GetIsLoggedIn())
        ViewModel().SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
}

}  // namespace quillomoxui::view
