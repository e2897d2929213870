#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace quilloservice {

/// Faults that tests of clients ask for.
struct FaultOptions {
    std::chrono::milliseconds latency{};                 ///< every answer is this much later
    double failRate = 0;                                 ///< share of /v1 requests answered 500
    std::optional<std::int64_t> dropUploadAfterBytes{};  ///< each upload is cut there once
};

}  // namespace quilloservice
