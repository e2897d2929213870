#pragma once

#include <string>

#include "service/oauth/ClientId.h"

namespace quilloservice {

class OAuthFields;

/// An authorization request (RFC 6749, 4.1.1) with a PKCE challenge (RFC 7636, 4.3).
struct AuthorizationRequest {
    ClientId client;
    std::string redirectUri;
    std::string state;      ///< empty: none
    std::string challenge;  ///< base64url of the verifier's SHA-256
};

/// A request with an invalid client or redirect URI. It is answered with a page: a redirect could
/// lead anywhere.
struct UntrustedRequest {
    std::string reason;  ///< a sentence for the user
};

/// Any other invalid request. It is answered with a redirect to `location`, which holds the error.
struct RefusedRequest {
    std::string location;
};

/// Reads a request from its parameters. Throws UntrustedRequest and RefusedRequest.
AuthorizationRequest ReadAuthorizationRequest(OAuthFields const& fields);

/// The redirect that carries an error (RFC 6749, 4.1.2.1).
std::string LocationOfError(AuthorizationRequest const& request, std::string const& error,
                            std::string const& description);

/// The redirect that carries the code.
std::string LocationOfCode(AuthorizationRequest const& request, std::string const& code);

/// Whether `verifier` is well-formed (RFC 7636, 4.1) and its SHA-256 equals the challenge.
bool MatchesChallenge(std::string const& verifier, std::string const& challenge);

}  // namespace quilloservice
