#include "moxui/controls/UI_TouchPopupContainer.h"

#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"
#include "moxui/backend/detail/windows/PopupWindow.h"

namespace moxui::controls {
namespace {

using backend::PopupWindow;

class PopupContainer : public ui::OS_ViewContainer {
public:
    PopupContainer() : OS_ViewContainer(backend::MakePeer<backend::RootWidget>()) {}

    /// The ground is the window's.
    void UI_ThemeChanged() override {
        if (auto const parent = UI_GetParentNode()) parent->UI_Invalidate();
    }
};

PopupWindow* WindowOf(UI_TouchPopupContainer const& popup) {
    return popup.GetPeer().GetWidgetAs<PopupWindow>();
}

QWidget* WidgetOf(boost::intrusive_ptr<ui::UI_Node> const& node) {
    return node ? node->GetPeer().GetWidget() : nullptr;
}

}  // namespace

UI_TouchPopupContainer::UI_TouchPopupContainer(drawbot::SupplierInterface const*,
                                               boost::intrusive_ptr<ui::UI_Node> const& parent,
                                               bool, bool, bool, ui::DPISelectionType, bool)
    : UI_SubView(backend::MakePeer<PopupWindow>(WidgetOf(parent))) {
    WindowOf(*this)->onDismissed = [this] { OnDismissed(); };
    boost::intrusive_ptr<PopupContainer> const container(new PopupContainer);
    ChildPushBack(container);
    container->UI_Show(true);
}

UI_TouchPopupContainer::~UI_TouchPopupContainer() {
    if (auto* const window = WindowOf(*this)) window->Stop();
}

void UI_TouchPopupContainer::SetAnchor(boost::intrusive_ptr<ui::UI_Node> const& newParent) {
    if (auto* const window = WindowOf(*this)) window->HangFrom(WidgetOf(newParent));
}

void UI_TouchPopupContainer::StartPopup() {
    UI_Show(true);
}

void UI_TouchPopupContainer::SetContentSize(moxcore::geom::RectT<float> const& rect) {
    if (auto const container = GetContainer())
        container->UI_SetLocalRectF({0, 0, rect.width, rect.height});
    if (auto* const window = WindowOf(*this)) window->SetContentRect(rect);
}

void UI_TouchPopupContainer::InstallNotifyOnCommit(
    std::shared_ptr<std::function<void()>> const& function) {
    notifyOnCommit = function;
}

boost::intrusive_ptr<ui::OS_ViewContainer> UI_TouchPopupContainer::GetContainer() const {
    return ChildCount() ? dynamic_cast<ui::OS_ViewContainer*>(ChildBegin()->get()) : nullptr;
}

void UI_TouchPopupContainer::UI_Show(bool show) {
    UI_SubView::UI_Show(show);
    auto* const window = WindowOf(*this);
    if (!window) return;
    if (show)
        window->Start();
    else
        window->Stop();
}

void UI_TouchPopupContainer::Refresh() {
    UI_Invalidate();
    if (auto const container = GetContainer()) container->UI_Invalidate();
}

void UI_TouchPopupContainer::SetPopupMenuShowing(bool showing) {
    if (auto* const window = WindowOf(*this)) window->menuShowing = showing;
}

bool UI_TouchPopupContainer::GetPopupMenuShowing() const {
    auto const* const window = WindowOf(*this);
    return window && window->menuShowing;
}

drawbot::SupplierInterface const* UI_TouchPopupContainer::UI_GetDrawSupplier() const {
    return &backend::QtSupplier();
}

void UI_TouchPopupContainer::OnDismissed() {
    boost::intrusive_ptr<UI_TouchPopupContainer> const alive(this);
    UI_SubView::UI_Show(false);
    auto const function = notifyOnCommit;
    if (!function || !*function) return;
    backend::CallFromQt(*function);
}

}  // namespace moxui::controls
