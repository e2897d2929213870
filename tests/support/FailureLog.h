#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "quillocommon/Failures.h"

namespace testsupport {

/// Keeps the failures that the service's libraries tell of as long as it lives. Any thread.
class FailureLog {
public:
    [[nodiscard]] std::vector<quillocommon::Failure> All() const {
        std::lock_guard lock(mutex);
        return failures;
    }

private:
    mutable std::mutex mutex;
    std::vector<quillocommon::Failure> failures;  // guarded by mutex

    std::shared_ptr<quillocommon::FailureSubscription> const subscription =
        quillocommon::ListenToFailures([this](quillocommon::Failure const& failure) {
            std::lock_guard lock(mutex);
            failures.push_back(failure);
        });
};

}  // namespace testsupport
