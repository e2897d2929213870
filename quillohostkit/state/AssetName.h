#pragma once

#include <filesystem>
#include <string>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// The name under which `movie` is shared unless the user gives another: its file's name without
/// the extension.
[[nodiscard]] QUILLOHOSTKIT_API std::string DefaultAssetName(std::filesystem::path const& movie);

}  // namespace quillohostkit
