#pragma once

#include <functional>
#include <thread>

namespace quillocommon {

/// A thread that runs `work` with every signal blocked: signals are the host's to handle. `work`
/// ends soon after its token asks it to; dropping the result asks, and waits for it.
[[nodiscard]] std::jthread StartWorkerThread(std::function<void(std::stop_token)> work);

}  // namespace quillocommon
