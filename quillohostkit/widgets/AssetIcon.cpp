#include "quillohostkit/widgets/AssetIcon.h"

#include "quillohostkit/resources/Bundle.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"

namespace quillohostkit {
namespace {

moxui::utility::ResourceManager& Pictures() {
    static moxui::utility::OS_ResourceManager manager(resources::kBundle);
    return manager;
}

}  // namespace

quillomoxui::PictureSupplyHandler AssetIcon(AssetKind kind) {
    return quillomoxui::BindImageSupplyFunction(
        kind == AssetKind::Movie ? "AssetMovie" : "AssetSound", &Pictures);
}

}  // namespace quillohostkit
