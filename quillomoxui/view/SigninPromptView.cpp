#include "quillomoxui/view/SigninPromptView.h"

#include <algorithm>
#include <cmath>

#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {

using moxui::controls::UI_StaticText;
using quilloauth::SignInStage;
using utility::WeakBindMemberFunction;

namespace {

UTF16String DescriptionOf(quilloauth::SignInProgress const& progress) {
    switch (progress.stage) {
        case SignInStage::Waiting:
            return TextWithTime(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/WaitingSince="
                "Quillo has not been available since {time}. It is tried again by itself.",
                progress.since);
        case SignInStage::InBrowser:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/InBrowser="
                "Go on in the browser: sign in on the page that has opened there.");
        case SignInStage::Denied:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/Denied="
                "The access was refused in the browser. Sign in again and allow it.");
        case SignInStage::Expired:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/Expired="
                "No sign-in came from the browser within ten minutes. Sign in again.");
        case SignInStage::NoBrowser:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/NoBrowser="
                "The browser could not be opened. Choose a default browser and sign in again.");
        case SignInStage::Unavailable:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/Unavailable="
                "Quillo is not available. Check the network connection and sign in again.");
        case SignInStage::Refused:
            return Text(
                "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/Refused="
                "Quillo did not accept the sign-in. Sign in again, or ask your team for access.");
        case SignInStage::None:
        case SignInStage::Asking:
            break;
    }
    return Text(
        "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/SignintoQuilloLongDescription="
        "Sign in to Quillo to create a review link to share with your team members.");
}

UTF16String ButtonText(bool isUnderWay) {
    if (isUnderWay)
        return Text(
            "$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/SigningIn=Signing in...");
    return Text(
        "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/SignintoQuillo="
        "Sign in to Quillo");
}

}  // namespace

SigninPromptView::SigninPromptView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      workflowLabel(new WorkflowLabel(viewModel->GetAssetTypeIcon())),
      description(new UI_StaticText),
      signinButton(new sharedui::CallToActionButton),
      cancelButton(new moxui::controls::UI_TextButton),
      reopenButton(new moxui::controls::UI_TextButton) {
    description->SetMultiLine(true);
    description->SetStatus();
    signinButton->SetFontStyleName("Bold");
    cancelButton->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/CancelBtn=Cancel"));
    reopenButton->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/SigninPromptView/ReopenBtn="
             "Open the page again"));

    RetainBinding(static_cast<ActiveAssetNameNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(workflowLabel.get(),
                                                               &WorkflowLabel::SetLabelText)));
    RetainBinding(static_cast<IsLoggedInNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(
                          WeakBindMemberFunction(this, &SigninPromptView::OnIsLoggedInChanged)));
    RetainBinding(
        static_cast<SignInProgressNotifyingPropertyHost&>(*viewModel)
            .BindValueChanged(WeakBindMemberFunction(this, &SigninPromptView::OnProgressChanged)));
    signinButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &SigninPromptView::OnLoginClicked));
    cancelButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &SigninPromptView::OnCancelClicked));
    reopenButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &SigninPromptView::OnReopenClicked));

    AddShown(*this, workflowLabel);
    AddShown(*this, description);
    AddShown(*this, signinButton);
    ChildPushBack(cancelButton);
    ChildPushBack(reopenButton);
    OnProgressChanged(viewModel->GetSignInProgress());
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
    float const rowTop = 100 - layout.SizeOf(*cancelButton).y;
    auto const cancelSize = layout.PlaceAt(*cancelButton, 15, rowTop);
    layout.PlaceAt(*reopenButton, 15 + cancelSize.x + 8, rowTop);
}

void SigninPromptView::OnLoginClicked(moxui::ui::Message*) {
    // A press that was on its way already begins no second sign-in.
    if (ViewModel().GetSignInProgress().IsUnderWay()) return;
    ViewModel().Login();
    OnProgressChanged(ViewModel().GetSignInProgress());
}

void SigninPromptView::OnCancelClicked(moxui::ui::Message*) {
    ViewModel().CancelLogin();
}

void SigninPromptView::OnReopenClicked(moxui::ui::Message*) {
    ViewModel().ReopenLoginPage();
}

void SigninPromptView::OnProgressChanged(quilloauth::SignInProgress const& progress) {
    description->SetText(DescriptionOf(progress));
    signinButton->SetText(ButtonText(progress.IsUnderWay()));
    signinButton->UI_SetEnabled(!progress.IsUnderWay());
    bool const isInBrowser = progress.stage == SignInStage::InBrowser;
    signinButton->UI_Show(!isInBrowser);  // the two others have its place
    cancelButton->UI_Show(progress.IsUnderWay());
    reopenButton->UI_Show(isInBrowser);
    UI_SetLocalRectF(UI_GetLocalRectF(true));
}

void SigninPromptView::OnIsLoggedInChanged(bool loggedIn) {
    // The user may have signed out since this was said.
    if (loggedIn && ViewModel().GetIsLoggedIn())
        ViewModel().SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
}

}  // namespace quillomoxui::view
