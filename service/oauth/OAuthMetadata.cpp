#include "service/oauth/OAuthMetadata.h"

#include <nlohmann/json.hpp>

namespace quilloservice {

using nlohmann::json;

json DescribeAuthorizationServer(std::string const& issuer, bool trustsLocalUser) {
    json grants = {"authorization_code", "refresh_token"};
    if (trustsLocalUser) grants.push_back("urn:quillo:grant-type:local-user");
    json none = json::array({"none"});  // native apps keep no secret (RFC 8252)
    return {{"issuer", issuer},
            {"authorization_endpoint", issuer + "/oauth/authorize"},
            {"token_endpoint", issuer + "/oauth/token"},
            {"revocation_endpoint", issuer + "/oauth/revoke"},
            {"response_types_supported", json::array({"code"})},
            {"response_modes_supported", json::array({"query"})},
            {"grant_types_supported", grants},
            {"code_challenge_methods_supported", json::array({"S256"})},
            {"token_endpoint_auth_methods_supported", none},
            {"revocation_endpoint_auth_methods_supported", none}};
}

}  // namespace quilloservice
