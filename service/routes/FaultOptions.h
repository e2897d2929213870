#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace quilloservice {

/// Simulated faults, for tests of clients.
struct FaultOptions {
    std::chrono::milliseconds latency{};                 ///< delay of every response
    double failRate = 0;                                 ///< share of /v1 requests that get 500
    std::optional<std::int64_t> dropUploadAfterBytes{};  ///< cuts each upload there, once
};

}  // namespace quilloservice
