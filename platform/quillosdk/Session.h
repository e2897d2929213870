#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "quillocommon/Response.h"
#include "quillosdk/RetryLoop.h"
#include "quillosdk/Transport.h"

namespace quillosdk {

/// What the parts of one client share: who asks the service, and with which token. Requests under
/// way keep it alive. Any thread.
class Session : public std::enable_shared_from_this<Session> {
public:
    using TokenRefresher = std::function<void(std::string const& rejectedToken)>;

    /// `clientID` tells the service which application asks.
    Session(std::string const& clientID, TokenRefresher refresher);

    /// See QuilloClient.
    quillocommon::Response UpdateAccessToken(std::string const& newToken);
    static void SetTokenRejectedHandler(std::function<void(std::string const& token)> handler);

    /// Sends `request`, whose url is a path at the service, with the token. When the service
    /// rejects that, asks for another one and sends once more when it has come within ten seconds;
    /// otherwise the rejection is the answer.
    [[nodiscard]] Answer Send(HttpRequest request);

    /// The same, repeated as `policy` says.
    [[nodiscard]] Answer SendWithRetries(
        HttpRequest const& request,
        std::shared_ptr<RetryPolicy> policy = std::make_shared<RetryPolicy>());

private:
    /// Kept by a request that waits for another token.
    using TokenPromise = moxcore::async::Promise<std::string>;

    [[nodiscard]] Answer SendWithToken(HttpRequest request, std::string const& sentToken);
    [[nodiscard]] moxcore::async::Future<std::string> AwaitOtherToken(std::string const& rejected);
    void StopWaiting(std::shared_ptr<TokenPromise> const& waiter);

    std::string const userAgent;
    TokenRefresher const refresher;

    std::mutex mutex;
    std::string token;  // guarded by mutex
    // Who waits, with the token that was rejected. Guarded by mutex. Each is owned by its timer:
    // what continues it holds this session, which must not hold it in turn.
    std::map<std::weak_ptr<TokenPromise>, std::string, std::owner_less<>> waiters;
};

}  // namespace quillosdk
