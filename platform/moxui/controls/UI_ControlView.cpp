#include "moxui/controls/UI_ControlView.h"

#include <utility>

#include "moxui/backend/detail/widgets/CallFromQt.h"
#include "moxui/backend/detail/widgets/Peer.h"

namespace moxui::controls {

UI_ControlView::UI_ControlView() = default;

UI_ControlView::UI_ControlView(std::unique_ptr<backend::Peer> peer) : UI_SubView(std::move(peer)) {}

UI_ControlView::~UI_ControlView() = default;

void UI_ControlView::NotifyWhenChanged(std::function<void(ui::Message*)> function) {
    if (function) changeFunctions.push_back(std::move(function));
}

void UI_ControlView::UI_SetEnabled(bool enabled) {
    if (auto* const widget = GetPeer().GetWidget()) widget->setEnabled(enabled);
}

bool UI_ControlView::UI_IsEnabled() const {
    auto const* const widget = GetPeer().GetWidget();
    return widget && widget->isEnabled();
}

void UI_ControlView::NotifyChanged() {
    boost::intrusive_ptr<UI_ControlView> const alive(this);
    UI_ControlChangedMessage message(this);
    // A function may add another, which then is not called yet.
    auto const count = changeFunctions.size();
    for (std::size_t i = 0; i < count; ++i) {
        auto const function = changeFunctions[i];
        backend::CallFromQt([&] { function(&message); });
    }
}

void UI_ControlView::OnCustomThemeColorChanged() {
    UI_Invalidate();
}

}  // namespace moxui::controls
