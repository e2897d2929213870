#include "quillomoxui/view/PopupBaseView.h"

#include "moxui/controls/UI_TouchPopupContainer.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {

using moxui::ui::MouseEvent;
using moxui::ui::UI_Node;

PopupBaseView::PopupBaseView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : viewModel(viewModel) {}

PopupBaseView::~PopupBaseView() = default;

bool PopupBaseView::OnMouseEvent(UI_Node*, MouseEvent const& event, bool& handled,
                                 ShareForReviewViewID target) {
    handled = event.GetAction() == moxui::ui::PointerAction::Press;
    if (handled) viewModel->SetCurrentViewID(target);
    return handled;
}

void PopupBaseView::RegisterMouseNotifications(boost::intrusive_ptr<UI_Node> const& node,
                                               ShareForReviewViewID target) {
    moxcore::utility::RefCountedWeakPtr<PopupBaseView> const weakSelf(this);
    node->UI_AddCustomMouseEventFunction(
        std::make_shared<UI_Node::MouseEventFunction>(
            [weakSelf, target](UI_Node* source, MouseEvent const& event, bool& handled) {
                auto const self = weakSelf.Lock();
                return self && self->OnMouseEvent(source, event, handled, target);
            }),
        0);
}

void PopupBaseView::SetPreShowPopupMenu() {
    TellPopupOfMenu(true);
}

void PopupBaseView::SetPostShowPopupMenu() {
    TellPopupOfMenu(false);
}

void PopupBaseView::TellPopupOfMenu(bool showing) {
    for (auto node = UI_GetParentNode(); node; node = node->UI_GetParentNode()) {
        if (auto* const popup =
                dynamic_cast<moxui::controls::UI_TouchPopupContainer*>(node.get())) {
            popup->SetPopupMenuShowing(showing);
            return;
        }
    }
}

}  // namespace quillomoxui::view
