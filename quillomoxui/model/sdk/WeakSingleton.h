#pragma once

#include <memory>
#include <mutex>

#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

namespace quillomoxui::model {

/// The one queue of a kind, for as long as somebody holds it. Any thread.
template <class Queue>
class QuilloCppSdkIntegration::WeakSingleton {
public:
    /// The live queue, or a new one when there is none.
    [[nodiscard]] static std::shared_ptr<Queue> Instance() {
        std::lock_guard lock(mMutex);
        auto queue = mWeakInstance.lock();
        if (!queue) {
            queue = std::make_shared<Queue>();
            mWeakInstance = queue;
        }
        return queue;
    }

private:
    static inline std::mutex mMutex;
    static inline std::weak_ptr<Queue> mWeakInstance;  // guarded by mMutex
};

}  // namespace quillomoxui::model
