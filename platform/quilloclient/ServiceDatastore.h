#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "quilloauth/AuthManager.h"
#include "quilloclient/EventStream.h"
#include "quilloclient/ListCache.h"
#include "quilloclient/QuilloDatastore.h"
#include "quillocommon/SerialExecutor.h"
#include "quillosdk/Session.h"

namespace quillo {

/// The datastore over the service's wire: the sign-in, the cache of lists, and the stream of events
/// that says which of them to read again. While there is no stream, lists are read again a few at a
/// time, one after the other. Everything happens on the executor.
class ServiceDatastore final : public QuilloDatastore,
                               public std::enable_shared_from_this<ServiceDatastore> {
public:
    [[nodiscard]] static std::shared_ptr<ServiceDatastore> Create();
    ~ServiceDatastore() override;
    ServiceDatastore(ServiceDatastore const&) = delete;
    ServiceDatastore& operator=(ServiceDatastore const&) = delete;

    void SignIn() override;
    [[nodiscard]] Result<QuilloUser> GetCurrentUser() override;
    [[nodiscard]] Result<QuilloAccountList> GetAccountList() override;
    [[nodiscard]] Result<QuilloTeamList> GetTeamList(Guid const& accountID) override;
    [[nodiscard]] Result<QuilloProjectList> GetProjectList(Guid const& teamID) override;
    [[nodiscard]] Result<QuilloAssetList> GetAssetList(Guid const& folderID) override;
    [[nodiscard]] ImmutableString GetStationID() const override { return station; }
    void SignOutJwt() override;
    void SignOutOAuth2() override;

private:
    using Token = moxcore::async::Future<std::string>;
    using Key = ListCache::Key;

    /// An operation that needs a session: run once there is one, or failed with the reason why not.
    struct Waiting {
        std::function<void()> work;
        std::function<void(std::exception_ptr const&)> fail;
    };

    enum class State { SignedOut, SigningIn, SignedIn };

    ServiceDatastore();

    void Post(std::function<void(ServiceDatastore&)> work);
    void BeginSignIn();
    void BeginSignInAnew();
    void OnToken(unsigned signIn, Token const& token);
    void OpenSession(std::string const& token);
    void OnNoSession(std::exception_ptr const& exception);
    void EndSession();
    void WhenSignedIn(Waiting waiting);
    template <class List>
    [[nodiscard]] Result<List> GetList(Key const& key);
    void StartStream();
    void AskForUser(std::shared_ptr<RefPromise<QuilloUser>> const& promise, bool isRepeated);
    void OnUser(std::shared_ptr<RefPromise<QuilloUser>> const& promise,
                quillosdk::Answer const& answer);
    void OnEvent(Event const& event);
    void OnCaughtUp();
    void OnLive(bool live);
    void SchedulePoll();
    void Announce(Key const& key) const;

    std::shared_ptr<quillocommon::SerialExecutor> const executor =
        std::make_shared<quillocommon::SerialExecutor>();
    ImmutableString const station;
    std::shared_ptr<quilloauth::jwt::SessionListener const> sessionListener;  // set by Create

    // The executor's:
    State state = State::SignedOut;
    unsigned signIns = 0;  // grows with each sign-in and sign-out; answers of earlier ones are late
    std::vector<Waiting> waiting;                 // while signing in
    std::shared_ptr<quillosdk::Session> session;  // null: there is none
    std::shared_ptr<ListCache> cache;             // the session's
    std::shared_ptr<EventStream> stream;          // the session's
    bool hasFollowed = false;                     // the session's stream has been live
    std::set<Key> changed;                        // as the events since OnCaughtUp have it
    bool haveAllChanged = false;                  // likewise: any list may be another
    bool isLive = false;
    bool isPollScheduled = false;
};

}  // namespace quillo
