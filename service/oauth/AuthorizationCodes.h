#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "service/base/Clock.h"
#include "service/oauth/AuthorizationRequest.h"
#include "service/oauth/Sessions.h"

namespace quilloservice {

/// The codes with which users who have allowed it send programs back. They are kept in memory only,
/// under their SHA-256, for a minute: a service that is restarted has the user allow it anew. Any
/// thread.
class AuthorizationCodes {
public:
    static constexpr std::int64_t kSeconds = 60;

    /// What a program presents together with a code.
    struct Claim {
        std::string client;
        std::string redirectUri;
        std::string verifier;
    };

    AuthorizationCodes(Sessions& sessions, Clock clock);

    /// A code that begins a session of `user` for what `request` asked.
    std::string Issue(std::string const& user, AuthorizationRequest const& request);

    /// Begins that session; nothing when the code is unknown or expired, or the claim is not of the
    /// request that it was issued for. A code is good for one attempt, whatever comes of it; at the
    /// second the session that it began is ended, for one of the two has stolen it.
    std::optional<TokenPair> Redeem(std::string const& code, Claim const& claim);

private:
    struct Entry {
        std::string user;
        AuthorizationRequest request;
        std::int64_t expiresAt = 0;
        bool used = false;
        std::string accessToken{};  ///< of the session that it began
    };

    Sessions& sessions;
    Clock clock;
    std::mutex mutex;
    std::map<std::string, Entry> entries;  // mutex; by the code's SHA-256
};

}  // namespace quilloservice
