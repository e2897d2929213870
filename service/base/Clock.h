#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace quilloservice {

/// Returns the time in seconds since 1970, UTC. Tests pass a clock of their own.
using Clock = std::function<std::int64_t()>;

inline std::int64_t SystemTime() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace quilloservice
