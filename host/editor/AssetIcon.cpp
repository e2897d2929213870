#include "host/editor/AssetIcon.h"

#include "host/editor/resources/Bundle.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"

namespace quillohost::editor {
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

}  // namespace quillohost::editor
