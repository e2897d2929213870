#include "moxui/utility/ResourceManager.h"

#include <algorithm>
#include <stdexcept>

#include "moxcore/debug/Trace.h"
#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/detail/drawing/SvgImage.h"
#include "moxui/resources/Bundle.h"
#include "moxui/utility/ImageProvider.h"

namespace moxui::utility {

ResourceManager::~ResourceManager() = default;

OS_ResourceManager::OS_ResourceManager(Bundle const& bundle) : bundle(bundle) {}
OS_ResourceManager::~OS_ResourceManager() = default;

boost::intrusive_ptr<drawbot::ImageInterface> OS_ResourceManager::GetImage(
    std::string const& name) {
    auto const [entry, isNew] = images.try_emplace(name);
    if (!isNew) return entry->second;

    auto const* const end = bundle.files + bundle.count;
    auto const* const file =
        std::find_if(bundle.files, end, [&](BundleFile const& f) { return f.name == name; });
    if (file == end) {
        moxcore::debug::Trace(1, "moxui", "There is no picture \"" + name + "\" in the bundle.");
        return nullptr;
    }
    try {
        entry->second = new backend::SvgImage(file->contents);
    } catch (std::runtime_error const& error) {
        moxcore::debug::Trace(1, "moxui",
                              "The picture \"" + name + "\" cannot be used: " + error.what());
    }
    return entry->second;
}

ResourceManager& GetResourceManager() {
    // Never destroyed: controls ask for pictures while the process ends.
    static moxcore::utility::NoDestructor<OS_ResourceManager> manager(resources::kBundle);
    return *manager;
}

boost::intrusive_ptr<drawbot::ImageInterface> ImageProvider::GetThemeImage(
    std::string const& name, DrawbotImageResourceCache*, unsigned) const {
    return GetResourceManager().GetImage(name);
}

}  // namespace moxui::utility
