#pragma once

#include <chrono>
#include <deque>
#include <optional>

namespace quillohost {

/// How fast work goes on now: over the last ten seconds, not since its beginning. A pause counts
/// while it lies in them. A plain value.
class SlidingRate {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// So much of the work is done, from 0 to 1. Times do not go back.
    void Add(Time now, double fraction);

    /// The fraction that is done in a second; nothing before a second has passed, and nothing while
    /// nothing is done.
    [[nodiscard]] std::optional<double> PerSecond() const;

private:
    struct Sample {
        Time time;
        double fraction;
    };

    std::deque<Sample> samples;  // the first is where the window begins; apart but for the last
};

}  // namespace quillohost
