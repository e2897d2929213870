#include "quillomoxui/view/DebugView.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {
namespace {

using moxcore::string::AsciiToUTF16;
using moxui::controls::UI_StaticText;
using moxui::controls::UI_TextButton;
using utility::WeakBindMemberFunction;

boost::intrusive_ptr<UI_TextButton> BoldButton(char const* text) {
    boost::intrusive_ptr<UI_TextButton> button(new UI_TextButton);
    button->SetText(AsciiToUTF16(text));
    button->SetFontStyleName("Bold");
    return button;
}

boost::intrusive_ptr<UI_StaticText> BoldText(char const* text) {
    boost::intrusive_ptr<UI_StaticText> label(new UI_StaticText);
    label->SetText(AsciiToUTF16(text));
    label->SetFontStyleName("Bold");
    return label;
}

}  // namespace

DebugView::DebugView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      title(BoldText("Review in Quillo DEBUG view")),
      shareButton(BoldButton("Send to XEP")),
      loginButton(BoldButton("Login")),
      logoutButton(BoldButton("Logout")),
      traceButton(BoldButton("Trace To Console")),
      userNameCaption(BoldText("User Name:")),
      userName(new UI_StaticText) {
    shareButton->NotifyWhenChanged(WeakBindMemberFunction(this, &DebugView::OnShareClicked));
    loginButton->NotifyWhenChanged(WeakBindMemberFunction(this, &DebugView::OnLoginClicked));
    logoutButton->NotifyWhenChanged(WeakBindMemberFunction(this, &DebugView::OnLogoutClicked));
    traceButton->NotifyWhenChanged(WeakBindMemberFunction(this, &DebugView::OnTraceClicked));

    auto& isLoggedIn = static_cast<IsLoggedInNotifyingPropertyHost&>(*viewModel);
    RetainBinding(isLoggedIn.BindValueChanged(
        WeakBindMemberFunction(loginButton.get(), &UI_TextButton::UI_SetDisabled)));
    RetainBinding(isLoggedIn.BindValueChanged(
        WeakBindMemberFunction(logoutButton.get(), &UI_TextButton::UI_SetEnabled)));
    RetainBinding(static_cast<UserNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(this, &DebugView::OnUserChanged)));
    userName->SetText(AsciiToUTF16("--empty--"));

    for (auto const& child : std::initializer_list<boost::intrusive_ptr<UI_SubView>>{
             title, shareButton, loginButton, logoutButton, traceButton, userNameCaption, userName})
        AddShown(*this, child);
}

DebugView::~DebugView() = default;

moxcore::geom::PointT<float> DebugView::UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const {
    return {340, 200};
}

void DebugView::UI_SizeChanged(moxcore::geom::RectT<float> const& rect) {
    PopupBaseView::UI_SizeChanged(rect);
    constexpr float kMargin = 15;
    float const width = rect.width;
    title->UI_SetLocalRectF({kMargin, 12, width - 2 * kMargin, 20});
    loginButton->UI_SetLocalRectF({kMargin, 52, 60, 24});
    logoutButton->UI_SetLocalRectF({width - kMargin - 60, 52, 60, 24});
    userNameCaption->UI_SetLocalRectF({kMargin, 92, width, 24});
    userName->UI_SetLocalRectF({kMargin, 112, width, 24});
    shareButton->UI_SetLocalRectF({kMargin, 152, 120, 24});
    traceButton->UI_SetLocalRectF({width - kMargin - 120, 152, 120, 24});
}

void DebugView::OnUserChanged(std::shared_ptr<QuilloUser> const& user) {
    if (user != ViewModel().GetUser()) return;
    nameBinding.reset();  // what it still delivers comes before what the new one does
    nameBinding = static_cast<NameNotifyingPropertyHost&>(*user).BindValueChanged(
        WeakBindMemberFunction(userName.get(), &UI_StaticText::SetText));
}

void DebugView::OnShareClicked(moxui::ui::Message*) {
    ViewModel().ProcessAssetForReview();
}
void DebugView::OnLoginClicked(moxui::ui::Message*) {
    ViewModel().Login();
}
void DebugView::OnLogoutClicked(moxui::ui::Message*) {
    ViewModel().Logout();
}
void DebugView::OnTraceClicked(moxui::ui::Message*) {
    ViewModel().Debug_TraceToConsole();
}

}  // namespace quillomoxui::view
