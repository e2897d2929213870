#pragma once

#include <string>
#include <vector>

namespace quilloauth {

/// The secrets that a service at `address`, a loopback one, has left for the programs of its user
/// (docs/service-api.md says where), the likeliest first. There may be several, since a service
/// that was killed leaves its own behind; none at another address, and none that other users could
/// have read or written. Reads files. Any thread.
[[nodiscard]] std::vector<std::string> FindLocalUserSecrets(std::string const& address);

}  // namespace quilloauth
