#pragma once

#include "moxui/utility/ResourceManager.h"

namespace quillohost::editor::resources {

/// The window's own pictures, from icons/.
extern moxui::utility::Bundle const kBundle;

}  // namespace quillohost::editor::resources
