#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "service/base/Clock.h"

namespace quilloservice {

class Database;
class Store;

/// Who is asking: a signed-in session and its user.
struct Identity {
    std::int64_t session = 0;
    std::string user;
};

struct TokenPair {
    std::string access;
    std::string refresh;
};

/// Signed-in sessions and their tokens. A token is 256 random bits; the store has only its
/// SHA-256, so that a copy of the store signs nobody in. Any thread.
class Sessions {
public:
    static constexpr std::int64_t kAccessSeconds = 3600;
    static constexpr std::int64_t kRefreshSeconds = 30 * 24 * 3600;
    /// How long a refresh token may be used again, for a client that lost the answer.
    static constexpr std::int64_t kRefreshGraceSeconds = 60;

    Sessions(Store& store, Clock clock);

    /// Begins a session of `user` for the program `client`.
    TokenPair SignIn(std::string const& user, std::string_view client);

    /// A new pair for a refresh token; nothing when it is unknown, expired, or of another client. A
    /// refresh token is good for one exchange. One that is used again has been stolen, or its thief
    /// was first: that ends its session (RFC 9700). But a client that lost the answer may ask for
    /// it again for a while, as long as nothing of the pair in that answer was used; that pair is
    /// taken back then.
    std::optional<TokenPair> Refresh(std::string_view refreshToken, std::string_view client);

    /// Ends the session that `token`, of either sort, belongs to. Unknown tokens are no error.
    void Revoke(std::string_view token);

    /// Whose access token this is; nothing when it is unknown, expired or revoked.
    [[nodiscard]] std::optional<Identity> Find(std::string_view accessToken) const;

private:
    bool MayBeRepeated(Database& database, std::string const& hash, std::int64_t usedAt,
                       std::int64_t now);

    Store& store;
    Clock clock;
    mutable std::mutex mutex;
    /// The access tokens that were issued for a refresh token and used in the last minute, by their
    /// hashes, and when. Not in the store: to look a token up must not wait for the disk.
    mutable std::map<std::string, std::int64_t> seen;  // mutex
};

}  // namespace quilloservice
