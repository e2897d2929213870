#pragma once

#include <mutex>
#include <utility>

#include "quilloauth/SignInProgress.h"

namespace quillomoxui::model {

/// One SignIn and its progress listener, which is not called once the attempt is over. Any thread.
class SignInAttempt {
public:
    explicit SignInAttempt(quilloauth::SignInListener listener) : listener(std::move(listener)) {}

    /// Passes `progress` on; one that is an end ends the attempt.
    void Tell(quilloauth::SignInProgress const& progress) {
        std::lock_guard lock(mutex);
        if (isOver) return;
        isOver = !progress.IsUnderWay();
        if (listener) listener(progress);
    }

    void End(quilloauth::SignInStage stage) { Tell({stage, moxcore::threads::Now()}); }

    /// Ends it, and what it has asked for is not to sign anybody in any more.
    void GiveUp() {
        {
            std::lock_guard lock(mutex);
            isGivenUp = true;
        }
        End(quilloauth::SignInStage::None);
    }

    [[nodiscard]] bool IsGivenUp() const {
        std::lock_guard lock(mutex);
        return isGivenUp;
    }

private:
    mutable std::mutex mutex;  // held while the listener runs, so that nothing overtakes an end
    bool isOver = false;       // guarded by mutex
    bool isGivenUp = false;    // guarded by mutex
    quilloauth::SignInListener const listener;
};

}  // namespace quillomoxui::model
