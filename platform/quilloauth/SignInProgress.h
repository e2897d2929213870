#pragma once

#include <functional>

#include "moxcore/threads/Clock.h"
#include "quillocommon/Export.h"

namespace quilloauth {

/// What a sign-in is doing, or how the last one has ended.
enum class SignInStage {
    None,       ///< none is under way; the last one has succeeded or was given up
    Asking,     ///< the service is asked
    Waiting,    ///< the service cannot be reached, or is too busy; it is asked again by itself
    InBrowser,  ///< the page has been opened, and the user is waited for
    // These are ends.
    Denied,       ///< the user has refused the access in the browser
    Expired,      ///< nobody has come back from the browser within ten minutes
    NoBrowser,    ///< the page could not be opened
    Unavailable,  ///< the service could not be reached, or was too busy, however often it was asked
    Refused,      ///< anything else: the service grants nothing to this user or application
};

/// How far a sign-in is. A plain value; any thread.
struct QUILLOSERVICES_API SignInProgress {
    SignInStage stage = SignInStage::None;
    moxcore::threads::TimePoint since{};  ///< when the stage began, Waiting with the first failure

    /// Whether a sign-in waits for the service or for the user.
    [[nodiscard]] bool IsUnderWay() const {
        return stage == SignInStage::Asking || stage == SignInStage::Waiting ||
               stage == SignInStage::InBrowser;
    }

    friend bool operator==(SignInProgress const&, SignInProgress const&) = default;
};

/// Called with each stage, in order.
using SignInListener = std::function<void(SignInProgress const&)>;

/// Calls `listener` with the progress of this process's sign-ins from now on: of Login, and of the
/// renewal that may precede it. It replaces the previous listener; an empty one ends the calls. A
/// cancelled sign-in reports nothing. Called on the threads of the sign-in; must not throw. Any
/// thread.
QUILLOSERVICES_API void SetSignInListener(SignInListener listener);

/// Tells the listener. For the sign-in itself.
void TellSignIn(SignInStage stage, moxcore::threads::TimePoint since = moxcore::threads::Now());

}  // namespace quilloauth
