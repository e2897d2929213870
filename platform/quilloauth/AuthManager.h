#pragma once

#include <functional>
#include <memory>
#include <string>

#include "moxcore/async/Future.h"
#include "quilloauth/SignInResults.h"
#include "quillocommon/Export.h"
#include "quillocommon/Response.h"
#include "quillosdk/EnvironmentType.h"

namespace quilloauth::jwt {

// The signed-in session: gets tokens, keeps them, renews them. They lie in the desktop's keyring,
// by its Secret Service, where the session has one, else in a file of the user's configuration
// directory that nobody else may read: one pair for each service address. A keyring that is locked,
// broken or slow costs a warning (quillocommon::Step::KeepSignIn), and the file serves instead. So
// it does for a host that has put its state in a directory of its own (SetUserRoot). They appear in
// no trace and no error text. Any thread.

/// Names the application to the service: its OAuth client ID, and its redirect URI, which is
/// http://127.0.0.1/PATH for a sign-in in the browser to come back; the port is chosen anew each
/// time. Call before anything else here.
QUILLOSERVICES_API void InitializeAuthManager(std::string const& clientID,
                                              std::string const& redirectURI,
                                              quillosdk::EnvironmentType environment,
                                              std::string const& scope);

/// The session's access token, renewed first when it has run out or was rejected. Completes on a
/// worker thread of its own, which is also the future's executor: attach what takes its time
/// (Login) there, `token.Then(token.GetExecutor(), ...)`, for a token that is there already would
/// have it run on the attaching thread. Fails with kNotSignedIn or kSessionOver when there is no
/// session, is cancelled when the process ends first.
[[nodiscard]] QUILLOSERVICES_API moxcore::async::Future<std::string> GetAccessToken();

/// Signs in with the service, which knows who the user is: `userID` is ignored. Waits until
/// that has ended, so never call it on the main thread. A service that trusts the user of this
/// machine is asked to first; when it does not, the user signs in in the browser, and this waits
/// for up to ten minutes. One sign-in waits at a time: a further one takes the place of the first,
/// which answers kNotSignedIn. Answers kSessionExists (a failure in form) once there is a session,
/// another failure when there is none.
QUILLOSERVICES_API quillocommon::Response Login(std::string const& userID);

/// Ends a Login that waits for the browser or for the service, which then answers kNotSignedIn: the
/// user has begun anew, or thought better of it. Tokens that are granted all the same are given
/// back. Nothing happens when there is none. Never waits.
QUILLOSERVICES_API void CancelLogin();

/// Has the browser show its page again, the same one, while a Login waits for it: the user has lost
/// it. Nothing happens when none does. Never waits.
QUILLOSERVICES_API void ReopenBrowser();

/// Ends the session, and a Login that waits: the tokens are forgotten here at once,
/// and the service is asked to end it, where it can be reached. Waits neither for it nor for the
/// keyring. Fails only when the tokens' file cannot be removed.
QUILLOSERVICES_API quillocommon::Response Logout();

/// Called with true once a Login has found or begun a session, with false when a Logout has ended
/// it; on the thread that does so, before that returns; must not throw.
using SessionListener = std::function<void(bool exists)>;

/// Calls `listener` when a session begins or ends, whatever code began or ended it, until the
/// result is dropped: holders of a token release it when its session ends. A call under way then
/// goes on, so the listener should hold weakly what may be destroyed.
[[nodiscard]] QUILLOSERVICES_API std::shared_ptr<SessionListener const> ListenToSession(
    SessionListener listener);

/// Blocks until the sign-outs under way have reached the service, four seconds at most. The end
/// of the process does so by itself; only a host that takes the service down before that calls it.
QUILLOSERVICES_API void AwaitSignOuts();

}  // namespace quilloauth::jwt
