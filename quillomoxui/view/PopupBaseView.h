#pragma once

#include <memory>

#include "moxui/controls/UI_ControlView.h"
#include "quillomoxui/properties/ShareForReviewViewID.h"
#include "quillomoxui/utility/BindingTarget.h"

namespace quillomoxui {
class ShareForReviewViewModel;
}

namespace quillomoxui::view {

/// Base of the views that the share popup shows one at a time. Main thread.
class PopupBaseView : public moxui::controls::UI_ControlView, public utility::BindingTarget {
public:
    ~PopupBaseView() override;

    /// Handles a press on a node of RegisterMouseNotifications: shows the view `target`.
    virtual bool OnMouseEvent(moxui::ui::UI_Node* node, moxui::ui::MouseEvent const& event,
                              bool& handled, ShareForReviewViewID target);

    /// Makes `node` a link to another view of the popup.
    virtual void RegisterMouseNotifications(boost::intrusive_ptr<moxui::ui::UI_Node> const& node,
                                            ShareForReviewViewID target);

    // Tell the popup that the view is in, if it is in one, that a menu of its own is open, or no
    // longer.
    void SetPreShowPopupMenu();
    void SetPostShowPopupMenu();

protected:
    explicit PopupBaseView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);

    [[nodiscard]] ShareForReviewViewModel& ViewModel() const { return *viewModel; }
    [[nodiscard]] std::shared_ptr<ShareForReviewViewModel> const& SharedViewModel() const {
        return viewModel;
    }

private:
    void TellPopupOfMenu(bool showing);

    std::shared_ptr<ShareForReviewViewModel> viewModel;
};

}  // namespace quillomoxui::view
