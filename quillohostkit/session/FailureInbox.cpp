#include "quillohostkit/session/FailureInbox.h"

#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"

namespace quillohostkit {

FailureInbox::FailureInbox(std::function<void(quillocommon::Failure const&)> newListener)
    : listener(std::make_shared<std::function<void(quillocommon::Failure const&)>>(
          std::move(newListener))) {
    std::weak_ptr<std::function<void(quillocommon::Failure const&)>> const weak = listener;
    subscription = quillocommon::ListenToFailures([weak](quillocommon::Failure const& failure) {
        moxcore::threads::AsyncCallFromMainThread(
            [weak, failure] {
                if (auto const alive = weak.lock()) (*alive)(failure);
            },
            0);
    });
}

}  // namespace quillohostkit
