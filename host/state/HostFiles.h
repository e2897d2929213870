#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillohost {

/// Has the host and the library keep their files in `directory`, or else where the desktop wants
/// them. Call before either writes any.
void UseDataDirectory(std::optional<std::filesystem::path> const& directory);

/// Where the host keeps files of its own.
[[nodiscard]] std::filesystem::path HostDataFile(std::string const& name);

/// Likewise of a file, which is made, empty, when it is missing, and closed to other users. A
/// Failure when it is a link or another user's.
[[nodiscard]] std::filesystem::path OwnHostFile(std::string const& name);

}  // namespace quillohost
