#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "moxcore/threads/Clock.h"
#include "quilloauth/RenewalTurn.h"
#include "quilloauth/TokenKeeper.h"
#include "quilloauth/TokenRequests.h"
#include "quilloauth/TokenStore.h"
#include "quilloauth/Worker.h"
#include "quillocommon/Response.h"

namespace quilloauth {

/// The session of one application with the service, behind the functions of AuthManager.h. Tokens
/// are handed out and renewed on the worker, one thing after another; signing in and out happens
/// on the caller's thread, which may be the worker. Not to be dropped on the worker. Any thread.
class AuthSession : public std::enable_shared_from_this<AuthSession> {
public:
    /// Keeps its tokens in `keyring`, or in the file at `tokenPath` (UTF-8) where that is null or
    /// cannot be used.
    AuthSession(std::string clientID, std::string redirectURI, std::string tokenPath,
                std::unique_ptr<TokenStore> keyring = nullptr);
    ~AuthSession();
    AuthSession(AuthSession const&) = delete;
    AuthSession& operator=(AuthSession const&) = delete;

    [[nodiscard]] moxcore::async::Future<std::string> GetAccessToken();
    [[nodiscard]] quillocommon::Response Login();
    void CancelLogin();
    void ReopenBrowser();
    [[nodiscard]] quillocommon::Response Logout();

    /// Sleeps until the tokens of the sign-outs so far have been found, to be revoked, for
    /// `patience` at most. Not on the worker.
    void AwaitForgetting(std::chrono::milliseconds patience);

    /// The service has rejected `token`: it is not handed out again.
    void OnTokenRejected(std::string const& token);

    /// Ends the worker and a Login that waits; what is asked for is cancelled. Not on the worker.
    void Stop();

private:
    using TokenPromise = moxcore::async::Promise<std::string>;

    /// A renewal under way: of which tokens, at which service, in which session.
    struct Renewal {
        std::string address;
        Tokens old;
        unsigned session;
    };

    /// Those who wait for it, and the turn that this process has for it.
    struct Waiting {
        std::vector<std::shared_ptr<TokenPromise>> promises;
        std::unique_ptr<RenewalTurn> turn;
    };

    /// A Login under way: where, and what calls it off.
    struct Attempt {
        std::string address;
        std::stop_token calledOff;
    };

    // Of Login: these wait, and throw when nothing has come of it.
    [[nodiscard]] Grant Await(moxcore::async::Future<Grant> const& granted, Attempt const& attempt);
    [[nodiscard]] Grant AskForGrant(Attempt const& attempt);
    [[nodiscard]] AuthorizationCode AskInBrowser(Attempt const& attempt);
    [[nodiscard]] quillocommon::Response LoginAs(Attempt const& attempt, unsigned session);

    /// Takes the place of the Login that is under way, and calls that off.
    void Begin(std::stop_source const& attempt);

    // On the worker.
    void HandOut(std::shared_ptr<TokenPromise> const& promise);
    void RenewInTurn(std::string const& address, moxcore::threads::TimePoint patience);
    void Renew(Renewal const& renewal);
    void OnRenewed(Renewal const& renewal, moxcore::async::Future<Grant> const& granted);
    void OnRenewalRefused(Renewal const& renewal, GrantRefused const& refused);
    /// Ends the turn, and returns those who wait.
    [[nodiscard]] std::vector<std::shared_ptr<TokenPromise>> TakeWaiting(
        std::string const& address);
    void Give(std::string const& address, std::string const& token);
    void FailAll(std::string const& address, std::exception_ptr const& exception);
    [[nodiscard]] bool IsUsable(Tokens const& tokens, std::chrono::seconds atLeast) const;

    /// Keeps `tokens` unless the session has been ended since `session`: then they are
    /// revoked at the service.
    [[nodiscard]] bool Keep(std::string const& address, Tokens const& tokens, unsigned session);

    [[nodiscard]] unsigned CurrentSession() const;

    std::string const clientID;
    std::string const redirectURI;
    std::string const tokenPath;
    TokenKeeper store;

    mutable std::mutex mutex;   // held while the store changes, never while a keyring is asked
    unsigned sessionCount = 0;  // guarded by mutex; grows with each Logout

    std::mutex loginMutex;                       // held for no longer than it takes to copy
    std::stop_source login{std::nostopstate};    // guarded by loginMutex; calls the last one off
    std::weak_ptr<BrowserSignIn> browserSignIn;  // guarded by loginMutex; the one that waits

    std::string rejected;  // the worker's: the token rejected last
    std::map<std::string, Waiting>
        waiting;  // the worker's: for the renewal under way, by the service's address

    Worker worker;
};

}  // namespace quilloauth
