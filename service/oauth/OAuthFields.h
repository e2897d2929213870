#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/http/Request.h"

namespace quilloservice {

/// An error of RFC 6749's kind.
struct OAuthError {
    std::string error;
    std::string description;
};

/// The parameters of an OAuth request. One that is empty counts as absent, as RFC 6749 wants it.
class OAuthFields {
public:
    explicit OAuthFields(http::Fields fields) : fields(std::move(fields)) {}

    /// The fields of the form that is the request's body. Throws OAuthError when it is none.
    static OAuthFields InBody(http::Request const& request, std::string const& body);

    /// Throws OAuthError when the field is absent, or there twice.
    [[nodiscard]] std::string const& Require(std::string const& name) const;

    /// The client_id: the name of a program, since programs need no registration. Throws OAuthError
    /// when it is absent or there twice, and when it is longer than 256 bytes or not printable.
    [[nodiscard]] std::string const& RequireClient() const;

    /// Throws OAuthError when the field is there twice.
    [[nodiscard]] std::optional<std::string> Find(std::string const& name) const;

private:
    [[nodiscard]] std::vector<std::string const*> Values(std::string const& name) const;

    http::Fields fields;
};

}  // namespace quilloservice
