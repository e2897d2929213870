#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/http/Request.h"
#include "service/oauth/ClientId.h"

namespace quilloservice {

/// An error response of RFC 6749, 5.2.
struct OAuthError {
    std::string error;
    std::string description;
};

/// The parameters of an OAuth request. An empty one counts as absent (RFC 6749, 3.1).
class OAuthFields {
public:
    explicit OAuthFields(http::Fields fields) : fields(std::move(fields)) {}

    /// Reads the form in the request's body. Throws OAuthError if the body is not a form.
    static OAuthFields InBody(http::Request const& request, std::string const& body);

    /// Throws OAuthError if the parameter is absent or repeated.
    [[nodiscard]] std::string const& Require(std::string const& name) const;

    /// The parameter client_id. Throws OAuthError if it is absent, repeated or malformed.
    [[nodiscard]] ClientId RequireClient() const;

    /// Throws OAuthError if the parameter is repeated.
    [[nodiscard]] std::optional<std::string> Find(std::string const& name) const;

private:
    [[nodiscard]] std::vector<std::string const*> Values(std::string const& name) const;

    http::Fields fields;
};

}  // namespace quilloservice
