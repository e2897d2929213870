#include "quillomoxui/utility/GetResourceManager.h"

#include <memory>

#include "quillomoxui/resources/Bundle.h"

namespace quillomoxui::utility {

moxui::utility::ResourceManager& GetResourceManager() {
    static auto const manager =
        std::make_unique<moxui::utility::OS_ResourceManager>(resources::kBundle);
    return *manager;
}

}  // namespace quillomoxui::utility
