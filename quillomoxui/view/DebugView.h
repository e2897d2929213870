#pragma once

#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/view/PopupBaseView.h"

namespace quillomoxui::view {

/// A developer's panel that drives the view model directly. Its texts are not translated. Main
/// thread.
class DebugView : public PopupBaseView {
public:
    explicit DebugView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);
    ~DebugView() override;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SizeChanged(moxcore::geom::RectT<float> const& rect) override;

private:
    void OnUserChanged(std::shared_ptr<QuilloUser> const& user);
    void OnShareClicked(moxui::ui::Message* message);
    void OnLoginClicked(moxui::ui::Message* message);
    void OnLogoutClicked(moxui::ui::Message* message);
    void OnTraceClicked(moxui::ui::Message* message);

    boost::intrusive_ptr<moxui::controls::UI_StaticText> title;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> shareButton;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> loginButton;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> logoutButton;
    boost::intrusive_ptr<moxui::controls::UI_TextButton> traceButton;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> userNameCaption;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> userName;
    std::shared_ptr<BindingHandle> nameBinding;  // to the user that there is
};

}  // namespace quillomoxui::view
