#include "quillomoxui/view/DialogManager.h"

#include "moxcore/config/Error.h"
#include "moxworkspace/workspace/WorkspaceUtils.h"
#include "quillomoxui/sharedui/RecommendedSize.h"
#include "quillomoxui/utility/ThrowFatalError.h"

namespace quillomoxui::view {
namespace {

using moxui::controls::UI_Button;
using moxui::ui::UI_Node;

/// The topmost node of the window that dialogs belong to; null when the host names none.
boost::intrusive_ptr<UI_Node> ParentRoot() {
    auto const parent = moxworkspace::workspace::WorkspaceUtils::GetModalDialogParentNode();
    return parent ? parent->UI_GetRootNode() : nullptr;
}

boost::intrusive_ptr<UI_Button> AsButton(boost::intrusive_ptr<UI_Node> const& node) {
    auto* const button = dynamic_cast<UI_Button*>(node.get());
    if (!button)
        ThrowFatalError("$$$/moxcore/utility/Error/InvalidTypeConversion=Invalid type conversion.");
    return button;
}

}  // namespace

std::shared_ptr<PopupManager> CreateDialogManager() {
    return std::make_shared<DialogManager>();
}

DialogManager::DialogManager() : mainView(new PopupMainView) {}

DialogManager::~DialogManager() {
    DialogManager::DestructWindow();
}

void DialogManager::SetPopupGlobalLoc(moxcore::geom::PointT<float> const&) {}

boost::intrusive_ptr<PopupSectionView> DialogManager::InsertPopupSection(
    unsigned long index, boost::intrusive_ptr<moxui::ui::UI_SubView> const& content) {
    auto const size = content ? content->UI_GetLocalRectF(false) : moxcore::geom::RectT<float>();
    auto section = InsertSection(*mainView, index, content, size.width > 0 || size.height > 0);
    ArrangeChildren();
    return section;
}

void DialogManager::MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& section) {
    mainView->MaximizePopupSection(section);
    ArrangeChildren();
}

void DialogManager::ShowWindow() {
    auto const outer = dialog && dialog->UI_IsViewVisible() ? dialog : nullptr;
    if (!CreateDialogWindow()) return;
    mainView->UI_Show(true);
    auto const shown = dialog;
    shown->ShowModal();
    if (!outer || !outer->UI_IsViewVisible()) return;
    // This was called while another dialog was shown, which has lent its content.
    dialog = outer;
    dialog->GetContentContainer()->ChildPushBack(mainView);
    ArrangeChildren();
}

void DialogManager::AddNotifyOnCommit(std::function<void()> const&) {}

void DialogManager::HideWindow() {
    if (dialog) dialog->UI_Show(false);
}

void DialogManager::DestructWindow() {
    if (!dialog) return;
    dialog->Close();
    if (auto const container = dialog->GetContentContainer())
        container->ChildRequestRemove(mainView);
}

void DialogManager::SetButtons(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view,
                               std::string const& cancelID, std::string const& commitID) {
    auto const cancel = view->UI_ChildGetFromID(cancelID);
    auto const commit = view->UI_ChildGetFromID(commitID);
    if (!cancel || !commit) return;
    auto const newCancelButton = AsButton(cancel);
    commitButton = AsButton(commit);
    cancelButton = newCancelButton;
}

void DialogManager::SetParent(boost::intrusive_ptr<moxui::ui::UI_Node> const&) {}

bool DialogManager::CreateDialogWindow() {
    auto const root = ParentRoot();
    if (!root) return false;
    dialog = new moxui::ui::UI_Dialog(root->UI_GetDrawSupplier(), UTF16String(),
                                      root->UI_GetOSWindow(), true);
    dialog->GetContentContainer()->ChildPushBack(mainView);
    ArrangeChildren();
    if (cancelButton && commitButton) dialog->SetButtons(cancelButton, commitButton);
    return true;
}

void DialogManager::ArrangeChildren() {
    if (!dialog || !ParentRoot()) return;
    auto const size = GetRecommendedSize(mainView);
    mainView->UI_SetLocalRectF({0, 0, size.x, size.y});
    dialog->UI_SetLocalRectF({0, 0, size.x, size.y});
    dialog->Position();
    dialog->SetContentSize(size.x, size.y);
    dialog->Relayout();
}

}  // namespace quillomoxui::view
