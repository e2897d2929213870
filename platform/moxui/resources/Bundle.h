#pragma once

#include "moxui/utility/ResourceManager.h"

namespace moxui::resources {

/// The toolkit's own pictures, from icons/.
extern utility::Bundle const kBundle;

}  // namespace moxui::resources
