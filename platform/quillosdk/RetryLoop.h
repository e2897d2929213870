#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "quillosdk/Answer.h"
#include "quillosdk/RetryPolicy.h"

namespace quillosdk {

/// Whether `answer`, which is complete, asks for a retry: none when it is final, otherwise the
/// wait that the service wants (zero when it did not say).
struct Verdict {
    bool worthRepeating = false;
    std::optional<std::chrono::milliseconds> retryAfter;
};
[[nodiscard]] Verdict JudgeAnswer(Answer const& answer);

/// Calls `send`, and again for as long as `policy` finds that worthwhile; the result is the last
/// answer or the last failure. The waits are spent on the I/O executor, which also sends again.
/// `policy` is shared with the caller, who must not use it before the result is there.
[[nodiscard]] Answer SendWithRetries(std::function<Answer()> send,
                                     std::shared_ptr<RetryPolicy> policy);

}  // namespace quillosdk
