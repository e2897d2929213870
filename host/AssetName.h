#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace quillohost {

/// The name under which `movie` is shared unless the user gives another: its file's name without
/// the extension.
[[nodiscard]] std::string DefaultAssetName(std::filesystem::path const& movie);

/// `name`, cut to at most `bytes` bytes of UTF-8 between two characters.
[[nodiscard]] std::string Shorten(std::string const& name, std::size_t bytes);

}  // namespace quillohost
