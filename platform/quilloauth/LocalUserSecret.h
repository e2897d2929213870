#pragma once

#include <string>
#include <vector>

#include "quillocommon/Export.h"

namespace quilloauth {

/// The secrets that a service at `address`, a loopback one, has left for the programs of its user
/// (docs/service-api.md says where), the likeliest first. There may be several, since a service
/// that was killed leaves its own behind; none at another address, and none that other users could
/// have read or written. Reads files. Any thread.
[[nodiscard]] QUILLOSERVICES_API std::vector<std::string> FindLocalUserSecrets(
    std::string const& address);

}  // namespace quilloauth
