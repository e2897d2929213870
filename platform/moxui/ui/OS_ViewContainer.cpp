#include "moxui/ui/OS_ViewContainer.h"

#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/widgets/Peer.h"

namespace moxui::ui {

OS_ViewContainer::OS_ViewContainer(std::unique_ptr<backend::Peer> peer)
    : UI_SubView(std::move(peer)) {
    backend::AddThemedWindow(*this);
    if (auto* const widget = GetPeer().GetWidget()) backend::ApplyTheme(*widget);
}

OS_ViewContainer::~OS_ViewContainer() {
    backend::RemoveThemedWindow(*this);
}

drawbot::SupplierInterface const* OS_ViewContainer::UI_GetDrawSupplier() const {
    return &backend::QtSupplier();
}

}  // namespace moxui::ui
