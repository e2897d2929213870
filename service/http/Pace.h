#pragma once

#include <chrono>
#include <cstdint>

namespace quilloservice::http {

using Time = std::chrono::steady_clock::time_point;
using Duration = std::chrono::steady_clock::duration;

/// How fast a client has to be.
struct PaceRule {
    std::int64_t bytesPerSecond = 1024;
    Duration average = std::chrono::seconds(30);  ///< the time over which the rate counts
};

/// Watches that a client is not slower than the rule. Only time in which the client is waited for
/// counts. One thread at a time.
class Pace {
public:
    explicit Pace(PaceRule const& rule) : rule(rule) {}

    /// From now on the client is waited for. Returns until when it may let itself be waited for.
    Time BeginWait(Time now);

    /// The client has sent or taken `moved` bytes. Returns false when it was too slow.
    bool EndWait(std::int64_t moved, Time now);

    /// Counts bytes that came without a wait.
    void Count(std::int64_t moved) { bytes += moved; }

private:
    [[nodiscard]] bool HasEnough() const;

    PaceRule rule;
    Time waitBegan{};
    Duration waited{};       // of the window under way
    std::int64_t bytes = 0;  // ditto
};

}  // namespace quilloservice::http
