#include "service/oauth/Sessions.h"

#include <set>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

constexpr std::string_view kAccess = "access";
constexpr std::string_view kRefresh = "refresh";

std::string HashOf(std::string_view token) {
    return ToHex(Sha256(token));
}

std::string Issue(Database& database, SessionId session, std::string_view kind,
                  std::int64_t expiresAt, std::string_view parent) {
    std::string token = ToHex(RandomBytes(32));
    database.Run(
        "INSERT INTO tokens (hash, session, kind, expires_at, parent) "
        "VALUES (?, ?, ?, ?, nullif(?, ''))",
        HashOf(token), session, kind, expiresAt, parent);
    return token;
}

/// `parent`: the hash of the refresh token that is exchanged for the pair.
TokenPair IssuePair(Database& database, SessionId session, std::int64_t now,
                    std::string_view parent = {}) {
    return {Issue(database, session, kAccess, now + Sessions::kAccessSeconds, parent),
            Issue(database, session, kRefresh, now + Sessions::kRefreshSeconds, parent)};
}

/// Revokes the pair that was issued for the refresh token `hash`. Its refresh token is kept as one
/// used long ago, so that using it ends the session.
void RevokePair(Database& database, std::string const& hash) {
    database.Run("DELETE FROM tokens WHERE parent = ? AND kind = ?", hash, kAccess);
    database.Run("UPDATE tokens SET used_at = 0, parent = NULL WHERE parent = ?", hash);
}

void End(Database& database, SessionId session) {
    database.Run("DELETE FROM sessions WHERE id = ?", session);
}

/// Whether there are expired tokens. To be asked outside the transaction, which would collide with
/// every other one that issues tokens if it read where they are inserted.
bool HasExpired(Store const& store, std::int64_t now) {
    return store.Read([&](Database& database) {
        return database.Query("SELECT 1 FROM tokens WHERE expires_at <= ? LIMIT 1", now).Next();
    });
}

/// Deletes expired tokens, and the sessions of which they were the last.
void DeleteExpired(Database& database, std::int64_t now) {
    std::set<std::int64_t> affected;
    Statement expired =
        database.Query("DELETE FROM tokens WHERE expires_at <= ? RETURNING session", now);
    while (expired.Next())
        affected.insert(expired.Integer(0));
    for (std::int64_t session : affected) {
        database.Run(
            "DELETE FROM sessions WHERE id = ? AND NOT EXISTS "
            "(SELECT 1 FROM tokens WHERE session = sessions.id)",
            session);
    }
}

}  // namespace

Sessions::Sessions(Store& store, Clock clock) : store(store), clock(std::move(clock)) {}

TokenPair Sessions::SignIn(UserId const& user, ClientId const& client) {
    std::int64_t now = clock();
    bool hasExpired = HasExpired(store, now);
    return store.Write([&](Database& database) {
        if (hasExpired) DeleteExpired(database, now);
        Statement session = database.Query(
            "INSERT INTO sessions (user, client) VALUES (?, ?) RETURNING id", user, client);
        session.Next();
        return IssuePair(database, SessionId(session.Integer(0)), now);
    });
}

std::optional<TokenPair> Sessions::Refresh(std::string_view refreshToken, ClientId const& client) {
    std::int64_t now = clock();
    bool hasExpired = HasExpired(store, now);
    return store.Write([&](Database& database) -> std::optional<TokenPair> {
        std::string hash = HashOf(refreshToken);
        SessionId session{};
        std::optional<std::int64_t> usedAt;
        {
            Statement row = database.Query(
                "SELECT session, used_at IS NOT NULL, used_at FROM tokens "
                "JOIN sessions ON sessions.id = session "
                "WHERE hash = ? AND kind = ? AND expires_at > ? AND client = ?",
                hash, kRefresh, now, client);
            if (!row.Next()) return std::nullopt;
            session = SessionId(row.Integer(0));
            if (row.Integer(1) != 0) usedAt = row.Integer(2);
        }
        if (!usedAt) {
            database.Run("UPDATE tokens SET used_at = ? WHERE hash = ?", now, hash);
        } else if (MayBeRepeated(database, hash, *usedAt, now)) {
            RevokePair(database, hash);
        } else {
            End(database, session);
            return std::nullopt;
        }
        if (hasExpired) DeleteExpired(database, now);
        return IssuePair(database, session, now, hash);
    });
}

void Sessions::Revoke(std::string_view token) {
    store.Write([&](Database& database) {
        database.Run("DELETE FROM sessions WHERE id = (SELECT session FROM tokens WHERE hash = ?)",
                     HashOf(token));
    });
}

std::optional<Identity> Sessions::Find(std::string_view accessToken) const {
    std::string hash = HashOf(accessToken);
    std::int64_t now = clock();
    bool isNew = false;
    auto identity = store.Read([&](Database& database) -> std::optional<Identity> {
        Statement row = database.Query(
            "SELECT session, user, parent IS NOT NULL AND expires_at > ? "
            "FROM tokens JOIN sessions ON sessions.id = session "
            "WHERE hash = ? AND kind = ? AND expires_at > ?",
            now + kAccessSeconds - kRefreshGraceSeconds, hash, kAccess, now);
        if (!row.Next()) return std::nullopt;
        isNew = row.Integer(2) != 0;
        return Identity{SessionId(row.Integer(0)), row.Id<UserId>(1)};
    });
    if (isNew) {
        std::scoped_lock lock(mutex);
        std::erase_if(
            seen, [now](auto const& entry) { return now - entry.second >= kRefreshGraceSeconds; });
        seen.emplace(std::move(hash), now);
    }
    return identity;
}

bool Sessions::MayBeRepeated(Database& database, std::string const& hash, std::int64_t usedAt,
                             std::int64_t now) {
    if (now - usedAt >= kRefreshGraceSeconds) return false;
    std::scoped_lock lock(mutex);
    Statement row =
        database.Query("SELECT hash, used_at IS NOT NULL FROM tokens WHERE parent = ?", hash);
    while (row.Next()) {
        if (row.Integer(1) != 0 || seen.contains(row.Text(0))) return false;
    }
    return true;
}

}  // namespace quilloservice
