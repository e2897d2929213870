#pragma once

#include <mutex>
#include <vector>

#include "quilloauth/SignInProgress.h"

namespace testsupport {

/// Keeps the stages that sign-ins have told since this was made. Any thread.
class SignInStages {
public:
    SignInStages() {
        quilloauth::SetSignInListener([this](quilloauth::SignInProgress const& progress) {
            std::lock_guard lock(mutex);
            stages.push_back(progress.stage);
        });
    }
    ~SignInStages() { quilloauth::SetSignInListener({}); }
    SignInStages(SignInStages const&) = delete;
    SignInStages& operator=(SignInStages const&) = delete;

    [[nodiscard]] std::vector<quilloauth::SignInStage> All() const {
        std::lock_guard lock(mutex);
        return stages;
    }

private:
    mutable std::mutex mutex;
    std::vector<quilloauth::SignInStage> stages;  // guarded by mutex
};

}  // namespace testsupport
