#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "service/base/Clock.h"
#include "service/oauth/ClientId.h"
#include "service/store/Ids.h"

namespace quilloservice {

class Database;
class Store;

/// The session and user of a request.
struct Identity {
    SessionId session{};
    UserId user;
};

struct TokenPair {
    std::string access;
    std::string refresh;
};

/// Signed-in sessions and their tokens. A token is 256 random bits, of which the store holds only
/// the SHA-256. Any thread.
class Sessions {
public:
    static constexpr std::int64_t kAccessSeconds = 3600;
    static constexpr std::int64_t kRefreshSeconds = 30 * 24 * 3600;
    /// How long a refresh token may be used again by a client that lost the response.
    static constexpr std::int64_t kRefreshGraceSeconds = 60;

    Sessions(Store& store, Clock clock);

    /// Starts a session of `user` with the program `client`.
    TokenPair SignIn(UserId const& user, ClientId const& client);

    /// Exchanges a refresh token for a new pair; nothing if it is unknown, expired or another
    /// client's. A refresh token is valid once: using it again ends its session, because one of the
    /// two users has stolen it (RFC 9700). Exception, for a client that lost the response: within
    /// kRefreshGraceSeconds, and before a token of the new pair is used, the exchange may be
    /// repeated; the former pair is revoked.
    std::optional<TokenPair> Refresh(std::string_view refreshToken, ClientId const& client);

    /// Ends the session of `token`, an access or refresh token. Ignores unknown tokens.
    void Revoke(std::string_view token);

    /// The identity behind an access token; nothing if it is unknown, expired or revoked.
    [[nodiscard]] std::optional<Identity> Find(std::string_view accessToken) const;

private:
    bool MayBeRepeated(Database& database, std::string const& hash, std::int64_t usedAt,
                       std::int64_t now);

    Store& store;
    Clock clock;
    mutable std::mutex mutex;
    /// The access tokens from a refresh that were used in the last minute: hash and time of first
    /// use. In memory only, because Find must not wait for the disk.
    mutable std::map<std::string, std::int64_t> seen;  // mutex
};

}  // namespace quilloservice
