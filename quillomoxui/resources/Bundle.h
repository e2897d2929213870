#pragma once

#include "moxui/utility/ResourceManager.h"

namespace quillomoxui::resources {

/// The library's own pictures, from icons/.
extern moxui::utility::Bundle const kBundle;

}  // namespace quillomoxui::resources
