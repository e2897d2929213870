#pragma once

#include <filesystem>
#include <string>

#include "host/Options.h"

namespace quillohost {

/// Has the host and the library keep their files where the options say. Call before either writes
/// any.
void UseDataDirectory(Options const& options);

/// Where the host keeps files of its own.
[[nodiscard]] std::filesystem::path HostDataFile(std::string const& name);

/// Likewise of a file, which is made, empty, when it is missing, and closed to other users. A
/// Failure when it is a link or another user's.
[[nodiscard]] std::filesystem::path OwnHostFile(std::string const& name);

}  // namespace quillohost
