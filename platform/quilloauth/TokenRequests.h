#pragma once

#include <stop_token>
#include <string>
#include <variant>

#include "moxcore/async/Future.h"
#include "quilloauth/BrowserSignIn.h"
#include "quilloauth/TokenStore.h"
#include "quillosdk/FailureText.h"

namespace quilloauth {

// The requests to the token end points (OAuth 2.0) of the service at an address, which is named
// with each: a secret goes to the service that it is for, whatever address is set meanwhile. They
// are repeated as RetryPolicy says and complete on the transport's thread. Any thread.

/// The service has refused to grant tokens.
struct GrantRefused {
    int httpStatus = 0;
    std::string code;     ///< of RFC 6749: "invalid_grant"
    std::string message;  ///< a sentence for a Failure
};

using Grant = std::variant<Tokens, GrantRefused>;

// A request for tokens reports its progress (SignInProgress.h). Once cancelled it reports
// nothing more and is not repeated; tokens granted all the same have to be revoked.

/// Asks for tokens for the user of this machine, which only a service that trusts him grants.
/// `secret` shows that this is the service's own user (see FindLocalUserSecrets); empty: none.
[[nodiscard]] moxcore::async::Future<Grant> RequestLocalUserGrant(std::string const& address,
                                                                  std::string const& clientID,
                                                                  std::string const& secret,
                                                                  std::stop_token const& calledOff);

/// Asks for tokens for the user who has allowed it in the browser.
[[nodiscard]] moxcore::async::Future<Grant> RequestCodeGrant(std::string const& address,
                                                             std::string const& clientID,
                                                             AuthorizationCode const& code,
                                                             std::stop_token const& calledOff);

/// Asks for fresh tokens.
[[nodiscard]] moxcore::async::Future<Grant> RequestRefresh(std::string const& address,
                                                           std::string const& clientID,
                                                           std::string const& refreshToken);

/// Ends the session of `refreshToken` at the service, as far as that can be reached. The end of the
/// process waits for what is on its way then; see AwaitRevocations.
void RequestRevocation(std::string const& address, std::string const& refreshToken);

/// Has the end of the process wait for revocations that come up to then. Call early.
void PrepareToRevoke();

/// Sleeps until the revocations that are on their way have been answered, two seconds at most.
void AwaitRevocations();

/// The operation named in messages about grants.
[[nodiscard]] quillosdk::Task SignInTask();

}  // namespace quilloauth
