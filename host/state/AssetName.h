#pragma once

#include <filesystem>
#include <string>

namespace quillohost {

/// The name under which `movie` is shared unless the user gives another: its file's name without
/// the extension.
[[nodiscard]] std::string DefaultAssetName(std::filesystem::path const& movie);

}  // namespace quillohost
