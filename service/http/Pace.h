#pragma once

#include <chrono>
#include <cstdint>

namespace quilloservice::http {

using Time = std::chrono::steady_clock::time_point;
using Duration = std::chrono::steady_clock::duration;

inline Time Now() {
    return std::chrono::steady_clock::now();
}

/// The minimum transfer rate of a client.
struct PaceRule {
    std::int64_t bytesPerSecond = 1024;
    Duration average = std::chrono::seconds(30);  ///< the period over which the rate is averaged
};

/// Checks a client's transfer rate against a rule. Only the time spent waiting for the client
/// counts. One thread at a time.
class Pace {
public:
    explicit Pace(PaceRule const& rule) : rule(rule) {}

    /// Starts a wait for the client. Returns its deadline.
    Time BeginWait(Time now);

    /// Ends the wait: `moved` bytes were sent or received. Returns false if the client is too slow.
    bool EndWait(std::int64_t moved, Time now);

    /// Counts bytes sent or received without waiting.
    void Count(std::int64_t moved) { bytes += moved; }

private:
    [[nodiscard]] bool HasEnough() const;

    PaceRule rule;
    Time waitBegan{};
    Duration waited{};       // in the current period
    std::int64_t bytes = 0;  // ditto
};

}  // namespace quilloservice::http
