#pragma once

#include "moxui/utility/ResourceManager.h"

namespace quillohostkit::resources {

/// The pictures of assets, from icons/.
extern moxui::utility::Bundle const kBundle;

}  // namespace quillohostkit::resources
