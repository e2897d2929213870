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

quillomoxui::PictureSupplyHandler AssetIcon(Movie const& movie) {
    return quillomoxui::BindImageSupplyFunction(movie.hasPicture ? "AssetMovie" : "AssetSound",
                                                &Pictures);
}

}  // namespace quillohostkit
