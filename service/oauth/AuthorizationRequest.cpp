#include "service/oauth/AuthorizationRequest.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/oauth/OAuthFields.h"
#include "service/oauth/RedirectUri.h"

namespace quilloservice {

namespace {

constexpr std::size_t kLongestState = 1024;
constexpr std::size_t kShortestVerifier = 43;
constexpr std::size_t kLongestVerifier = 128;

std::string Locate(AuthorizationRequest const& request,
                   std::vector<std::pair<std::string, std::string>> parameters) {
    if (!request.state.empty()) parameters.emplace_back("state", request.state);
    return WithParameters(request.redirectUri, parameters);
}

/// Decodes a SHA-256 in base64url without padding; nothing if `text` is anything else.
std::optional<std::string> DigestIn(std::string text) {
    if (text.find_first_of("+/=") != std::string::npos) return std::nullopt;
    std::replace(text.begin(), text.end(), '-', '+');
    std::replace(text.begin(), text.end(), '_', '/');
    auto digest = FromBase64(text + "=");
    return digest && digest->size() == 32 ? digest : std::nullopt;
}

/// Reads the client and the redirect URI, without which no error can be sent to the program.
AuthorizationRequest ReadSender(OAuthFields const& fields) {
    try {
        AuthorizationRequest request{
            fields.RequireClient(), fields.Require("redirect_uri"), {}, {}};
        if (IsLoopbackRedirect(request.redirectUri)) return request;
    } catch (OAuthError const& error) {
        throw UntrustedRequest{error.description};
    }
    throw UntrustedRequest{
        "redirect_uri does not lead to a program on this computer: it has to be "
        "http://127.0.0.1:PORT/..."};
}

std::string ReadState(OAuthFields const& fields) {
    std::string state = fields.Find("state").value_or("");
    bool printable =
        std::all_of(state.begin(), state.end(), [](char c) { return c >= ' ' && c <= '~'; });
    if (!printable || state.size() > kLongestState) {
        throw OAuthError{"invalid_request", "state has to be at most 1024 characters of ASCII."};
    }
    return state;
}

std::string ReadChallenge(OAuthFields const& fields) {
    std::string const& challenge = fields.Require("code_challenge");
    if (fields.Find("code_challenge_method") != "S256") {
        throw OAuthError{"invalid_request", "code_challenge_method has to be S256."};
    }
    if (!DigestIn(challenge)) {
        throw OAuthError{"invalid_request", "code_challenge is no SHA-256 in base64url."};
    }
    return challenge;
}

}  // namespace

AuthorizationRequest ReadAuthorizationRequest(OAuthFields const& fields) {
    AuthorizationRequest request = ReadSender(fields);
    try {
        request.state = ReadState(fields);
        if (fields.Require("response_type") != "code") {
            throw OAuthError{"unsupported_response_type", "response_type has to be code."};
        }
        request.challenge = ReadChallenge(fields);
    } catch (OAuthError const& error) {
        throw RefusedRequest{LocationOfError(request, error.error, error.description)};
    }
    return request;
}

std::string LocationOfError(AuthorizationRequest const& request, std::string const& error,
                            std::string const& description) {
    return Locate(request, {{"error", error}, {"error_description", description}});
}

std::string LocationOfCode(AuthorizationRequest const& request, std::string const& code) {
    return Locate(request, {{"code", code}});
}

bool MatchesChallenge(std::string const& verifier, std::string const& challenge) {
    bool wellFormed = verifier.size() >= kShortestVerifier && verifier.size() <= kLongestVerifier &&
                      PercentEncode(verifier) == verifier;  // unreserved characters only
    return wellFormed && DigestIn(challenge) == Sha256(verifier);
}

}  // namespace quilloservice
