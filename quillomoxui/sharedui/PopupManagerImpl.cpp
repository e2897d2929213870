#include "quillomoxui/sharedui/PopupManagerImpl.h"

#include "moxcore/threads/MainThread.h"
#include "quillomoxui/sharedui/PopupPlacement.h"
#include "quillomoxui/sharedui/RecommendedSize.h"

namespace quillomoxui {

using moxui::controls::UI_TouchPopupContainer;

PopupManager::~PopupManager() = default;

std::shared_ptr<PopupManager> CreatePopupManager() {
    return std::make_shared<PopupManagerImpl>();
}

PopupManagerImpl::PopupManagerImpl() : mainView(new PopupMainView) {
    mainView->UI_Show(true);
}

PopupManagerImpl::~PopupManagerImpl() = default;

void PopupManagerImpl::SetPopupGlobalLoc(moxcore::geom::PointT<float> const& location) {
    popupGlobalLoc = location;
}

boost::intrusive_ptr<PopupSectionView> PopupManagerImpl::InsertPopupSection(
    unsigned long index, boost::intrusive_ptr<moxui::ui::UI_SubView> const& content) {
    if (!mainView) return nullptr;
    auto section = InsertSection(*mainView, index, content, true);
    ArrangeChildren();
    return section;
}

void PopupManagerImpl::MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& section) {
    if (!mainView) return;
    mainView->MaximizePopupSection(section);
    ArrangeChildren();
}

void PopupManagerImpl::ShowWindow() {
    auto const anchor = parent.Lock();
    if (!anchor || !mainView) return;
    if (!popupWindow) {
        popupWindow = new UI_TouchPopupContainer(anchor->UI_GetDrawSupplier(), anchor, false, true,
                                                 false, moxui::ui::DPISelectionType(2), true);
        if (auto const container = popupWindow->GetContainer()) container->ChildPushBack(mainView);
    }
    popupWindow->InstallNotifyOnCommit(
        std::make_shared<std::function<void()>>(token.Guard([this] { OnPopupClosed(); })));
    popupWindow->StartPopup();
    ArrangeChildren();
}

void PopupManagerImpl::AddNotifyOnCommit(std::function<void()> const& function) {
    notifyOnCommit.push_back(std::make_shared<std::function<void()>>(function));
}

void PopupManagerImpl::HideWindow() {
    if (popupWindow) popupWindow->UI_Show(false);
}

void PopupManagerImpl::DestructWindow() {
    HideWindow();
    popupWindow.reset();
    mainView.reset();
}

void PopupManagerImpl::SetButtons(boost::intrusive_ptr<moxui::ui::UI_SubView> const&,
                                  std::string const&, std::string const&) {}

void PopupManagerImpl::SetParent(boost::intrusive_ptr<moxui::ui::UI_Node> const& node) {
    parent = moxcore::utility::RefCountedWeakPtr<moxui::ui::UI_Node>(node.get());
    if (popupWindow) popupWindow->SetAnchor(node);
}

void PopupManagerImpl::ArrangeChildren() {
    auto const anchor = parent.Lock();
    if (!popupWindow || !anchor) return;
    auto const size = GetRecommendedSize(mainView);
    mainView->UI_SetLocalRectF({0, 0, size.x, size.y});

    auto const container = popupWindow->GetContainer();
    auto const scale =
        container ? container->GetScaleFactors() : moxcore::geom::PointT<float>{1, 1};
    auto const anchorPlace = anchor->UI_LocalToGlobalF(anchor->UI_GetLocalRectF(false));
    popupWindow->SetContentSize(PopupPlace(anchorPlace, {size.x * scale.x, size.y * scale.y}));
    popupWindow->Refresh();
}

void PopupManagerImpl::OnPopupClosed() {
    // A function may let go of this manager.
    CommitFunctions const functions = notifyOnCommit;
    for (auto const& function : functions) {
        if (!*function) throw std::bad_function_call();
        try {
            (*function)();
        } catch (...) {
            // An exception of one of them does not keep the others from running.
            moxcore::threads::MainThread::ReportFailure(std::current_exception());
        }
    }
}

}  // namespace quillomoxui
