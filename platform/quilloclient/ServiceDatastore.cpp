#include "quilloclient/ServiceDatastore.h"

#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/messaging/Station.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/Keychain.h"
#include "quilloclient/ChangeNotice.h"
#include "quilloclient/Entries.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/FailureText.h"

namespace quillo {
namespace {

using moxcore::async::Future;
using moxcore::config::ResultException;
using quillosdk::Answer;

/// The application's name in requests.
constexpr char kClientID[] = "quilloclient";

// Without events, so many lists are read again so often: few enough to leave most of what the
// service allows for those who wait.
constexpr std::uint32_t kPollMilliseconds = 10'000;
constexpr std::size_t kListsPerPoll = 4;

constexpr int kUnauthorized = 401;

std::exception_ptr NotSignedIn() {
    return std::make_exception_ptr(
        ResultException(quilloauth::jwt::kNotSignedIn, "nobody is signed in"));
}

/// The token there is, or the one of a login that waits for a person if need be. On the sign-in's
/// own thread.
Future<std::string> TokenOrLogin(Future<std::string> const& token) {
    if (!token.GetException()) return token;
    auto const user =
        moxcore::string::UTF16toStdString(moxcore::utility::Keychain::GetNexoUserID());
    auto const response = quilloauth::jwt::Login(user);
    if (response.GetResult() == quilloauth::jwt::kSessionExists)
        return quilloauth::jwt::GetAccessToken();
    return token;
}

/// A session that gets itself a fresh token when the service rejects the one it has.
std::shared_ptr<quillosdk::Session> MakeSession() {
    auto const self = std::make_shared<std::weak_ptr<quillosdk::Session>>();
    auto session = std::make_shared<quillosdk::Session>(kClientID, [self](std::string const&) {
        static_cast<void>(
            quilloauth::jwt::GetAccessToken().Then([self](Future<std::string> const& fresh) {
                auto const alive = self->lock();
                if (alive && !fresh.GetException())
                    static_cast<void>(alive->UpdateAccessToken(fresh.Get()));
            }));
    });
    *self = session;
    return session;
}

/// Fails `promise` with what it is called with.
template <class T>
std::function<void(std::exception_ptr const&)> FailureOf(
    std::shared_ptr<RefPromise<T>> const& promise) {
    return [promise](std::exception_ptr const& exception) { promise->SetException(exception); };
}

char const* MessageTypeOf(ListKind kind) {
    switch (kind) {
        case ListKind::Accounts:
            return QuilloDatastore::AccountListChanged::kTypeName;
        case ListKind::Teams:
            return QuilloDatastore::TeamListChanged::kTypeName;
        case ListKind::Projects:
            return QuilloDatastore::ProjectListChanged::kTypeName;
        case ListKind::Assets:
            break;
    }
    return QuilloDatastore::AssetListChanged::kTypeName;
}

}  // namespace

std::shared_ptr<ServiceDatastore> ServiceDatastore::Create() {
    std::shared_ptr<ServiceDatastore> made(new ServiceDatastore);
    made->sessionListener =
        quilloauth::jwt::ListenToSession([weak = made->weak_from_this()](bool exists) {
            auto const self = weak.lock();
            if (self && !exists) self->SignOutOAuth2();
        });
    return made;
}

ServiceDatastore::ServiceDatastore()
    : station("quillo::QuilloDatastore " + Guid::CreateUnique().AsStdString()) {}

ServiceDatastore::~ServiceDatastore() = default;

/// Runs `work` on the executor unless this object has gone by then.
void ServiceDatastore::Post(std::function<void(ServiceDatastore&)> work) {
    executor->CallAsync([weak = weak_from_this(), work = std::move(work)] {
        if (auto const self = weak.lock()) work(*self);
    });
}

void ServiceDatastore::SignIn() {
    Post([](ServiceDatastore& self) { self.BeginSignInAnew(); });
}

/// Who signs in again has lost the page that a sign-in under way has opened. What waits for that
/// one waits for the new one.
void ServiceDatastore::BeginSignInAnew() {
    if (state == State::SigningIn) {
        quilloauth::jwt::CancelLogin();
        state = State::SignedOut;
    }
    BeginSignIn();
}

void ServiceDatastore::BeginSignIn() {
    if (state == State::SigningIn) return;
    state = State::SigningIn;
    auto const onToken = [weak = weak_from_this(), signIn = ++signIns](Token const& token) {
        if (auto const self = weak.lock())
            self->Post([signIn, token](ServiceDatastore& there) { there.OnToken(signIn, token); });
    };
    auto const token = quilloauth::jwt::GetAccessToken();
    static_cast<void>(token.Then(token.GetExecutor(), [onToken](Token const& kept) {
        static_cast<void>(TokenOrLogin(kept).Then(onToken));
    }));
}

void ServiceDatastore::OnToken(unsigned signIn, Token const& token) {
    if (signIn != signIns) return;  // signed out meanwhile
    if (auto const exception = token.GetException()) return OnNoSession(exception);
    OpenSession(token.Get());
}

void ServiceDatastore::OpenSession(std::string const& token) {
    state = State::SignedIn;
    if (!session) {
        session = MakeSession();
        cache = std::make_shared<ListCache>(
            executor, ListCache::Handlers{[session = session](std::string const& path) {
                                              return session->Send({.method = "GET", .url = path});
                                          },
                                          [weak = weak_from_this()](Key const& key) {
                                              if (auto const self = weak.lock())
                                                  self->Announce(key);
                                          }});
    }
    static_cast<void>(session->UpdateAccessToken(token));
    if (!isLive) StartStream();  // one that waits after a refusal need not wait any longer
    for (auto const& each : std::exchange(waiting, {}))
        each.work();
}

void ServiceDatastore::StartStream() {
    auto const weak = weak_from_this();
    hasFollowed = false;
    stream =
        std::make_shared<EventStream>(executor, session,
                                      EventStream::Handlers{[weak](Event const& event) {
                                                                if (auto const self = weak.lock())
                                                                    self->OnEvent(event);
                                                            },
                                                            [weak] {
                                                                if (auto const self = weak.lock())
                                                                    self->OnCaughtUp();
                                                            },
                                                            [weak](bool live) {
                                                                if (auto const self = weak.lock())
                                                                    self->OnLive(live);
                                                            }});
    stream->Start();
    SchedulePoll();
}

void ServiceDatastore::OnNoSession(std::exception_ptr const& exception) {
    EndSession();
    for (auto const& each : std::exchange(waiting, {}))
        each.fail(exception);
}

void ServiceDatastore::EndSession() {
    ++signIns;
    state = State::SignedOut;
    isLive = false;
    hasFollowed = false;
    haveAllChanged = false;
    changed.clear();
    stream = nullptr;
    session = nullptr;
    auto const exception = NotSignedIn();
    if (auto const ended = std::exchange(cache, nullptr)) ended->FailAll(exception);
}

void ServiceDatastore::SignOutJwt() {
    static_cast<void>(quilloauth::jwt::Logout());  // it reports a failure itself
}

void ServiceDatastore::SignOutOAuth2() {
    Post([](ServiceDatastore& self) {
        auto const exception = NotSignedIn();
        self.EndSession();
        for (auto const& each : std::exchange(self.waiting, {}))
            each.fail(exception);
    });
}

void ServiceDatastore::WhenSignedIn(Waiting newWaiting) {
    switch (state) {
        case State::SignedOut:
            return newWaiting.fail(NotSignedIn());
        case State::SigningIn:
            return waiting.push_back(std::move(newWaiting));
        case State::SignedIn:
            return newWaiting.work();
    }
}

template <class List>
QuilloDatastore::Result<List> ServiceDatastore::GetList(Key const& key) {
    auto const promise = std::make_shared<RefPromise<List>>(executor);
    Post([key, promise](ServiceDatastore& self) {
        self.WhenSignedIn(
            {[&self, key, promise] { self.cache->Ask(key, promise); }, FailureOf(promise)});
    });
    return promise->GetFuture();
}

QuilloDatastore::Result<QuilloAccountList> ServiceDatastore::GetAccountList() {
    return GetList<QuilloAccountList>({ListKind::Accounts, Guid()});
}

QuilloDatastore::Result<QuilloTeamList> ServiceDatastore::GetTeamList(Guid const& accountID) {
    return GetList<QuilloTeamList>({ListKind::Teams, accountID});
}

QuilloDatastore::Result<QuilloProjectList> ServiceDatastore::GetProjectList(Guid const& teamID) {
    return GetList<QuilloProjectList>({ListKind::Projects, teamID});
}

QuilloDatastore::Result<QuilloAssetList> ServiceDatastore::GetAssetList(Guid const& folderID) {
    return GetList<QuilloAssetList>({ListKind::Assets, folderID});
}

QuilloDatastore::Result<QuilloUser> ServiceDatastore::GetCurrentUser() {
    auto const promise = std::make_shared<RefPromise<QuilloUser>>(executor);
    Post([promise](ServiceDatastore& self) {
        self.BeginSignIn();
        self.WhenSignedIn(
            {[&self, promise] { self.AskForUser(promise, false); }, FailureOf(promise)});
    });
    return promise->GetFuture();
}

void ServiceDatastore::AskForUser(std::shared_ptr<RefPromise<QuilloUser>> const& promise,
                                  bool isRepeated) {
    auto const answer = session->SendWithRetries({.method = "GET", .url = "/v1/me"});
    static_cast<void>(answer.Then(executor, [weak = weak_from_this(), promise,
                                             isRepeated](Answer const& arrived) {
        auto const self = weak.lock();
        if (!self) return;
        if (!self->session) return FailureOf(promise)(NotSignedIn());
        bool const isRejected = !arrived.GetException() && arrived.Get()->status == kUnauthorized;
        if (!isRejected || isRepeated) return self->OnUser(promise, arrived);
        // The session that was kept is over, and forgotten by now.
        self->BeginSignIn();
        self->WhenSignedIn({[there = self.get(), promise] { there->AskForUser(promise, true); },
                            FailureOf(promise)});
    }));
}

void ServiceDatastore::OnUser(std::shared_ptr<RefPromise<QuilloUser>> const& promise,
                              Answer const& answer) {
    quillosdk::Task const task{quillocommon::Step::ReadUser, "read who is signed in"};
    int status = 0;
    try {
        auto const response = answer.Get();
        status = response->status;
        if (status < 200 || status > 299)
            throw ResultException(quillosdk::kRefused, quillosdk::DescribeRefusal(task, *response));
        promise->SetValue(moxcore::classref::InterfaceRef<QuilloUser>(
            std::make_shared<UserEntry>(quillosdk::ReadUser(response->body))));
    } catch (...) {
        quillosdk::ReportException(task, std::current_exception(), status);
        promise->SetException(std::current_exception());
    }
}

void ServiceDatastore::OnEvent(Event const& event) {
    // A list read before the first connection may be out of date.
    bool const isFirst = !std::exchange(hasFollowed, true);
    if (isFirst || event.type == "reset") haveAllChanged = true;
    if (event.type != "changed") return;
    if (auto const change = ReadChangeNotice(event.data)) changed.insert(*change);
}

void ServiceDatastore::OnCaughtUp() {
    auto const keys = std::exchange(changed, {});
    if (std::exchange(haveAllChanged, false)) return cache->InvalidateAll();
    for (auto const& key : keys)
        cache->Invalidate(key);
}

void ServiceDatastore::OnLive(bool live) {
    isLive = live;
    if (!live) SchedulePoll();
}

void ServiceDatastore::SchedulePoll() {
    if (std::exchange(isPollScheduled, true)) return;
    executor->CallAsyncDelayed(
        [weak = weak_from_this()] {
            auto const self = weak.lock();
            if (!self) return;
            self->isPollScheduled = false;
            if (self->isLive || !self->cache) return;
            self->cache->RefreshOldest(kListsPerPoll);
            self->SchedulePoll();
        },
        kPollMilliseconds);
}

void ServiceDatastore::Announce(Key const& key) const {
    using namespace moxcore::messaging;
    PostMessageToStation(
        station, Message(HashMessageTypeNameToMessageID(MessageTypeOf(key.kind)), key.parent));
}

}  // namespace quillo
