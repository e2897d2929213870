#pragma once

#include <string>

namespace quilloservice {

class OAuthFields;

/// What a program asks for when it sends its user here: a code for `client`, brought to
/// `redirectUri` together with `state` (RFC 6749), which only who made `challenge` can use (RFC
/// 7636).
struct AuthorizationRequest {
    std::string client;
    std::string redirectUri;
    std::string state;      ///< empty: none
    std::string challenge;  ///< base64url of a SHA-256
};

/// A request that cannot be answered with a redirect: to whom it would lead is not certain.
struct UntrustedRequest {
    std::string reason;  ///< a sentence for people
};

/// A request that is answered with a redirect to this address, which tells the program of an error.
struct RefusedRequest {
    std::string location;
};

/// Reads the request from the parameters of RFC 6749 4.1.1 and RFC 7636 4.3. Throws
/// UntrustedRequest and RefusedRequest. Clients need no registration: the name is what the user is
/// shown.
AuthorizationRequest ReadAuthorizationRequest(OAuthFields const& fields);

/// Where the browser goes with an error (RFC 6749 4.1.2.1).
std::string LocationOfError(AuthorizationRequest const& request, std::string const& error,
                            std::string const& description);

/// Where it goes with the code.
std::string LocationOfCode(AuthorizationRequest const& request, std::string const& code);

/// Whether the SHA-256 of `verifier` is what the challenge says, and the verifier is of the form
/// and the length of RFC 7636.
bool MeetsChallenge(std::string const& verifier, std::string const& challenge);

}  // namespace quilloservice
