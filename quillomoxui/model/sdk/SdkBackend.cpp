#include "quillomoxui/model/sdk/SdkBackend.h"

#include <mutex>
#include <optional>
#include <utility>

#include "moxcore/async/Future.h"
#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/Keychain.h"
#include "moxcore/utility/NoDestructor.h"
#include "quilloauth/AuthManager.h"
#include "quillomoxui/model/sdk/ChildQueues.h"
#include "quillomoxui/model/sdk/SdkNodes.h"
#include "quillomoxui/model/sdk/SignInAttempt.h"
#include "quillomoxui/model/sdk/WeakSingleton.h"
#include "quillosdk/QuilloClient.h"

namespace quillomoxui::model {

using moxcore::async::Future;
using moxcore::config::ExtractResultFromException;
using moxcore::string::UTF16toStdString;
using quilloauth::SignInStage;

namespace {

void OnSession(bool exists);

struct SharedState {
    std::mutex mutex;  // guards all below; never held across a callback
    std::string sClientID;
    std::string sRedirectURI;
    std::shared_ptr<quillosdk::QuilloClient> sQuilloClient;
    std::shared_ptr<std::function<void(bool)> const> sOnClientLoggedInChanged;
    unsigned signOuts = 0;        // a token that was asked for before the last one is late
    bool followsSession = false;  // since FollowSession
    std::shared_ptr<quilloauth::jwt::SessionListener const> sessionListener =
        quilloauth::jwt::ListenToSession(OnSession);
    std::shared_ptr<SignInAttempt> attempt;  // the last one
};

/// Never destroyed: answers may still arrive while the process ends.
SharedState& State() {
    static moxcore::utility::NoDestructor<SharedState> state;
    return *state;
}

unsigned CountSignOuts() {
    std::lock_guard lock(State().mutex);
    return State().signOuts;
}

/// The callback as it is now, unless there was a sign-out after the first `signOuts`; it may be
/// called once the lock is released.
std::shared_ptr<std::function<void(bool)> const> LoggedInCallback(unsigned signOuts) {
    std::lock_guard lock(State().mutex);
    return State().signOuts == signOuts ? State().sOnClientLoggedInChanged : nullptr;
}

std::shared_ptr<SignInAttempt> LastAttempt() {
    std::lock_guard lock(State().mutex);
    return State().attempt;
}

/// Has the client take a fresh token. What it cannot get, the client does without: its request then
/// keeps the service's refusal.
void RefreshToken() {
    auto const token = quilloauth::jwt::GetAccessToken();
    static_cast<void>(token.Then(token.GetExecutor(), [](Future<std::string> const& fresh) {
        if (ExtractResultFromException(fresh.GetException()) < 0) return;
        if (auto const client = SdkBackend::GetClient())
            static_cast<void>(client->UpdateAccessToken(fresh.Get()));
    }));
}

/// Makes a client with the token, which was asked for after `signOuts`; whether it takes it. None
/// when somebody has signed out since.
std::optional<bool> MakeClient(std::string const& token, unsigned signOuts) {
    std::string clientID;
    {
        std::lock_guard lock(State().mutex);
        if (State().signOuts != signOuts) return std::nullopt;
        clientID = State().sClientID;
    }
    quillosdk::QuilloClient::Initialize(quillosdk::QuilloConfig(clientID),
                                        [](std::string const&) { RefreshToken(); });
    auto client = quillosdk::QuilloClient::Get();
    auto replaced = client;  // swapped with the client before, which thus dies after the lock
    {
        std::lock_guard lock(State().mutex);
        if (State().signOuts != signOuts) return std::nullopt;
        State().sQuilloClient.swap(replaced);
    }
    return client->UpdateAccessToken(token).IsSuccess();
}

/// Gives the client the token, if there is one; false when there is none.
bool CheckToken(SignInAttempt& attempt, Future<std::string> const& token, unsigned signOuts) {
    if (ExtractResultFromException(token.GetException()) < 0) return false;
    auto const accepted = MakeClient(token.Get(), signOuts);
    if (!accepted) return true;
    auto const callback = LoggedInCallback(signOuts);
    if (callback && *callback) (*callback)(*accepted);
    attempt.End(*accepted ? SignInStage::None : SignInStage::Refused);
    return true;
}

/// The second half of a sign-in: with the token at hand, or through an interactive login.
void CheckTokenOrLogin(std::shared_ptr<SignInAttempt> const& attempt,
                       Future<std::string> const& token, unsigned signOuts) {
    if (attempt->IsGivenUp() || CheckToken(*attempt, token, signOuts) ||
        CountSignOuts() != signOuts)
        return;
    auto const response =
        quilloauth::jwt::Login(UTF16toStdString(moxcore::utility::Keychain::GetNexoUserID()));
    if (response.IsSuccess() || response.GetResult() != quilloauth::jwt::kSessionExists)
        return attempt->End(SignInStage::Refused);  // unless its end is known already
    static_cast<void>(quilloauth::jwt::GetAccessToken().Then(
        [attempt, signOuts](Future<std::string> const& granted) {
            if (attempt->IsGivenUp()) return;
            if (!CheckToken(*attempt, granted, signOuts)) attempt->End(SignInStage::Refused);
        }));
}

/// Replaces the last attempt by a new one, which receives the session's progress.
std::shared_ptr<SignInAttempt> BeginAttempt(quilloauth::SignInListener const& onProgress) {
    auto const attempt = std::make_shared<SignInAttempt>(onProgress);
    auto earlier = attempt;
    {
        std::lock_guard lock(State().mutex);
        State().attempt.swap(earlier);
    }
    if (earlier) earlier->End(SignInStage::None);
    attempt->Tell({SignInStage::Asking, moxcore::threads::Now()});
    quilloauth::SetSignInListener([](quilloauth::SignInProgress const& progress) {
        if (auto const last = LastAttempt()) last->Tell(progress);
    });
    return attempt;
}

/// Makes a client of the session that is kept, if there is one.
void TakeSession() {
    auto const signOuts = CountSignOuts();
    static_cast<void>(
        quilloauth::jwt::GetAccessToken().Then([signOuts](Future<std::string> const& token) {
            if (token.GetException()) return;
            auto const accepted = MakeClient(token.Get(), signOuts);
            if (auto const last = LastAttempt(); last && accepted)
                last->End(*accepted ? SignInStage::None : SignInStage::Refused);
        }));
}

/// Somebody has signed in or out, be it the other backend.
void OnSession(bool exists) {
    std::shared_ptr<std::function<void(bool)> const> callback;
    std::shared_ptr<SignInAttempt> overtaken;
    {
        std::lock_guard lock(State().mutex);
        if (exists && !State().followsSession) return;
        if (!exists) {
            ++State().signOuts;
            State().followsSession = false;
            callback = State().sOnClientLoggedInChanged;
            overtaken = State().attempt;
        }
    }
    if (exists) return TakeSession();
    if (overtaken) overtaken->End(SignInStage::None);
    if (callback && *callback) (*callback)(false);
    std::shared_ptr<quillosdk::QuilloClient> released;  // dies after the lock
    std::lock_guard lock(State().mutex);
    State().sQuilloClient.swap(released);
}

}  // namespace

void SdkBackend::SetClientID(std::string const& clientID) {
    std::lock_guard lock(State().mutex);
    State().sClientID = clientID;
}

void SdkBackend::SetRedirectURI(std::string const& redirectURI) {
    std::lock_guard lock(State().mutex);
    State().sRedirectURI = redirectURI;
}

std::shared_ptr<quillosdk::QuilloClient> SdkBackend::GetClient() {
    std::lock_guard lock(State().mutex);
    return State().sQuilloClient;
}

SdkBackend const& SdkBackend::Instance() {
    static constinit SdkBackend const instance{};
    return instance;
}

void SdkBackend::SignIn(LoggedInCallback const& onLoggedInChanged,
                        quilloauth::SignInListener const& onProgress) const {
    auto callback = std::make_shared<LoggedInCallback const>(onLoggedInChanged);
    unsigned signOuts = 0;
    {
        std::lock_guard lock(State().mutex);
        State().sOnClientLoggedInChanged.swap(callback);
        State().followsSession = false;
        signOuts = State().signOuts;
    }
    auto const attempt = BeginAttempt(onProgress);
    // A new sign-in replaces the page of the one before.
    quilloauth::jwt::CancelLogin();
    // On the sign-in's own thread even when the token is there by now: the login may wait for a
    // person.
    auto const token = quilloauth::jwt::GetAccessToken();
    static_cast<void>(
        token.Then(token.GetExecutor(), [attempt, signOuts](Future<std::string> const& kept) {
            CheckTokenOrLogin(attempt, kept, signOuts);
        }));
}

void SdkBackend::FollowSession(quilloauth::SignInListener const& onProgress) {
    BeginAttempt(onProgress);
    {
        std::lock_guard lock(State().mutex);
        State().followsSession = true;
    }
    TakeSession();
}

void SdkBackend::CancelSignIn() const {
    if (auto const last = LastAttempt()) last->GiveUp();
    quilloauth::jwt::CancelLogin();
}

void SdkBackend::SignOut() const {
    static_cast<void>(quilloauth::jwt::Logout());  // OnSession does the rest
}

void SdkBackend::GetCurrentUser(UserCallback const& callback) const {
    auto const client = GetClient();
    if (!client) return;
    using Response = Future<std::shared_ptr<quillosdk::GetCurrentUserResponse>>;
    static_cast<void>(
        client->GetAccounts().GetCurrentUser({}).Then([callback](Response const& answer) {
            if (ExtractResultFromException(answer.GetException()) < 0) return;
            auto const response = answer.Get();
            if (!response->IsSuccessful()) return;
            callback(std::make_shared<QuilloCppSdkIntegration::QuilloSdkUser>(
                response->GetUserObject()));
        }));
}

void SdkBackend::FetchFirst(NodeVector<QuilloNode> const& folders) const {
    using Sdk = QuilloCppSdkIntegration;
    Sdk::WeakSingleton<Sdk::FetchFolderChildrenQueue>::Instance()->Prefer(folders);
}

}  // namespace quillomoxui::model
