#include "service/oauth/AuthorizationCodes.h"

#include "service/base/Digest.h"
#include "service/base/Text.h"

namespace quilloservice {

AuthorizationCodes::AuthorizationCodes(Sessions& sessions, Clock clock)
    : sessions(sessions), clock(std::move(clock)) {}

std::string AuthorizationCodes::Issue(UserId const& user, AuthorizationRequest const& request) {
    std::string code = ToHex(RandomBytes(32));
    std::int64_t now = clock();
    std::scoped_lock lock(mutex);
    std::erase_if(entries, [now](auto const& entry) { return entry.second.expiresAt <= now; });
    entries.emplace(Sha256(code), Entry{user, request, now + kSeconds});
    return code;
}

std::optional<TokenPair> AuthorizationCodes::Redeem(std::string const& code, Claim const& claim) {
    std::scoped_lock lock(mutex);
    auto found = entries.find(Sha256(code));
    if (found == entries.end() || found->second.expiresAt <= clock()) return std::nullopt;
    Entry& entry = found->second;
    if (entry.used) {
        sessions.Revoke(entry.accessToken);
        return std::nullopt;
    }
    entry.used = true;
    if (claim.client != entry.request.client || claim.redirectUri != entry.request.redirectUri ||
        !MatchesChallenge(claim.verifier, entry.request.challenge)) {
        return std::nullopt;
    }
    TokenPair pair = sessions.SignIn(entry.user, claim.client);
    entry.accessToken = pair.access;
    return pair;
}

}  // namespace quilloservice
