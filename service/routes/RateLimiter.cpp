#include "service/routes/RateLimiter.h"

#include <algorithm>

namespace quilloservice {

using std::chrono::ceil;
using std::chrono::milliseconds;
using namespace std::chrono_literals;

RateLimiter::RateLimiter(std::optional<RateLimit> forAll) {
    auto limit = [&](RequestKind kind) -> RateLimit& {
        return limits[static_cast<std::size_t>(kind)];
    };
    limit(RequestKind::User) = {600, 60s};
    limit(RequestKind::Workspaces) = {200, 60s};
    limit(RequestKind::Projects) = {1000, 1s};
    limit(RequestKind::Children) = {60, 60s};
    limit(RequestKind::Links) = {600, 60s};
    limit(RequestKind::Uploads) = {600, 60s};
    limit(RequestKind::Changes) = {600, 60s};
    limit(RequestKind::Tokens) = {600, 60s};
    if (forAll) limits.fill(*forAll);
}

RateLimiter::Decision RateLimiter::Admit(Requester requester, RequestKind kind, TimePoint now) {
    RateLimit const& limit = limits[static_cast<std::size_t>(kind)];
    std::scoped_lock lock(mutex);
    RemoveIdleRequesters(now);
    std::deque<TimePoint>& times = admitted[{requester, kind}];
    while (!times.empty() && now - times.front() >= limit.window)
        times.pop_front();
    if (times.size() < limit.requests) {
        times.push_back(now);
        return {limit, true, {}};
    }
    return {limit, false, ceil<milliseconds>(times.front() + limit.window - now)};
}

void RateLimiter::RemoveIdleRequesters(TimePoint now) {
    if (admitted.size() < sweepAt) return;
    std::erase_if(admitted, [&](auto const& entry) {
        auto const& [key, times] = entry;
        auto window = limits[static_cast<std::size_t>(key.second)].window;
        return times.empty() || now - times.back() >= window;
    });
    sweepAt = std::max<std::size_t>(1024, admitted.size() * 2);
}

}  // namespace quilloservice
