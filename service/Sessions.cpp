#include "service/Sessions.h"

#include "service/Digest.h"
#include "service/Store.h"
#include "service/Text.h"

namespace quilloservice {

namespace {

constexpr std::string_view kAccess = "access";
constexpr std::string_view kRefresh = "refresh";

std::string HashOf(std::string_view token) {
    return ToHex(Sha256(token));
}

std::string Issue(Database& database, std::int64_t session, std::string_view kind,
                  std::int64_t expiresAt) {
    std::string token = ToHex(RandomBytes(32));
    database.Run("INSERT INTO tokens (hash, session, kind, expires_at) VALUES (?, ?, ?, ?)",
                 HashOf(token), session, kind, expiresAt);
    return token;
}

TokenPair IssuePair(Database& database, std::int64_t session, std::int64_t now) {
    return {Issue(database, session, kAccess, now + Sessions::kAccessSeconds),
            Issue(database, session, kRefresh, now + Sessions::kRefreshSeconds)};
}

void ForgetExpired(Database& database, std::int64_t now) {
    database.Run("DELETE FROM tokens WHERE expires_at <= ?", now);
    database.Run(
        "DELETE FROM sessions WHERE NOT EXISTS "
        "(SELECT 1 FROM tokens WHERE session = sessions.id)");
}

}  // namespace

Sessions::Sessions(Store& store, Clock clock) : store_(store), clock_(std::move(clock)) {}

TokenPair Sessions::SignIn(const std::string& user, std::string_view client) {
    return store_.Write([&](Database& database) {
        std::int64_t now = clock_();
        ForgetExpired(database, now);
        Statement session = database.Query(
            "INSERT INTO sessions (user, client) VALUES (?, ?) RETURNING id", user, client);
        session.Next();
        return IssuePair(database, session.Integer(0), now);
    });
}

std::optional<TokenPair> Sessions::Refresh(std::string_view refreshToken, std::string_view client) {
    return store_.Write([&](Database& database) -> std::optional<TokenPair> {
        std::int64_t now = clock_();
        std::string hash = HashOf(refreshToken);
        std::int64_t session = 0;
        {
            Statement row = database.Query(
                "SELECT session FROM tokens JOIN sessions ON sessions.id = session "
                "WHERE hash = ? AND kind = ? AND expires_at > ? AND client = ?",
                hash, kRefresh, now, client);
            if (!row.Next()) return std::nullopt;
            session = row.Integer(0);
        }
        database.Run("UPDATE tokens SET expires_at = min(expires_at, ?) WHERE hash = ?",
                     now + kRefreshGraceSeconds, hash);
        ForgetExpired(database, now);
        return IssuePair(database, session, now);
    });
}

void Sessions::Revoke(std::string_view token) {
    store_.Write([&](Database& database) {
        database.Run("DELETE FROM sessions WHERE id = (SELECT session FROM tokens WHERE hash = ?)",
                     HashOf(token));
    });
}

std::optional<Identity> Sessions::Find(std::string_view accessToken) const {
    return store_.Read([&](Database& database) -> std::optional<Identity> {
        Statement row = database.Query(
            "SELECT session, user FROM tokens JOIN sessions ON sessions.id = session "
            "WHERE hash = ? AND kind = ? AND expires_at > ?",
            HashOf(accessToken), kAccess, clock_());
        if (!row.Next()) return std::nullopt;
        return Identity{row.Integer(0), row.Text(1)};
    });
}

}  // namespace quilloservice
