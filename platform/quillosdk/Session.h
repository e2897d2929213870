#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/utility/UniqueFunction.h"
#include "quillocommon/Response.h"
#include "quillosdk/RetryLoop.h"
#include "quillosdk/Transport.h"

namespace quillosdk {

/// State shared by the parts of one client: the identity and the token of its requests. Requests
/// under way keep it alive. Any thread.
class Session : public std::enable_shared_from_this<Session> {
public:
    using TokenRefresher = std::function<void(std::string const& rejectedToken)>;

    /// `clientID` names the application to the service.
    Session(std::string const& clientID, TokenRefresher refresher);

    /// See QuilloClient.
    quillocommon::Response UpdateAccessToken(std::string const& newToken);
    static void SetTokenRejectedHandler(std::function<void(std::string const& token)> handler);

    /// Called once, with what has come of a request: the continuation of a complete Answer.
    using OnAnswer = moxcore::utility::UniqueFunction<void(Answer const&)>;

    /// Sends `request`, whose url is a path at the service, with the token. When the service
    /// rejects that, asks for another one and sends once more when it has come within ten seconds;
    /// otherwise the rejection is the answer. `onAnswer` must not throw.
    void Send(HttpRequest request, OnAnswer onAnswer);

    /// The same, for who needs a future.
    [[nodiscard]] Answer Send(HttpRequest request);

    /// The same, repeated as `policy` says.
    [[nodiscard]] Answer SendWithRetries(
        HttpRequest const& request,
        std::shared_ptr<RetryPolicy> policy = std::make_shared<RetryPolicy>());

    /// Whether the service in force joins partial uploads; nothing while nobody has asked it.
    [[nodiscard]] std::optional<bool> OffersJoining();
    void NoteOffersJoining(bool offers);

private:
    /// Kept by a request that waits for another token.
    using TokenPromise = moxcore::async::Promise<std::string>;

    /// A request that waits. Its promise is its timer's: what continues it holds the session, which
    /// must not hold it in turn.
    struct Waiter {
        std::weak_ptr<TokenPromise> promise;
        std::string rejected;
    };

    /// The identity that every request carries until the token changes.
    struct Identity {
        std::string token;
        HeaderFields headers;
    };

    [[nodiscard]] std::shared_ptr<Identity const> MakeIdentity(std::string const& token) const;
    [[nodiscard]] std::shared_ptr<Identity const> CurrentIdentity();
    [[nodiscard]] static Answer SendAs(std::shared_ptr<Identity const> const& identity,
                                       HttpRequest const& request);
    [[nodiscard]] moxcore::async::Future<std::string> AwaitOtherToken(std::string const& rejected);
    void StopWaiting(std::shared_ptr<TokenPromise> const& waiter);

    std::string const userAgent;
    TokenRefresher const refresher;

    std::mutex mutex;
    std::shared_ptr<Identity const> identity;  // guarded by mutex
    std::vector<Waiter> waiters;               // guarded by mutex; in the order of their coming
    std::string offersAddress;                 // guarded by mutex; whose offer is known
    bool offersJoining = false;                // guarded by mutex
};

}  // namespace quillosdk
