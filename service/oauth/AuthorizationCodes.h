#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "service/base/Clock.h"
#include "service/oauth/AuthorizationRequest.h"
#include "service/oauth/Sessions.h"

namespace quilloservice {

/// The authorization codes that have been issued and not yet expired, one minute each. Kept in
/// memory only and by their SHA-256; after a restart users have to allow the access again. Any
/// thread.
class AuthorizationCodes {
public:
    static constexpr std::int64_t kSeconds = 60;

    /// The parameters of a token request beside the code.
    struct Claim {
        ClientId client;
        std::string redirectUri;
        std::string verifier;
    };

    AuthorizationCodes(Sessions& sessions, Clock clock);

    /// Issues a code for a session of `user` with the program that sent `request`.
    std::string Issue(UserId const& user, AuthorizationRequest const& request);

    /// Starts the session; nothing if the code is unknown or expired, or if the claim does not
    /// match the request. A code is valid for one attempt, successful or not. A second attempt
    /// means that the code was stolen, so it ends the session that the first one started.
    std::optional<TokenPair> Redeem(std::string const& code, Claim const& claim);

private:
    struct Entry {
        UserId user;
        AuthorizationRequest request;
        std::int64_t expiresAt = 0;
        bool used = false;
        std::string accessToken{};  ///< of the session that the code started
    };

    Sessions& sessions;
    Clock clock;
    std::mutex mutex;
    std::map<std::string, Entry> entries;  // mutex; by the code's SHA-256
};

}  // namespace quilloservice
