#pragma once

#include <functional>
#include <string>

#include "moxui/utility/ResourceManager.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui {

/// A new handler that answers every picture-supply message with the picture `iconName` of the
/// resource manager that `getResourceManager` gives at that moment. An empty getter makes the
/// handler throw std::bad_function_call. Any thread; the handler runs on the main thread.
[[nodiscard]] QUILLO_API PictureSupplyHandler BindImageSupplyFunction(
    std::string const& iconName,
    std::function<moxui::utility::ResourceManager&()> const& getResourceManager);

}  // namespace quillomoxui
