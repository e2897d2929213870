#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "service/Options.h"
#include "service/RateLimiter.h"
#include "service/Sessions.h"

namespace quilloservice {

class Call;
class HttpServer;

/// The service's routes. Every request passes through here, and what holds for all of them is done
/// here once: no route under /v1 is reached without a token unless it says so, requests are
/// counted, and whatever a route throws becomes an error of the wire's form. Routes are added
/// before the server listens; after that any thread.
class Api {
public:
    using Handler = std::function<void(Call&)>;

    struct Route {
        std::string method;  ///< HEAD goes to GET where it has no route of its own
        /// "/v1/folders/{id}/children": an {id} matches UUIDs only, a {rest} at the end anything.
        /// Of several that match the one added first counts.
        std::string path;
        Handler handler;
        std::optional<RequestKind> kind{};  ///< counted as this
        bool open = false;                  ///< under /v1: reached without a token
    };

    Api(HttpServer& server, const Sessions& sessions, std::optional<RateLimit> limit,
        const FaultOptions& faults);

    void Add(Route route);

private:
    void Handle(Call& call);
    void Dispatch(Call& call);
    const Route* Match(const std::string& method, const std::string& path,
                       std::vector<std::string>& ids) const;
    Identity Authorize(Call& call) const;
    void Count(Call& call, RequestKind kind);

    const Sessions& sessions_;
    RateLimiter limiter_;
    FaultOptions faults_;
    std::vector<Route> routes_;
};

}  // namespace quilloservice
