#include "quilloauth/SignInProgress.h"

#include <mutex>
#include <utility>

#include "moxcore/utility/NoDestructor.h"

namespace quilloauth {
namespace {

class CurrentListener {
public:
    void Set(SignInListener newListener) {
        std::lock_guard lock(mutex);
        listener.swap(newListener);
    }

    [[nodiscard]] SignInListener Copy() {
        std::lock_guard lock(mutex);
        return listener;
    }

private:
    std::mutex mutex;
    SignInListener listener;  // guarded by mutex
};

/// Never destroyed: somebody may sign in while the process ends.
CurrentListener& TheListener() {
    static moxcore::utility::NoDestructor<CurrentListener> listener;
    return *listener;
}

}  // namespace

void SetSignInListener(SignInListener listener) {
    TheListener().Set(std::move(listener));
}

void TellSignIn(SignInStage stage, moxcore::threads::TimePoint since) {
    if (auto const listener = TheListener().Copy()) listener({stage, since});
}

}  // namespace quilloauth
