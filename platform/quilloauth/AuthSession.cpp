#include "quilloauth/AuthSession.h"

#include <exception>
#include <utility>

#include "moxcore/async/Future.h"
#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/LocalUserSecret.h"
#include "quilloauth/SignInProgress.h"
#include "quillocommon/Failures.h"
#include "quillocommon/ServiceAddress.h"
#include "quillosdk/RetryPolicy.h"

namespace quilloauth {
namespace {

using moxcore::async::Future;
using moxcore::config::ResultException;
using quillocommon::Response;

/// A token with less left is renewed, so that a request does not run out of it on its way.
constexpr std::chrono::seconds kRenewBefore{60};

/// How often it is looked whether another process has renewed the tokens, and after which time it
/// no longer matters what that one does: longer than its request may take.
constexpr std::uint32_t kTurnDelay = 100;
constexpr std::chrono::seconds kTurnPatience{90};

constexpr quillocommon::Step kStep = quillocommon::Step::SignIn;

/// Runs functions on a session's worker, as long as there is one.
class WorkerExecutor final : public moxcore::threads::AsyncExecutor {
public:
    WorkerExecutor(std::weak_ptr<AuthSession> session, Worker& worker)
        : session(std::move(session)), worker(worker) {}

    void CallAsync(std::function<void()> function) override {
        if (auto const alive = session.lock()) worker.Post(std::move(function));
    }

    void CallAsyncDelayed(std::function<void()> function, std::uint32_t delay) override {
        moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(
            [session = session, &worker = worker, function = std::move(function)] {
                if (auto const alive = session.lock()) worker.Post(function);
            },
            delay);
    }

private:
    std::weak_ptr<AuthSession> session;
    Worker& worker;  // the session's
};

std::exception_ptr NotSignedIn(std::string const& why) {
    return std::make_exception_ptr(ResultException(jwt::kNotSignedIn, why));
}

void EndSession(std::string const& address, Tokens const& tokens) {
    RequestRevocation(address, tokens.refresh);
}

}  // namespace

AuthSession::AuthSession(std::string clientID, std::string redirectURI, std::string tokenPath,
                         std::unique_ptr<TokenStore> keyring)
    : clientID(std::move(clientID)),
      redirectURI(std::move(redirectURI)),
      tokenPath(std::move(tokenPath)),
      store(this->tokenPath, std::move(keyring), worker, EndSession) {}

AuthSession::~AuthSession() {
    Stop();
}

void AuthSession::Stop() {
    worker.Stop();
}

void AuthSession::AwaitForgetting(std::chrono::milliseconds patience) {
    store.AwaitForgetting(patience);
}

Future<std::string> AuthSession::GetAccessToken() {
    auto const promise =
        std::make_shared<TokenPromise>(std::make_shared<WorkerExecutor>(weak_from_this(), worker));
    worker.Post([this, promise] { HandOut(promise); });
    return promise->GetFuture();
}

void AuthSession::OnTokenRejected(std::string const& token) {
    worker.Post([this, token] { rejected = token; });
}

void AuthSession::HandOut(std::shared_ptr<TokenPromise> const& promise) {
    auto const address = quillocommon::GetServiceAddress();
    auto const tokens = store.Load(address);
    if (!tokens) {
        promise->SetException(NotSignedIn("nobody is signed in"));
    } else if (IsUsable(*tokens, kRenewBefore)) {
        promise->SetValue(tokens->access);
    } else {
        auto& others = waiting[address].promises;
        others.push_back(promise);
        if (others.size() == 1) RenewInTurn(address, moxcore::threads::Now() + kTurnPatience);
    }
}

void AuthSession::RenewInTurn(std::string const& address, moxcore::threads::TimePoint patience) {
    auto turn = RenewalTurn::TryTake(tokenPath);
    if (!turn && moxcore::threads::Now() < patience) {
        WorkerExecutor(weak_from_this(), worker)
            .CallAsyncDelayed([this, address, patience] { RenewInTurn(address, patience); },
                              kTurnDelay);
        return;
    }
    auto const tokens = store.Load(address);  // as the process that had the turn has left them
    if (!tokens) return FailAll(address, NotSignedIn("the session has been ended meanwhile"));
    if (IsUsable(*tokens, kRenewBefore)) return Give(address, tokens->access);
    waiting[address].turn = std::move(turn);
    Renew({address, *tokens, CurrentSession()});
}

void AuthSession::Renew(Renewal const& renewal) {
    RequestRefresh(renewal.address, clientID, renewal.old.refresh)
        .OnComplete([weak = weak_from_this(), renewal](Future<Grant> const& granted) {
            auto const self = weak.lock();
            if (!self) return;
            self->worker.Post(
                [session = self.get(), renewal, granted] { session->OnRenewed(renewal, granted); });
        });
}

void AuthSession::OnRenewed(Renewal const& renewal, Future<Grant> const& granted) {
    if (auto const exception = granted.GetException()) {
        if (IsUsable(renewal.old, std::chrono::seconds(0)))
            return Give(renewal.address, renewal.old.access);
        ReportException(SignInTask(), exception);
        return FailAll(renewal.address, exception);
    }
    auto const grant = granted.Get();
    if (auto const* refused = std::get_if<GrantRefused>(&grant))
        return OnRenewalRefused(renewal, *refused);
    auto const& tokens = std::get<Tokens>(grant);
    if (!Keep(renewal.address, tokens, renewal.session))
        return FailAll(renewal.address, NotSignedIn("the session has been ended meanwhile"));
    Give(renewal.address, tokens.access);
}

void AuthSession::OnRenewalRefused(Renewal const& renewal, GrantRefused const& refused) {
    bool const isOver = refused.code == "invalid_grant";
    if (isOver) {
        // Another process of the user may have renewed the tokens in the meantime.
        auto const current = store.Load(renewal.address);
        if (current && current->refresh != renewal.old.refresh) {
            if (IsUsable(*current, kRenewBefore)) return Give(renewal.address, current->access);
            return Renew({renewal.address, *current, CurrentSession()});
        }
        std::lock_guard lock(mutex);
        if (sessionCount == renewal.session)
            static_cast<void>(store.Forget(renewal.address, false));
    } else if (IsUsable(renewal.old, std::chrono::seconds(0))) {
        return Give(renewal.address, renewal.old.access);
    }
    auto const result = isOver ? jwt::kSessionOver : std::int32_t{quillosdk::kRefused};
    quillocommon::ReportFailure({kStep, result, refused.httpStatus, refused.message});
    FailAll(renewal.address, std::make_exception_ptr(ResultException(result, refused.message)));
}

std::vector<std::shared_ptr<AuthSession::TokenPromise>> AuthSession::TakeWaiting(
    std::string const& address) {
    auto taken = std::exchange(waiting[address], {});
    // Ends behind the new tokens' way into the keyring, where the next one looks for them.
    if (taken.turn)
        worker.PostLasting([turn = std::shared_ptr<RenewalTurn>(std::move(taken.turn))] {});
    return std::move(taken.promises);
}

void AuthSession::Give(std::string const& address, std::string const& token) {
    for (auto const& promise : TakeWaiting(address))
        promise->SetValue(token);
}

void AuthSession::FailAll(std::string const& address, std::exception_ptr const& exception) {
    for (auto const& promise : TakeWaiting(address))
        promise->SetException(exception);
}

bool AuthSession::IsUsable(Tokens const& tokens, std::chrono::seconds atLeast) const {
    return tokens.access != rejected && tokens.expiry > moxcore::threads::Now() + atLeast;
}

bool AuthSession::Keep(std::string const& address, Tokens const& tokens, unsigned session) {
    bool isOver = false;
    std::optional<std::string> whyNotKept;
    {
        std::lock_guard lock(mutex);
        isOver = sessionCount != session;
        if (!isOver) whyNotKept = store.Save(address, tokens);
    }
    if (isOver) {
        RequestRevocation(address, tokens.refresh);
        return false;
    }
    if (whyNotKept) TokenKeeper::ReportNotKept(*whyNotKept);
    return true;
}

unsigned AuthSession::CurrentSession() const {
    std::lock_guard lock(mutex);
    return sessionCount;
}

Response AuthSession::Login() {
    std::stop_source attempt;
    auto const session = CurrentSession();
    Begin(attempt);
    if (CurrentSession() != session) attempt.request_stop();  // the sign-out came in between
    std::stop_callback const onStop(worker.GetStopToken(), [&attempt] { attempt.request_stop(); });
    return LoginAs({quillocommon::GetServiceAddress(), attempt.get_token()}, session);
}

Response AuthSession::LoginAs(Attempt const& attempt, unsigned session) {
    auto const fail = [](SignInStage stage) {
        TellSignIn(stage);
        return Response(jwt::kNotSignedIn);
    };
    try {
        auto const grant = AskForGrant(attempt);
        if (auto const* tokens = std::get_if<Tokens>(&grant))
            return Response(Keep(attempt.address, *tokens, session) ? jwt::kSessionExists
                                                                    : jwt::kNotSignedIn);
        auto const& refused = std::get<GrantRefused>(grant);
        quillocommon::ReportFailure(
            {kStep, jwt::kNotSignedIn, refused.httpStatus, refused.message});
        return fail(quillosdk::RetryPolicy::IsTransient(refused.httpStatus)
                        ? SignInStage::Unavailable
                        : SignInStage::Refused);
    } catch (moxcore::async::CancelledException const&) {
        return Response(jwt::kNotSignedIn);  // cancelled by the caller: nothing to report
    } catch (NotAllowed const& ended) {
        ReportException(SignInTask(), std::current_exception());
        return fail(ended.Stage());
    } catch (...) {
        auto const exception = std::current_exception();
        ReportException(SignInTask(), exception);
        auto const result = moxcore::config::ExtractResultFromException(exception);
        TellSignIn(quillosdk::RetryPolicy::IsTransientResult(result) ? SignInStage::Unavailable
                                                                     : SignInStage::Refused);
        return Response(result < 0 ? result : jwt::kNotSignedIn);
    }
}

Grant AuthSession::AskForGrant(Attempt const& attempt) {
    auto secrets = FindLocalUserSecrets(attempt.address);
    if (secrets.empty()) secrets.emplace_back();  // a service may trust without one
    for (auto const& secret : secrets) {
        auto const grant = Await(
            RequestLocalUserGrant(attempt.address, clientID, secret, attempt.calledOff), attempt);
        auto const* refused = std::get_if<GrantRefused>(&grant);
        bool const wantsBrowser = refused && (refused->code == "unauthorized_client" ||
                                              refused->code == "unsupported_grant_type");
        if (!wantsBrowser) return grant;
    }
    auto const code = AskInBrowser(attempt);
    TellSignIn(SignInStage::Asking);
    return Await(RequestCodeGrant(attempt.address, clientID, code, attempt.calledOff), attempt);
}

Grant AuthSession::Await(Future<Grant> const& granted, Attempt const& attempt) {
    if (Worker::WaitFor(granted, attempt.calledOff)) return granted.Get();
    // Nobody is to have the tokens that may still come.
    granted.OnComplete([address = attempt.address](Future<Grant> const& late) {
        if (late.GetException()) return;
        if (auto const* tokens = std::get_if<Tokens>(&late.Peek())) EndSession(address, *tokens);
    });
    throw moxcore::async::CancelledException();
}

AuthorizationCode AuthSession::AskInBrowser(Attempt const& attempt) {
    auto const signIn = std::make_shared<BrowserSignIn>(clientID, attempt.address, redirectURI);
    std::stop_callback const onCalledOff(attempt.calledOff, [&signIn] { signIn->Cancel(); });
    {
        std::lock_guard lock(loginMutex);
        browserSignIn = signIn;
    }
    if (!attempt.calledOff.stop_requested()) TellSignIn(SignInStage::InBrowser);
    return signIn->Run();
}

void AuthSession::Begin(std::stop_source const& attempt) {
    auto earlier = attempt;
    {
        std::lock_guard lock(loginMutex);
        login.swap(earlier);
    }
    earlier.request_stop();
}

void AuthSession::CancelLogin() {
    Begin(std::stop_source(std::nostopstate));
}

void AuthSession::ReopenBrowser() {
    std::shared_ptr<BrowserSignIn> waiting;
    {
        std::lock_guard lock(loginMutex);
        waiting = browserSignIn.lock();
    }
    if (!waiting) return;
    moxcore::threads::GetIOBoundExecutor()->CallAsync([waiting] { waiting->OpenAgain(); });
}

Response AuthSession::Logout() {
    auto const address = quillocommon::GetServiceAddress();
    TokenKeeper::Forgotten forgotten;
    {
        std::lock_guard lock(mutex);
        ++sessionCount;
        forgotten = store.Forget(address, true);
    }
    CancelLogin();  // one that is not there yet finds out by the count
    if (forgotten.tokens) EndSession(address, *forgotten.tokens);
    if (forgotten.isKeptFromNextStart) return {};
    quillocommon::ReportFailure({kStep, moxcore::config::kUnknownFailure, 0,
                                 "Could not sign out: the file that keeps the sign-in cannot be "
                                 "written; look at the user's configuration directory."});
    return Response(moxcore::config::kUnknownFailure);
}

}  // namespace quilloauth
