#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/threads/Clock.h"

namespace quillosdk {

/// How long to go on trying without any progress.
struct RetryLimits {
    int attempts = 8;
    std::chrono::seconds patience{300};
};

/// Whether and when a request that has not succeeded is sent again. A request that the service
/// refuses for now (408, 429, 500, 502, 503, 504) and one without an answer are; any other answer
/// is final. The wait is what the service asks for in Retry-After, at most two minutes; else it is
/// random between nothing and a bound that doubles from half a second to 30 s ("full jitter"), so
/// that the clients of a service that was down do not come back all at once. One instance for one
/// operation; by one thread at a time.
class RetryPolicy {
public:
    explicit RetryPolicy(RetryLimits limits = {});

    /// Hears since when the operation has waited for the service, and nothing once it goes on.
    using WaitListener = std::function<void(std::optional<moxcore::threads::TimePoint> since)>;

    /// `listener` is called for the waits for an unavailable service that a user would notice: from
    /// the second failure in a row on, or when the wait is a second or longer. Until there is
    /// progress, the waits count as one: each is reported with the time of the first. Called within
    /// the functions below; must not throw. Before any of them.
    void SetWaitListener(WaitListener listener) { onWait = std::move(listener); }

    /// How long to wait before the next attempt, after one that has ended just now and that is
    /// worth repeating; none when the limits are reached. `retryAfter` is what the service said.
    [[nodiscard]] std::optional<std::chrono::milliseconds> NextDelay(
        std::optional<std::chrono::milliseconds> retryAfter = {});

    /// Notes that the service cannot be reached or is not available for now; the request is sent
    /// again after `delay`.
    void Unavailable(std::chrono::milliseconds delay);

    /// The service has answered as it should: it is not waited for any more.
    void Answered();

    /// The operation has come closer to its end: the limits count anew.
    void Progressed();

    /// Whether an answer with this status is worth repeating the request.
    [[nodiscard]] static bool IsTransient(int status);

    /// Whether a request that failed with this result is worth repeating.
    [[nodiscard]] static bool IsTransientResult(moxcore::config::Result result);

    /// The wait that the header Retry-After asks for, in seconds or as an HTTP date, cut to two
    /// minutes; none when `value` is neither.
    [[nodiscard]] static std::optional<std::chrono::milliseconds> ParseRetryAfter(
        std::string const& value, moxcore::threads::TimePoint now);

    /// Puts `random`, which answers a number in [0, 1) on any thread, in place of the usual source;
    /// an empty function brings that back. For tests.
    static void SetRandomSource(std::function<double()> random);

private:
    RetryLimits limits;
    int failures = 0;                                             // since the last progress
    moxcore::threads::TimePoint beginning;                        // of the time without progress
    std::optional<moxcore::threads::TimePoint> unavailableSince;  // none since the last progress
    WaitListener onWait;
    bool isWaitTold = false;
};

}  // namespace quillosdk
