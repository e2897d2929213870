#pragma once

#include <filesystem>
#include <string>

#include "quillohostkit/ServiceSettings.h"

namespace quillohostkit {

/// The settings as they are now. Main thread.
[[nodiscard]] ServiceSettings const& CurrentSettings();

/// Tells the library where the service is and who asks, once there is an address; false while there
/// is none. A Failure (Usage) when the address is none. Repeated calls do nothing. Main thread.
bool ConnectService();

/// The name under which what belongs to the service is kept.
[[nodiscard]] std::string ServiceName();

/// The place of a file of the kit's own, whose directory is made. A Failure (Other) when that is
/// impossible.
[[nodiscard]] std::filesystem::path OwnDataFile(char const* name);

}  // namespace quillohostkit
