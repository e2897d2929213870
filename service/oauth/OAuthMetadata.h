#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quilloservice {

/// The authorization server's metadata (RFC 8414). `issuer` is the address at which the client
/// reached the service, "https://review.example".
nlohmann::json DescribeAuthorizationServer(std::string const& issuer, bool trustsLocalUser);

}  // namespace quilloservice
