#pragma once

#include <functional>
#include <memory>

#include "quilloauth/SignInProgress.h"
#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui::model {

/// The port to the service, one implementation for each client library (sdk/, client/): signs the
/// user in and out and makes the root of the location tree, whose nodes then fetch their children
/// from the same library. Backends.h chooses one. Implementations live as long as the process. Any
/// thread; callbacks come on the library's own threads, and failures are reported to the failure
/// listeners (quillocommon/Failures.h) only.
class Backend {
public:
    using LoggedInCallback = std::function<void(bool isLoggedIn)>;
    using UserCallback = std::function<void(std::shared_ptr<QuilloUser> const& user)>;

    /// Whether signing in is a step before GetCurrentUser, and `onLoggedInChanged` of SignIn
    /// reports its end. If not, the arrival of the user is the end of the sign-in, and
    /// `onLoggedInChanged` is never called.
    [[nodiscard]] virtual bool HasSignInStep() const = 0;

    /// Opens the session, with a stored token or interactively. `onLoggedInChanged` replaces that
    /// of an earlier call; it receives true once the client has a token, false when the client
    /// refuses the token, and false on sign-out. A sign-in that fails, or that a sign-out
    /// overtakes, calls nothing.
    ///
    /// `onProgress` receives the stages: first, within the call, that the service is asked, last
    /// the outcome (SignInStage::None for success, for a cancelled sign-in, and for one that
    /// another SignIn has replaced). One call at a time; must not throw and must not sign in or
    /// out.
    virtual void SignIn(LoggedInCallback const& onLoggedInChanged,
                        quilloauth::SignInListener const& onProgress) const = 0;

    /// Cancels the sign-in under way, which then signs nobody in. Nothing happens when there is
    /// none. Never waits.
    virtual void CancelSignIn() const = 0;

    /// Ends the session, also for the other backends: they share it. Existing nodes stay as they
    /// are.
    virtual void SignOut() const = 0;

    /// Passes a new root of the tree, with the ID and the name of the signed-in user, to
    /// `callback`. Calls nothing when the user cannot be read.
    virtual void GetCurrentUser(UserCallback const& callback) const = 0;

    /// Moves the waiting requests for the children of `folders` to the front, in this order.
    /// Ignores nodes of other backends.
    virtual void FetchFirst(NodeVector<QuilloNode> const& folders) const = 0;

protected:
    ~Backend() = default;
};

}  // namespace quillomoxui::model
