#include "quilloauth/AuthManager.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/NoDestructor.h"
#include "quilloauth/AuthSession.h"
#include "quilloauth/KeyringTokenStore.h"
#include "quilloauth/TokenRequests.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/QuilloClient.h"

namespace quilloauth::jwt {
namespace {

using moxcore::async::Future;
using quillocommon::Response;

constexpr std::chrono::seconds kPatienceWithKeyring{2};

std::string TokenPath() {
    using namespace moxcore;
    filesupport::File const file(filesupport::commondirs::UserConfigDir(),
                                 string::AsciiToUTF16("quillo-tokens.json"));
    return string::UTF16toStdString(file.FullPath());
}

/// The desktop's keyring, where there may be one. A host that keeps all its state in a directory of
/// its own keeps the sign-in there, too.
std::unique_ptr<TokenStore> Keyring(std::string const& clientID) {
    if (moxcore::filesupport::commondirs::HasUserRoot()) return nullptr;
    return KeyringTokenStore::Create(clientID);
}

/// The session of this process. Its worker ends with the process.
class Current {
public:
    [[nodiscard]] std::shared_ptr<AuthSession> Get() const {
        std::lock_guard lock(mutex);
        return session;
    }

    void Set(std::shared_ptr<AuthSession> newSession) {
        {
            std::lock_guard lock(mutex);
            session.swap(newSession);
        }
        if (newSession) newSession->Stop();
    }

private:
    mutable std::mutex mutex;
    std::shared_ptr<AuthSession> session;  // guarded by mutex
};

/// Never destroyed: tokens may still be asked for while the process ends.
Current& TheCurrent() {
    struct StopAtExit {
        Current& current;
        ~StopAtExit() { current.Set(nullptr); }
    };
    static moxcore::utility::NoDestructor<Current> current;
    // What is made first ends last: who is handed a token on the worker may send and read at once.
    quillosdk::PrepareToRead();
    PrepareToRevoke();  // the end of the worker may still find tokens of a sign-out
    static StopAtExit const stopAtExit{*current};
    return *current;
}

/// The session's listeners.
class Listeners {
public:
    void Add(std::shared_ptr<SessionListener const> const& listener) {
        std::lock_guard lock(mutex);
        std::erase_if(listeners, [](auto const& each) { return each.expired(); });
        listeners.push_back(listener);
    }

    void Tell(bool exists) const {
        for (auto const& weak : All())
            if (auto const listener = weak.lock()) (*listener)(exists);
    }

private:
    [[nodiscard]] std::vector<std::weak_ptr<SessionListener const>> All() const {
        std::lock_guard lock(mutex);
        return listeners;
    }

    mutable std::mutex mutex;
    std::vector<std::weak_ptr<SessionListener const>> listeners;  // guarded by mutex
};

/// Never destroyed: a sign-in may still end while the process does.
Listeners& TheListeners() {
    static moxcore::utility::NoDestructor<Listeners> listeners;
    return *listeners;
}

}  // namespace

void InitializeAuthManager(std::string const& clientID, std::string const& redirectURI,
                           quillosdk::EnvironmentType /*environment*/,
                           std::string const& /*scope*/) {
    try {
        TheCurrent().Set(
            std::make_shared<AuthSession>(clientID, redirectURI, TokenPath(), Keyring(clientID)));
    } catch (moxcore::config::ResultException const& exception) {
        TheCurrent().Set(nullptr);
        quillocommon::ReportFailure({quillocommon::Step::SignIn, exception.GetResult(), 0,
                                     DescribeException(SignInTask(), std::current_exception())});
    }
    quillosdk::QuilloClient::SetTokenRejectedHandler([](std::string const& token) {
        if (auto const session = TheCurrent().Get()) session->OnTokenRejected(token);
    });
}

Future<std::string> GetAccessToken() {
    if (auto const session = TheCurrent().Get()) return session->GetAccessToken();
    return Future<std::string>::CreateFailed(kNotSignedIn, "the sign-in has not been set up",
                                             nullptr);
}

Response Login(std::string const& /*userID*/) {
    auto const session = TheCurrent().Get();
    auto const response = session ? session->Login() : Response(kNotSignedIn);
    if (response.GetResult() == kSessionExists) TheListeners().Tell(true);
    return response;
}

void CancelLogin() {
    if (auto const session = TheCurrent().Get()) session->CancelLogin();
}

void ReopenBrowser() {
    if (auto const session = TheCurrent().Get()) session->ReopenBrowser();
}

Response Logout() {
    auto const session = TheCurrent().Get();
    auto const response = session ? session->Logout() : Response();
    if (response.IsSuccess()) TheListeners().Tell(false);
    return response;
}

std::shared_ptr<SessionListener const> ListenToSession(SessionListener listener) {
    auto kept = std::make_shared<SessionListener const>(std::move(listener));
    TheListeners().Add(kept);
    return kept;
}

void AwaitSignOuts() {
    if (auto const session = TheCurrent().Get()) session->AwaitForgetting(kPatienceWithKeyring);
    AwaitRevocations();
}

}  // namespace quilloauth::jwt
