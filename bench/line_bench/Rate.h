#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace linebench {

/// How fast bytes may pass, as a clock of its own: bytes take their time one after another. One
/// thread.
class Rate {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// In bytes a second; 0: as fast as they come.
    explicit Rate(std::uint64_t bytesPerSecond) : bytesPerSecond(bytesPerSecond) {}

    /// When so many bytes that are there now have passed.
    Time Pass(Time now, std::uint64_t bytes) {
        if (bytesPerSecond == 0) return now;
        // Timers are late; what they lose within this time is made up for.
        constexpr auto kCatchUp = std::chrono::milliseconds(5);
        std::chrono::duration<double> const taken(static_cast<double>(bytes) /
                                                  static_cast<double>(bytesPerSecond));
        free = std::max(free, now - kCatchUp) +
               std::chrono::duration_cast<std::chrono::nanoseconds>(taken);
        return std::max(free, now);
    }

private:
    std::uint64_t bytesPerSecond;
    Time free{};
};

}  // namespace linebench
