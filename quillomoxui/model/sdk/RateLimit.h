#pragma once

#include <chrono>
#include <optional>

#include "quillosdk/QuilloResponse.h"

namespace quillomoxui::model {

/// How many requests the service takes within a time.
struct RateLimit {
    int limit = 0;                   ///< 1 at least
    std::chrono::seconds window{0};  ///< 1 at least
};

/// What an answer's headers announce; none when they do not, or announce what no queue can keep to.
/// Throws what std::stoi throws when they are no numbers. Any thread.
[[nodiscard]] std::optional<RateLimit> ReadRateLimit(quillosdk::Headers const& headers);

}  // namespace quillomoxui::model
