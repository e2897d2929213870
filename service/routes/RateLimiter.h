#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace quilloservice {

/// Each kind of request has a limit and a count of its own.
enum class RequestKind { User, Workspaces, Projects, Children, Links, Uploads, Changes, Tokens };

/// At most `requests` within any period of length `window`.
struct RateLimit {
    std::size_t requests = 0;
    std::chrono::milliseconds window{};
};

/// A session or a client's address, whichever the requests are counted by.
enum class Requester : std::int64_t {};

/// Counts requests by requester and kind in a sliding window. Refused requests do not count, so
/// retrying early does not prolong the wait. Any thread.
class RateLimiter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Decision {
        RateLimit limit;
        bool admitted = false;
        std::chrono::milliseconds retryAfter{};  ///< if refused: until a request is admitted again
    };

    /// `forAll` replaces the default limits of all kinds.
    explicit RateLimiter(std::optional<RateLimit> forAll);

    Decision Admit(Requester requester, RequestKind kind, TimePoint now);

private:
    void RemoveIdleRequesters(TimePoint now);

    static constexpr std::size_t kKinds = static_cast<std::size_t>(RequestKind::Tokens) + 1;

    std::array<RateLimit, kKinds> limits;
    std::mutex mutex;
    /// The times of the admitted requests in the window, oldest first. mutex
    std::map<std::pair<Requester, RequestKind>, std::deque<TimePoint>> admitted;
    std::size_t sweepAt = 1024;  // mutex
};

}  // namespace quilloservice
