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

/// Reads the limits from an answer's headers; none when they are absent, or out of a queue's range.
/// Throws as std::stoi does when they are no numbers. Any thread.
[[nodiscard]] std::optional<RateLimit> ReadRateLimit(quillosdk::Headers const& headers);

}  // namespace quillomoxui::model
