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

/// The kinds of request that are counted apart.
enum class RequestKind { User, Workspaces, Projects, Children, Links, Uploads, Changes, Tokens };

/// At most `requests` in any stretch of `window`.
struct RateLimit {
    std::size_t requests = 0;
    std::chrono::milliseconds window{};
};

/// Counts the requests of each session (or other number) and kind in a sliding window. Refused
/// requests do not count, so that who keeps knocking still gets in as soon as the window has room.
/// Any thread.
class RateLimiter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Decision {
        RateLimit limit;
        bool admitted = false;
        std::chrono::milliseconds retryAfter{};  ///< when refused: until there is room again
    };

    /// One limit for all kinds when `forAll` is given, the kinds' own otherwise.
    explicit RateLimiter(std::optional<RateLimit> forAll);

    Decision Admit(std::int64_t who, RequestKind kind, TimePoint now);

private:
    void ForgetQuietSessions(TimePoint now);

    static constexpr std::size_t kKinds = static_cast<std::size_t>(RequestKind::Tokens) + 1;

    std::array<RateLimit, kKinds> limits;
    std::mutex mutex;
    /// When each admitted request of the window came, oldest first. mutex
    std::map<std::pair<std::int64_t, RequestKind>, std::deque<TimePoint>> admitted;
    std::size_t sweepAt = 1024;  // mutex
};

}  // namespace quilloservice
