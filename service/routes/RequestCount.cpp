#include "service/routes/RequestCount.h"

#include <arpa/inet.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>

#include "service/base/ApiError.h"
#include "service/base/Digest.h"
#include "service/routes/Call.h"

namespace quilloservice {

void CountRequest(Call& call, RateLimiter& limiter, Requester requester, RequestKind kind) {
    auto decision = limiter.Admit(requester, kind, std::chrono::steady_clock::now());
    call.response.SetHeader("X-RATELIMIT-LIMIT", std::to_string(decision.limit.requests));
    call.response.SetHeader("X-RATELIMIT-WINDOW", std::to_string(decision.limit.window.count()));
    if (decision.admitted) return;
    auto wait = std::chrono::ceil<std::chrono::seconds>(decision.retryAfter).count();
    int seconds = static_cast<int>(std::max<std::int64_t>(1, wait));
    throw ApiError(429, "rate_limited",
                   "Too many requests; try again in " + std::to_string(seconds) + " s.", seconds);
}

Requester RequesterOf(SessionId session) {
    return Requester(static_cast<std::int64_t>(session));
}

Requester RequesterAt(Call const& call) {
    std::string network = call.request.remoteAddress;
    in6_addr address{};
    if (::inet_pton(AF_INET6, network.substr(0, network.find('%')).c_str(), &address) == 1) {
        network.assign(reinterpret_cast<char const*>(address.s6_addr), 8);
    }
    std::int64_t key = 0;
    std::string digest = Sha256(network);  // so that nobody can find a colliding address
    std::memcpy(&key, digest.data(), sizeof(key));
    return Requester(key);
}

}  // namespace quilloservice
