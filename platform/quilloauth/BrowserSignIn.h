#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "moxcore/config/Error.h"
#include "quilloauth/LoopbackListener.h"
#include "quilloauth/SignInProgress.h"

namespace quilloauth {

/// What a service gives for a user who has allowed it, and what it is redeemed with. Secret.
struct AuthorizationCode {
    std::string code;
    std::string redirectURI;
    std::string verifier;
};

/// Nobody has allowed the sign-in in the browser: how it has ended, and why.
class NotAllowed : public moxcore::config::ResultException {
public:
    NotAllowed(SignInStage stage, std::string const& why);

    [[nodiscard]] SignInStage Stage() const { return stage; }

private:
    SignInStage stage;
};

/// Asks the user in the system's browser (OAuth 2.0's authorization code with PKCE, and a redirect
/// to a port of this machine, which is open until Run returns). Once.
class BrowserSignIn : public std::enable_shared_from_this<BrowserSignIn> {
public:
    /// For the application `clientID` at the service at `address`. `redirectURI` is the
    /// application's, http://127.0.0.1/... : the browser comes back to its path, on a free port. A
    /// ResultException when that is no such address, a std::system_error when there is no port.
    BrowserSignIn(std::string clientID, std::string address, std::string const& redirectURI);

    /// Opens the browser and waits until it comes back, ten minutes at most. A NotAllowed when
    /// nobody has allowed it, CancelledException after Cancel.
    [[nodiscard]] AuthorizationCode Run();

    /// Has Run end, also one that is called later. Any thread.
    void Cancel();

    /// Opens the browser once more on the same page, while Run waits. Any thread but a main one:
    /// the opener may take its time.
    void OpenAgain();

private:
    struct Cancelled {};
    struct Failed {
        SignInStage stage;
        std::string why;
    };
    struct Allowed {
        std::string code;
    };
    using Outcome = std::variant<Cancelled, Failed, Allowed>;

    /// Ends the wait, unless it has ended: the first outcome counts.
    void End(Outcome newOutcome);
    [[nodiscard]] bool HasEnded();
    void Open();
    [[nodiscard]] ReturnPage OnReturn(std::string const& query);
    [[nodiscard]] std::string PageAddress() const;

    std::string const clientID;
    std::string const address;
    std::string const state;
    std::string const verifier;
    LoopbackListener listener;

    std::mutex mutex;
    std::optional<Outcome> outcome;  // guarded by mutex
};

}  // namespace quilloauth
