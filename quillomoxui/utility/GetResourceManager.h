#pragma once

#include "moxui/utility/ResourceManager.h"

namespace quillomoxui::utility {

/// The library's own pictures. Always the same object, made by the first call, from whichever
/// thread that comes; the pictures themselves are the main thread's.
[[nodiscard]] moxui::utility::ResourceManager& GetResourceManager();

}  // namespace quillomoxui::utility
