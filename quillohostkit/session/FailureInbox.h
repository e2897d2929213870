#pragma once

#include <functional>
#include <memory>

#include "quillocommon/Failures.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// Hands what the service's libraries report to `listener` on the main thread, in the order in
/// which it happened, until it is destroyed. Main thread.
class QUILLOHOSTKIT_API FailureInbox {
public:
    explicit FailureInbox(std::function<void(quillocommon::Failure const&)> listener);

private:
    std::shared_ptr<std::function<void(quillocommon::Failure const&)>> listener;
    std::shared_ptr<quillocommon::FailureSubscription> subscription;
};

}  // namespace quillohostkit
