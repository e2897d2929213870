#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quilloservice {

/// What clients may want to know of the service as an authorization server (RFC 8414), for those
/// that find it at `issuer`, "http://host:port".
nlohmann::json DescribeAuthorizationServer(std::string const& issuer, bool trustsLocalUser);

}  // namespace quilloservice
