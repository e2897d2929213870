#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

#include <mutex>
#include <utility>

#include "moxcore/async/Future.h"
#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/Keychain.h"
#include "quilloauth/AuthManager.h"
#include "quillomoxui/model/sdk/ChildQueues.h"
#include "quillomoxui/model/sdk/SdkNodes.h"
#include "quillomoxui/model/sdk/WeakSingleton.h"
#include "quillosdk/QuilloClient.h"

namespace quillomoxui {

using moxcore::async::Future;
using moxcore::config::ExtractResultFromException;
using moxcore::string::UTF16toStdString;

void InitQuilloCppSdk(UTF16String const& clientID, UTF16String const& redirectURI) {
    if (clientID.empty() || redirectURI.empty()) return;
    std::string const client = UTF16toStdString(clientID);
    std::string const redirect = UTF16toStdString(redirectURI);
    model::QuilloCppSdkIntegration::SetClientID(client);
    model::QuilloCppSdkIntegration::SetRedirectURI(redirect);
    quilloauth::jwt::InitializeAuthManager(client, redirect, quillosdk::EnvironmentType::Production,
                                           {});
}

namespace model {

namespace {

struct SharedState {
    std::mutex mutex;  // guards all below; never held across a callback
    std::string sClientID;
    std::string sRedirectURI;
    std::shared_ptr<quillosdk::QuilloClient> sQuilloClient;
    std::shared_ptr<std::function<void(bool)> const> sOnClientLoggedInChanged;
};

/// Never destroyed: answers may still arrive while the process ends.
SharedState& State() {
    static SharedState& state = *new SharedState;
    return state;
}

/// The callback as it is now; it may be called once the lock is released.
std::shared_ptr<std::function<void(bool)> const> LoggedInCallback() {
    std::lock_guard lock(State().mutex);
    return State().sOnClientLoggedInChanged;
}

/// Has the client take a fresh token. What it cannot get, the client does without: its request then
/// keeps the service's refusal.
void RefreshToken() {
    auto const token = quilloauth::jwt::GetAccessToken();
    static_cast<void>(token.Then(token.GetExecutor(), [](Future<std::string> const& fresh) {
        if (ExtractResultFromException(fresh.GetException()) < 0) return;
        if (auto const client = QuilloCppSdkIntegration::GetQuilloClient())
            static_cast<void>(client->UpdateAccessToken(fresh.Get()));
    }));
}

/// Gives the client the token, if there is one; false when there is none.
bool CheckToken(Future<std::string> const& token) {
    if (ExtractResultFromException(token.GetException()) < 0) return false;
    std::string const text = token.Get();

    std::string clientID;
    {
        std::lock_guard lock(State().mutex);
        clientID = State().sClientID;
    }
    quillosdk::QuilloClient::Initialize(quillosdk::QuilloConfig(clientID),
                                        [](std::string const&) { RefreshToken(); });
    auto client = quillosdk::QuilloClient::Get();
    auto replaced = client;  // swapped with the client before, which thus dies after the lock
    {
        std::lock_guard lock(State().mutex);
        State().sQuilloClient.swap(replaced);
    }
    bool const accepted = client->UpdateAccessToken(text).IsSuccess();
    auto const callback = LoggedInCallback();
    if (callback && *callback) (*callback)(accepted);
    return true;
}

/// The second half of a sign-in: with the token at hand, or through an interactive login.
void CheckTokenOrLogin(Future<std::string> const& token) {
    if (CheckToken(token)) return;
    auto const response =
        quilloauth::jwt::Login(UTF16toStdString(moxcore::utility::Keychain::GetNexoUserID()));
    if (response.IsSuccess() || response.GetResult() != quilloauth::jwt::kSessionExists) return;
    static_cast<void>(quilloauth::jwt::GetAccessToken().Then(CheckToken));
}

}  // namespace

void QuilloCppSdkIntegration::SetClientID(std::string const& clientID) {
    std::lock_guard lock(State().mutex);
    State().sClientID = clientID;
}

void QuilloCppSdkIntegration::SetRedirectURI(std::string const& redirectURI) {
    std::lock_guard lock(State().mutex);
    State().sRedirectURI = redirectURI;
}

std::shared_ptr<quillosdk::QuilloClient> QuilloCppSdkIntegration::GetQuilloClient() {
    std::lock_guard lock(State().mutex);
    return State().sQuilloClient;
}

void QuilloCppSdkIntegration::SignIn(std::function<void(bool)> const& onLoggedInChanged) {
    auto callback = std::make_shared<std::function<void(bool)> const>(onLoggedInChanged);
    {
        std::lock_guard lock(State().mutex);
        State().sOnClientLoggedInChanged.swap(callback);
    }
    // Whoever signs in again has lost the page that the one before has opened.
    quilloauth::jwt::CancelLogin();
    // On the sign-in's own thread even when the token is there by now: the login may wait for a
    // person.
    auto const token = quilloauth::jwt::GetAccessToken();
    static_cast<void>(token.Then(token.GetExecutor(), CheckTokenOrLogin));
}

void QuilloCppSdkIntegration::SignOut() {
    if (!quilloauth::jwt::Logout().IsSuccess()) return;
    auto const callback = LoggedInCallback();
    if (!callback || !*callback) return;
    (*callback)(false);
    std::shared_ptr<quillosdk::QuilloClient> released;  // dies after the lock
    std::lock_guard lock(State().mutex);
    State().sQuilloClient.swap(released);
}

void QuilloCppSdkIntegration::GetCurrentUser(
    std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback) {
    auto const client = GetQuilloClient();
    if (!client) return;
    using Response = Future<std::shared_ptr<quillosdk::GetCurrentUserResponse>>;
    static_cast<void>(
        client->GetAccounts().GetCurrentUser({}).Then([callback](Response const& answer) {
            if (ExtractResultFromException(answer.GetException()) < 0) return;
            auto const response = answer.Get();
            if (!response->IsSuccessful()) return;
            callback(std::make_shared<QuilloSdkUser>(response->GetUserObject()));
        }));
}

void QuilloCppSdkIntegration::FetchFirst(NodeVector<QuilloNode> const& folders) {
    WeakSingleton<FetchFolderChildrenQueue>::Instance()->Prefer(folders);
}

}  // namespace model
}  // namespace quillomoxui
