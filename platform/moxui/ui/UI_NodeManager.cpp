#include "moxui/ui/UI_NodeManager.h"

#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/utility/ImageProvider.h"

namespace moxui::ui {

UI_NodeManager* UI_NodeManager::Get(bool) {
    static UI_NodeManager manager;
    return &manager;
}

drawbot::SupplierInterface const* UI_NodeManager::GetDefaultDrawSupplier() const {
    return &backend::QtSupplier();
}

utility::ImageProvider* UI_NodeManager::GetImageProvider() const {
    static utility::ImageProvider provider;
    return &provider;
}

}  // namespace moxui::ui
